#include "legacy/legacy_value.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/support/without_file_privileges.h"

namespace KELP::Wifi::Updater {
namespace {

using namespace std::string_literals;

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00";

TEST(ReadLegacyValue, GivesTheValueUnchanged) {
  lab::PrivateRoot device;
  device.Write(kFile, "channel= 36 \nMode=AC\nname=\"My net\"\ncr=yes\r\n");
  const lab::InRoot inside(device);
  EXPECT_EQ(ReadLegacyValue(kFile, "channel", "x"), " 36 ");
  EXPECT_EQ(ReadLegacyValue(kFile, "Mode", "x"), "AC");
  EXPECT_EQ(ReadLegacyValue(kFile, "name", "x"), "My net");
  EXPECT_EQ(ReadLegacyValue(kFile, "cr", "x"), "yes\r");
}

TEST(ReadLegacyValue, EmptyValueIsNotTheDefault) {
  lab::PrivateRoot device;
  device.Write(kFile, "channel=\nquoted=\"\"\n");
  const lab::InRoot inside(device);
  EXPECT_EQ(ReadLegacyValue(kFile, "channel", "default"), "");
  EXPECT_EQ(ReadLegacyValue(kFile, "quoted", "default"), "");
}

TEST(ReadLegacyValue, AbsentKeyYieldsTheDefaultAsAMissingFileDoes) {
  lab::PrivateRoot device;
  device.Write(kFile, "channel=36\n");
  lab::InRoot inside(device);
  EXPECT_EQ(ReadLegacyValue(kFile, "chan", "default"), "default");
  EXPECT_EQ(ReadLegacyValue(kFile, "channel2", ""), "");
  EXPECT_EQ(ReadLegacyValue("/etc/missing", "channel", "default"), "default");
  EXPECT_TRUE(inside.Log().empty());
}

TEST(ReadLegacyValue, DefaultIsCopiedWithAllItsBytes) {
  lab::PrivateRoot device;
  const lab::InRoot inside(device);
  EXPECT_EQ(ReadLegacyValue("/etc/missing", "key", "a\0b\xFF"s), "a\0b\xFF"s);
}

TEST(ReadLegacyValue, UnreadableFilesYieldTheDefaultAndLogNothing) {
  lab::PrivateRoot device;
  device.MakeDirectory("/etc/directory");
  device.MakeFifo("/etc/fifo");
  device.Link("/etc/dangling", "/etc/nowhere");
  device.Link("/etc/loop", "/etc/loop");
  device.Write("/etc/unreadable", "key=value\n", 0000);
  device.Write("/etc/empty", "");
  lab::InRoot inside(device);
  {
    const testing_support::WithoutFilePrivileges ordinary;
    for (const auto* path : {"/etc/directory", "/etc/fifo", "/etc/dangling", "/etc/loop", "/etc/unreadable",
                             "/etc/empty", "", "/etc/empty/below"}) {
      EXPECT_EQ(ReadLegacyValue(path, "key", "default"), "default") << path;
    }
  }
  EXPECT_TRUE(inside.Log().empty());
}

TEST(ReadLegacyValue, DefaultIsTakenAgainOnceTheFileIsGone) {
  lab::PrivateRoot device;
  device.Write(kFile, "key=value\n");
  const lab::InRoot inside(device);
  EXPECT_EQ(ReadLegacyValue(kFile, "key", "default"), "value");
  device.Remove(kFile);
  EXPECT_EQ(ReadLegacyValue(kFile, "key", "default"), "default");
}

constexpr std::int32_t kDefault = -77;

TEST(ParseLegacyInt, TakesDecimalNumbersWithTheirSigns) {
  EXPECT_EQ(ParseLegacyInt("42", kDefault), 42);
  EXPECT_EQ(ParseLegacyInt("-1", kDefault), -1);
  EXPECT_EQ(ParseLegacyInt("+5", kDefault), 5);
  EXPECT_EQ(ParseLegacyInt("0", kDefault), 0);
  EXPECT_EQ(ParseLegacyInt("-0", kDefault), 0);
}

TEST(ParseLegacyInt, SkipsLeadingWhiteSpace) {
  EXPECT_EQ(ParseLegacyInt(" 42", kDefault), 42);
  EXPECT_EQ(ParseLegacyInt(" \t\n\v\f\r-36", kDefault), -36);
}

TEST(ParseLegacyInt, IgnoresWhatFollowsTheDigits) {
  EXPECT_EQ(ParseLegacyInt("4x", kDefault), 4);
  EXPECT_EQ(ParseLegacyInt("12abc", kDefault), 12);
  EXPECT_EQ(ParseLegacyInt("36 40", kDefault), 36);
  EXPECT_EQ(ParseLegacyInt("1.9", kDefault), 1);
  EXPECT_EQ(ParseLegacyInt("1e3", kDefault), 1);
  EXPECT_EQ(ParseLegacyInt("7\r", kDefault), 7);
}

TEST(ParseLegacyInt, ReadsBaseTenOnly) {
  EXPECT_EQ(ParseLegacyInt("0x10", kDefault), 0);
  EXPECT_EQ(ParseLegacyInt("010", kDefault), 10);
  EXPECT_EQ(ParseLegacyInt("08", kDefault), 8);
  EXPECT_EQ(ParseLegacyInt("0b11", kDefault), 0);
}

TEST(ParseLegacyInt, WithoutDigitsIsTheDefault) {
  for (const auto* text : {"", " ", "abc", "x4", "-", "+", "- 4", "+-4", "--4", ".5", "\xA0 4", "\""}) {
    EXPECT_EQ(ParseLegacyInt(text, kDefault), kDefault) << text;
  }
  EXPECT_EQ(ParseLegacyInt("\0004"s, kDefault), kDefault);
}

TEST(ParseLegacyInt, EndsOfTheSigned32BitRangeAreTheLastNumbersTaken) {
  EXPECT_EQ(ParseLegacyInt("2147483647", kDefault), INT_MAX);
  EXPECT_EQ(ParseLegacyInt("-2147483648", kDefault), INT_MIN);
  EXPECT_EQ(ParseLegacyInt("2147483648", kDefault), kDefault);
  EXPECT_EQ(ParseLegacyInt("-2147483649", kDefault), kDefault);
  EXPECT_EQ(ParseLegacyInt("3000000000", kDefault), kDefault);
  EXPECT_EQ(ParseLegacyInt("4294967297", kDefault), kDefault);
  EXPECT_EQ(ParseLegacyInt("18446744073709551617", kDefault), kDefault);
  EXPECT_EQ(ParseLegacyInt(std::string(1000, '9'), kDefault), kDefault);
  EXPECT_EQ(ParseLegacyInt(std::string(1000, '0') + "5", kDefault), 5);
}

TEST(ParseLegacyInt, NothingOfAnEarlierFailureStays) {
  EXPECT_EQ(ParseLegacyInt("99999999999", kDefault), kDefault);
  EXPECT_EQ(ParseLegacyInt("1", kDefault), 1);
}

TEST(IsYes, IsExact) {
  EXPECT_TRUE(IsYes("yes"));
  for (const std::string& text : {""s, "Yes"s, "YES"s, "yes "s, " yes"s, "yes\r"s, "yes\0"s, "ye"s, "yess"s,
                                  "1"s, "true"s, "no"s, "\"yes\""s}) {
    EXPECT_FALSE(IsYes(text)) << text;
  }
}

TEST(ReadLegacyFlag, IsTrueForExactlyYes) {
  lab::PrivateRoot device;
  device.Write(kFile, "a=yes\nb=Yes\nc=yes \nd=\ne=\"yes\"\nf=yes\r\ng=1\n");
  const lab::InRoot inside(device);
  EXPECT_TRUE(ReadLegacyFlag(kFile, "a"));
  EXPECT_FALSE(ReadLegacyFlag(kFile, "b"));
  EXPECT_FALSE(ReadLegacyFlag(kFile, "c"));
  EXPECT_FALSE(ReadLegacyFlag(kFile, "d"));
  EXPECT_TRUE(ReadLegacyFlag(kFile, "e"));
  EXPECT_FALSE(ReadLegacyFlag(kFile, "f"));
  EXPECT_FALSE(ReadLegacyFlag(kFile, "g"));
  EXPECT_FALSE(ReadLegacyFlag(kFile, "absent"));
  EXPECT_FALSE(ReadLegacyFlag("/etc/missing", "a"));
}

}  // namespace
}  // namespace KELP::Wifi::Updater
