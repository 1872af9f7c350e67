#include "legacy/interface_mac.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <map>
#include <stdexcept>
#include <string>
#include <typeinfo>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/support/without_file_privileges.h"

namespace KELP::Wifi::Updater {
namespace {

using Util::RadioFrequency;
using Util::SupportedModel;

std::string EntryPath(int entry) {
  return "/proc/sys/kernel/kelp_mac_address" + std::to_string(entry);
}

class InterfaceMac : public ::testing::Test {
 protected:
  /// What ReadInterfaceMAC makes of an entry that holds `bytes`.
  std::string Read(const std::string& bytes) {
    device_.Write(EntryPath(3), bytes);
    const lab::InRoot inside(device_);
    return ReadInterfaceMAC(3);
  }
  /// The text of the exception that reading entry 3 has to end in.
  std::string ErrorOfReading() {
    const lab::InRoot inside(device_);
    try {
      ReadInterfaceMAC(3);
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(typeid(error), typeid(std::runtime_error));
      return error.what();
    }
    return "(nothing was thrown)";
  }

  lab::PrivateRoot device_;
};

constexpr const char* kFailure = "Failed to get bssid from kelp_mac_address";

TEST_F(InterfaceMac, EntryIsPutIntoColonNotation) {
  EXPECT_EQ(Read("0011322a0b0c\n"), "00:11:32:2a:0b:0c");
}

TEST_F(InterfaceMac, UpperCaseDigitsStayUpperCase) {
  EXPECT_EQ(Read("0011322A0B0C\n"), "00:11:32:2A:0B:0C");
}

TEST_F(InterfaceMac, EmptyEntryIsEmpty) {
  EXPECT_EQ(Read(""), "");
  EXPECT_EQ(Read("\n"), "");
}

TEST_F(InterfaceMac, EntryWithoutANewlineIsUsedAsItIs) {
  EXPECT_EQ(Read("0011322a0b0c"), "00:11:32:2a:0b:0c");
}

TEST_F(InterfaceMac, OfTwoNewlinesOneStays) {
  EXPECT_EQ(Read("0011322a0b0c\n\n"), "00:11:32:2a:0b:0c\n");
  EXPECT_EQ(Read("\n\n\n"), "\n\n");
}

TEST_F(InterfaceMac, NothingIsValidated) {
  EXPECT_EQ(Read("00113\n"), "00:11:3");
  EXPECT_EQ(Read("no address\n"), "no a:dd:re:ss");
  EXPECT_EQ(Read("00:11:32:2a:0b:0c\n"), "00:1:1:3:2:2:a:0:b:0:c");
}

TEST_F(InterfaceMac, EntryLongerThanAnyPieceIsReadWhole) {
  std::string digits;
  std::string expected;
  for (int i = 0; i < 2000; ++i) {
    digits += "a5";
    expected += expected.empty() ? "a5" : ":a5";
  }
  EXPECT_EQ(Read(digits + "\n"), expected);
}

TEST_F(InterfaceMac, MissingEntryThrows) {
  EXPECT_EQ(ErrorOfReading(), kFailure);
}

TEST_F(InterfaceMac, EntryThatIsNoReadableFileThrows) {
  device_.MakeDirectory(EntryPath(3));
  EXPECT_EQ(ErrorOfReading(), kFailure);
  device_.Remove(EntryPath(3));
  device_.Link(EntryPath(3), "/etc/nowhere");
  EXPECT_EQ(ErrorOfReading(), kFailure);
  device_.Remove(EntryPath(3));
  device_.Write(EntryPath(3), "0011322a0b0c\n", 0000);
  const testing_support::WithoutFilePrivileges ordinary;
  EXPECT_EQ(ErrorOfReading(), kFailure);
}

TEST_F(InterfaceMac, EntryNumberIsDecimal) {
  device_.Write(EntryPath(12), "aabbccddeeff\n");
  const lab::InRoot inside(device_);
  EXPECT_EQ(ReadInterfaceMAC(12), "aa:bb:cc:dd:ee:ff");
}

TEST_F(InterfaceMac, EntryIsReadAnewAtEveryCall) {
  device_.Write(EntryPath(3), "000000000000\n");
  const lab::InRoot inside(device_);
  const int file = ::open(EntryPath(3).c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  for (int i = 0; i < 1000; ++i) {
    const char digit = static_cast<char>('a' + i % 6);
    ASSERT_EQ(::pwrite(file, &digit, 1, 0), 1);
    ASSERT_EQ(ReadInterfaceMAC(3), std::string(1, digit) + "0:00:00:00:00:00");
  }
  ::close(file);
}

TEST_F(InterfaceMac, NoProcessIsStartedAndNoShellIsNeeded) {
  // The private root holds neither a shell nor sed.
  EXPECT_FALSE(device_.Exists("/bin/sh"));
  EXPECT_EQ(Read("0011322a0b0c\n"), "00:11:32:2a:0b:0c");
}

TEST(InsertPairColons, StandsBehindEveryPairThatEndsInsideAWordOrOutsideOfOne) {
  EXPECT_EQ(InsertPairColons(""), "");
  EXPECT_EQ(InsertPairColons("a"), "a");
  EXPECT_EQ(InsertPairColons("ab"), "ab");
  EXPECT_EQ(InsertPairColons("abc"), "ab:c");
  EXPECT_EQ(InsertPairColons("abcd"), "ab:cd");
  EXPECT_EQ(InsertPairColons("a_c9"), "a_:c9");
  EXPECT_EQ(InsertPairColons("ab:"), "ab::");
  EXPECT_EQ(InsertPairColons(":ab"), ":a:b");
  EXPECT_EQ(InsertPairColons(":abc"), ":a:bc");
}

TEST(InsertPairColons, EndOfALineIsOutsideOfWords) {
  EXPECT_EQ(InsertPairColons("::"), ":::");
  EXPECT_EQ(InsertPairColons("::\n"), ":::\n");
  EXPECT_EQ(InsertPairColons("::::"), "::::::");
  EXPECT_EQ(InsertPairColons("ab\ncd\n"), "ab\ncd\n");
  EXPECT_EQ(InsertPairColons("a\nb\n"), "a\nb\n");
  EXPECT_EQ(InsertPairColons("abc\ndef"), "ab:c\nde:f");
  EXPECT_EQ(InsertPairColons("0011322a0b0c\r\n"), "00:11:32:2a:0b:0c\r:\n");
}

constexpr const char* kPathStart = "/usr/kelp/etc/wifi/wifi_ap_";

/// Every entry of the kernel, each with its number in every digit.
void WriteAllEntries(lab::PrivateRoot& device) {
  for (int entry = 0; entry <= 9; ++entry) {
    device.Write(EntryPath(entry), std::string(12, static_cast<char>('0' + entry)) + "\n");
  }
}

std::string PathOfEntry(int entry) {
  const std::string pair(2, static_cast<char>('0' + entry));
  return kPathStart + pair + ":" + pair + ":" + pair + ":" + pair + ":" + pair + ":" + pair;
}

/// From a radio's number to what its file is named after: an entry's number, or a fixed text.
std::string ExpectedPath(bool is_first_model, int radio) {
  const std::map<int, int> first_model{{1, 4}, {2, 5}, {3, 5}};
  const std::map<int, int> other_models{{1, 3}, {2, 4}, {3, 4}, {4, 5}};
  if (radio == 0) return std::string(kPathStart) + "00:00:00:00:00:00";
  if (is_first_model && radio == 4) return std::string(kPathStart) + "11:11:11:11:11:11";
  const std::map<int, int>& entries = is_first_model ? first_model : other_models;
  return PathOfEntry(entries.contains(radio) ? entries.at(radio) : 0);
}

TEST(GetAccessPointFilePath, OfEveryModelRoleAndRadio) {
  lab::PrivateRoot device;
  WriteAllEntries(device);
  const lab::InRoot inside(device);
  for (const int model : {-1, 0, 1, 2, 3}) {
    for (const int role : {0, 1, 2}) {
      for (const int radio : {-2147483647 - 1, -1, 0, 1, 2, 3, 4, 5, 6, 7, 2147483647}) {
        const UpdateContext context{.buildNumber = 8000,
                                    .meshRole = static_cast<MeshRole>(role),
                                    .model = static_cast<SupportedModel>(model)};
        EXPECT_EQ(GetAccessPointFilePath(context, static_cast<RadioFrequency>(radio)),
                  ExpectedPath(model == 0, radio))
            << "model " << model << ", role " << role << ", radio " << radio;
      }
    }
  }
}

UpdateContext ContextOf(SupportedModel model) {
  return {.buildNumber = 8000, .meshRole = MeshRole::Standalone, .model = model};
}

TEST(GetAccessPointFilePath, FixedAddressesNeedNoEntry) {
  lab::PrivateRoot device;
  const lab::InRoot inside(device);
  for (const SupportedModel model : {SupportedModel::ORCHID, SupportedModel::LOTUS, SupportedModel::Error}) {
    EXPECT_EQ(GetAccessPointFilePath(ContextOf(model), RadioFrequency::AllBands),
              "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00");
  }
  EXPECT_EQ(GetAccessPointFilePath(ContextOf(SupportedModel::ORCHID), RadioFrequency::Band5GHz_2),
            "/usr/kelp/etc/wifi/wifi_ap_11:11:11:11:11:11");
}

TEST(GetAccessPointFilePath, OnlyTheRadiosOwnEntryIsNeeded) {
  lab::PrivateRoot device;
  device.Write(EntryPath(4), "0011322a0b0c\n");
  const lab::InRoot inside(device);
  EXPECT_EQ(GetAccessPointFilePath(ContextOf(SupportedModel::ORCHID), RadioFrequency::Band2_4GHz),
            "/usr/kelp/etc/wifi/wifi_ap_00:11:32:2a:0b:0c");
  EXPECT_EQ(GetAccessPointFilePath(ContextOf(SupportedModel::LOTUS), RadioFrequency::Band5GHz),
            "/usr/kelp/etc/wifi/wifi_ap_00:11:32:2a:0b:0c");
}

TEST(GetAccessPointFilePath, ThrowsWhereTheEntryIsMissing) {
  lab::PrivateRoot device;
  const lab::InRoot inside(device);
  try {
    GetAccessPointFilePath(ContextOf(SupportedModel::MAPLE), RadioFrequency::Band5GHz_2);
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), kFailure);
  }
}

TEST(GetAccessPointFilePath, HoldsTheAddressExactlyAsObtained) {
  lab::PrivateRoot device;
  device.Write(EntryPath(3), "0011322A0B0C\n");
  device.Write(EntryPath(4), "");
  device.Write(EntryPath(5), "%s%n\n\n");
  const lab::InRoot inside(device);
  const UpdateContext context = ContextOf(SupportedModel::CEDAR);
  EXPECT_EQ(GetAccessPointFilePath(context, RadioFrequency::Band2_4GHz),
            "/usr/kelp/etc/wifi/wifi_ap_00:11:32:2A:0B:0C");
  EXPECT_EQ(GetAccessPointFilePath(context, RadioFrequency::Band5GHz), "/usr/kelp/etc/wifi/wifi_ap_");
  EXPECT_EQ(GetAccessPointFilePath(context, RadioFrequency::Band5GHz_2), "/usr/kelp/etc/wifi/wifi_ap_%s%n\n");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
