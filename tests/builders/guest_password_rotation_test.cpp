#include "builders/guest_password_rotation.h"

#include <gtest/gtest.h>

#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using namespace std::string_literals;
using testing_support::Entries;
using testing_support::Error;
using testing_support::LogLines;
using Fields = std::vector<std::string>;

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_ap_00:11:32:2a:0b:0c";

// SplitString

TEST(SplitString, EmptyTextHasNoFields) {
  EXPECT_EQ(SplitString("", ","), Fields{});
  EXPECT_EQ(SplitString("", ""), Fields{});
}

TEST(SplitString, TextWithoutDelimitersIsOneField) {
  EXPECT_EQ(SplitString("a", ","), Fields{"a"});
  EXPECT_EQ(SplitString("a b;c/d", ","), Fields{"a b;c/d"});
}

TEST(SplitString, SplitsAtEachDelimiter) {
  EXPECT_EQ(SplitString("a,b", ","), (Fields{"a", "b"}));
  EXPECT_EQ(SplitString("2023/7/4", "/"), (Fields{"2023", "7", "4"}));
}

TEST(SplitString, AdjacentDelimitersKeepTheEmptyFieldBetweenThem) {
  EXPECT_EQ(SplitString("a,,b", ","), (Fields{"a", "", "b"}));
  EXPECT_EQ(SplitString("a,,,b", ","), (Fields{"a", "", "", "b"}));
}

TEST(SplitString, LeadingAndTrailingDelimitersMakeEmptyFields) {
  EXPECT_EQ(SplitString(",a", ","), (Fields{"", "a"}));
  EXPECT_EQ(SplitString("a,", ","), (Fields{"a", ""}));
  EXPECT_EQ(SplitString(",a,", ","), (Fields{"", "a", ""}));
}

TEST(SplitString, DelimitersAloneMakeOneFieldMoreThanThemselves) {
  EXPECT_EQ(SplitString(",", ","), (Fields{"", ""}));
  EXPECT_EQ(SplitString(",,", ","), (Fields{"", "", ""}));
}

TEST(SplitString, FieldsAreNotTrimmed) {
  EXPECT_EQ(SplitString(" a , b\t,\n", ","), (Fields{" a ", " b\t", "\n"}));
}

TEST(SplitString, EachCharacterOfTheDelimitersSplitsByItself) {
  EXPECT_EQ(SplitString("a;b,c", ",;"), (Fields{"a", "b", "c"}));
  EXPECT_EQ(SplitString("a,;b", ",;"), (Fields{"a", "", "b"}));
  EXPECT_EQ(SplitString("a;,b", ",;"), (Fields{"a", "", "b"}));
  EXPECT_EQ(SplitString(";a b,", ", ;"), (Fields{"", "a", "b", ""}));
}

TEST(SplitString, ManyDelimitersAreNoLess) {
  EXPECT_EQ(SplitString("a!b*c~d", "!#$%&()*+-./:<=>?@[]^_{|}~"), (Fields{"a", "b", "c", "d"}));
}

TEST(SplitString, ADelimiterNamedTwiceSplitsOnce) {
  EXPECT_EQ(SplitString("a,b", ",,"), (Fields{"a", "b"}));
}

TEST(SplitString, WithoutDelimitersTheTextIsOneField) {
  EXPECT_EQ(SplitString("a,b", ""), Fields{"a,b"});
}

TEST(SplitString, TextsAreBytes) {
  EXPECT_EQ(SplitString("a\xff\xc3\xa4\xff", "\xff"), (Fields{"a", "\xc3\xa4", ""}));
  EXPECT_EQ(SplitString("a\0b,c"s, ","), (Fields{"a\0b"s, "c"}));
  EXPECT_EQ(SplitString("a\0b"s, "\0"s), (Fields{"a", "b"}));
}

TEST(SplitString, LongTextsAreSplitWhole) {
  std::string text;
  for (int field = 0; field < 10000; ++field) text += "someone@example.org,";
  const Fields fields = SplitString(text, ",");
  ASSERT_EQ(fields.size(), 10001U);
  EXPECT_EQ(fields[9999], "someone@example.org");
  EXPECT_EQ(fields[10000], "");
}

// FormatRotationDate

TEST(FormatRotationDate, PadsWithZeros) {
  EXPECT_EQ(FormatRotationDate("2023/7/4", "9", "5"), "2023-07-04 09:05");
  EXPECT_EQ(FormatRotationDate("2023/11/24", "19", "45"), "2023-11-24 19:45");
}

TEST(FormatRotationDate, LeadingZerosAreDecimal) {
  EXPECT_EQ(FormatRotationDate("2023/010/08", "09", "012"), "2023-10-08 09:12");
}

TEST(FormatRotationDate, AnyOtherNumberOfFieldsGivesTheFixedDayWithTheGivenTime) {
  for (const char* date : {"", "2023", "2023-07-04", "2023/07", "/", "2023/7/4/", "/2023/7/4", "2023/7/4/1",
                           "2023\\7\\4", "2023.7.4", "///"}) {
    EXPECT_EQ(FormatRotationDate(date, "9", "5"), "2021-01-01 09:05") << '"' << date << '"';
  }
}

TEST(FormatRotationDate, AnEmptyFieldIsZero) {
  EXPECT_EQ(FormatRotationDate("2023//4", "9", "5"), "2023-00-04 09:05");
  EXPECT_EQ(FormatRotationDate("/7/4", "9", "5"), "0000-07-04 09:05");
  EXPECT_EQ(FormatRotationDate("2023/7/", "9", "5"), "2023-07-00 09:05");
  EXPECT_EQ(FormatRotationDate("//", "9", "5"), "0000-00-00 09:05");
}

TEST(FormatRotationDate, AFieldThatIsNoNumberIsZero) {
  EXPECT_EQ(FormatRotationDate("year/July/x4", "9", "5"), "0000-00-00 09:05");
  EXPECT_EQ(FormatRotationDate("2023/2147483648/99999999999", "9", "5"), "2023-00-00 09:05");
}

TEST(FormatRotationDate, ATimeThatIsNoNumberIsZero) {
  EXPECT_EQ(FormatRotationDate("2023/7/4", "abc", ""), "2023-07-04 00:00");
  EXPECT_EQ(FormatRotationDate("2023/7/4", "", "abc"), "2023-07-04 00:00");
  EXPECT_EQ(FormatRotationDate("2023/7/4", "2147483648", "-2147483649"), "2023-07-04 00:00");
}

TEST(FormatRotationDate, ALeadingNumberIsTaken) {
  EXPECT_EQ(FormatRotationDate("2023/7/4", "7pm", "30 past"), "2023-07-04 07:30");
  EXPECT_EQ(FormatRotationDate("2023 AD/7th/4 (Tue)", " 7", "\t8"), "2023-07-04 07:08");
  EXPECT_EQ(FormatRotationDate("2023-07-04/1/1", "0", "0"), "2023-01-01 00:00");
}

TEST(FormatRotationDate, HexadecimalIsNoNumberBeyondItsZero) {
  EXPECT_EQ(FormatRotationDate("0x7E7/0x7/0x4", "0x10", "0x05"), "0000-00-00 00:00");
}

TEST(FormatRotationDate, NoRangeIsTested) {
  EXPECT_EQ(FormatRotationDate("2023/13/32", "99", "60"), "2023-13-32 99:60");
}

TEST(FormatRotationDate, SmallYearsHaveFourDigits) {
  EXPECT_EQ(FormatRotationDate("95/1/2", "0", "0"), "0095-01-02 00:00");
  EXPECT_EQ(FormatRotationDate("0/1/2", "0", "0"), "0000-01-02 00:00");
}

TEST(FormatRotationDate, BigNumbersAreWrittenWhole) {
  EXPECT_EQ(FormatRotationDate("12345/123/4567", "100", "1000"), "12345-123-4567 100:1000");
  EXPECT_EQ(FormatRotationDate("2147483647/2147483647/2147483647", "2147483647", "2147483647"),
            "2147483647-2147483647-2147483647 2147483647:2147483647");
  EXPECT_EQ(FormatRotationDate("-2147483648/-2147483648/-2147483648", "-2147483648", "-2147483648"),
            "-2147483648--2147483648--2147483648 -2147483648:-2147483648");
}

TEST(FormatRotationDate, SignsAreTaken) {
  EXPECT_EQ(FormatRotationDate("+2023/+7/+4", "+9", "+5"), "2023-07-04 09:05");
  EXPECT_EQ(FormatRotationDate("-5/-7/-4", "-9", "-5"), "-0005--07--04 -09:-05");
}

// ReadGuestRotationValue

class GuestPasswordRotationTest : public ::testing::Test {
 protected:
  GuestPasswordRotation Build() {
    return device_.Run([] { return BuildGuestPasswordRotation(kFile); });
  }
  GuestPasswordRotation Build(const Entries& entries) {
    device_.WriteEntries(kFile, entries);
    return Build();
  }
  /// Without lines of unknown words.
  GuestPasswordRotation BuildQuietly(const std::string& suffix, const std::string& value) {
    return Build({{"guest_pwd_rotate_" + suffix, value},
                  {"guest_pwd_rotate_date_type", "0"},
                  {"guest_pwd_rotate_strength", "medium"}});
  }

  testing_support::TestDevice device_;
};

TEST_F(GuestPasswordRotationTest, SuffixesStandBehindTheFamilysPrefix) {
  device_.WriteEntries(kFile, {{"enable", "plain"},
                               {"guest_enable", "guest"},
                               {"guest_guest_pwd_rotate_enable", "twice"},
                               {"pwd_rotate_enable", "half"},
                               {"guest_pwd_rotate_enable", " right "},
                               {"guest_pwd_rotate_", "none"}});
  EXPECT_EQ(device_.Run([] { return ReadGuestRotationValue(kFile, "enable"); }), " right ");
  EXPECT_EQ(device_.Run([] { return ReadGuestRotationValue(kFile, ""); }), "none");
}

TEST_F(GuestPasswordRotationTest, MissingKeyOrFileReadsAsTheEmptyText) {
  EXPECT_EQ(device_.Run([] { return ReadGuestRotationValue(kFile, "enable"); }), "");
  device_.WriteEntries(kFile, {{"guest_pwd_rotate_date", "2023/7/4"}});
  EXPECT_EQ(device_.Run([] { return ReadGuestRotationValue(kFile, "enable"); }), "");
  EXPECT_EQ(device_.Log(), LogLines{});
}

// BuildGuestPasswordRotation

const GuestPasswordRotation kFallBack{false, 1, 1, "2021-01-01 00:00", "", false, {}};

TEST_F(GuestPasswordRotationTest, FileWithoutKeysGivesTheFallBacksAndTwoLines) {
  const LogLines lines{Error(855, "Invalid mode: , select regular."),
                       Error(869, "Invalid value: , select medium.")};
  EXPECT_EQ(Build({}), kFallBack);
  EXPECT_EQ(device_.Log(), lines);
  device_.Files().Remove(kFile);
  EXPECT_EQ(Build(), kFallBack);
  EXPECT_EQ(device_.Log(), lines);
}

TEST_F(GuestPasswordRotationTest, EveryValueComesFromItsKey) {
  EXPECT_EQ(Build({{"guest_pwd_rotate_enable", "yes"},
                   {"guest_pwd_rotate_date_type", "1"},
                   {"guest_pwd_rotate_strength", "high"},
                   {"guest_pwd_rotate_date", "2023/7/4"},
                   {"guest_pwd_rotate_hour", "9"},
                   {"guest_pwd_rotate_minute", "5"},
                   {"guest_pwd_rotate_week_day", "1,3"},
                   {"guest_pwd_rotate_notify_enable", "yes"},
                   {"guest_pwd_rotate_mail_list", "a@example.org,b@example.org"}}),
            (GuestPasswordRotation{
                true, 0, 2, "2023-07-04 09:05", "1,3", true, {"a@example.org", "b@example.org"}}));
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(GuestPasswordRotationTest, EachKeyChangesItsMemberAndNoOther) {
  GuestPasswordRotation expected = kFallBack;
  expected.enable = true;
  EXPECT_EQ(BuildQuietly("enable", "yes"), expected);

  expected = kFallBack;
  expected.date_type = 0;
  EXPECT_EQ(BuildQuietly("date_type", "1"), expected);

  expected = kFallBack;
  expected.strength = 2;
  EXPECT_EQ(BuildQuietly("strength", "high"), expected);

  expected = kFallBack;
  expected.date = "2023-07-04 00:00";
  EXPECT_EQ(BuildQuietly("date", "2023/7/4"), expected);

  expected = kFallBack;
  expected.date = "2021-01-01 13:00";
  EXPECT_EQ(BuildQuietly("hour", "13"), expected);

  expected = kFallBack;
  expected.date = "2021-01-01 00:13";
  EXPECT_EQ(BuildQuietly("minute", "13"), expected);

  expected = kFallBack;
  expected.week_day = "0";
  EXPECT_EQ(BuildQuietly("week_day", "0"), expected);

  expected = kFallBack;
  expected.notify_enable = true;
  EXPECT_EQ(BuildQuietly("notify_enable", "yes"), expected);

  expected = kFallBack;
  expected.mail_list = {"a"};
  EXPECT_EQ(BuildQuietly("mail_list", "a"), expected);
}

TEST_F(GuestPasswordRotationTest, KeysWithoutThePrefixAreNotRead) {
  Entries entries;
  for (const char* key : {"enable", "date_type", "strength", "date", "hour", "minute", "week_day",
                          "notify_enable", "mail_list"}) {
    for (const char* prefix : {"", "guest_", "pwd_rotate_", "guest_guest_pwd_rotate_"}) {
      entries.emplace_back(std::string(prefix) + key, "yes");
    }
  }
  EXPECT_EQ(Build(entries), kFallBack);
}

TEST_F(GuestPasswordRotationTest, OnlyTheExactWordYesSetsAFlag) {
  for (const char* word : {"Yes", "YES", "yes ", " yes", "1", "true", "on", "no", ""}) {
    EXPECT_EQ(BuildQuietly("enable", word), kFallBack) << '"' << word << '"';
    EXPECT_EQ(BuildQuietly("notify_enable", word), kFallBack) << '"' << word << '"';
  }
}

TEST_F(GuestPasswordRotationTest, DateTypesAreCrossed) {
  EXPECT_EQ(BuildQuietly("date_type", "1").date_type, 0);
  EXPECT_EQ(device_.Log(), LogLines{});
  EXPECT_EQ(BuildQuietly("date_type", "0").date_type, 1);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(GuestPasswordRotationTest, UnknownDateTypesAreRegularAndLogged) {
  for (const std::string word : {"2", "-1", "00", "01", " 1", "1 ", "regular", "", "%s"}) {
    EXPECT_EQ(BuildQuietly("date_type", word).date_type, 1) << word;
    EXPECT_EQ(device_.Log(), LogLines{Error(855, "Invalid mode: " + word + ", select regular.")});
  }
}

TEST_F(GuestPasswordRotationTest, StrengthsAreTranslated) {
  EXPECT_EQ(BuildQuietly("strength", "low").strength, 0);
  EXPECT_EQ(BuildQuietly("strength", "medium").strength, 1);
  EXPECT_EQ(BuildQuietly("strength", "high").strength, 2);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(GuestPasswordRotationTest, UnknownStrengthsAreMediumAndLogged) {
  for (const std::string word : {"HIGH", "High", "high ", "2", "strong", "", "%d"}) {
    EXPECT_EQ(BuildQuietly("strength", word).strength, 1) << word;
    EXPECT_EQ(device_.Log(), LogLines{Error(869, "Invalid value: " + word + ", select medium.")});
  }
}

TEST_F(GuestPasswordRotationTest, TheModesLineComesBeforeTheStrengths) {
  Build({{"guest_pwd_rotate_strength", "huge"}, {"guest_pwd_rotate_date_type", "7"}});
  EXPECT_EQ(device_.Log(), (LogLines{Error(855, "Invalid mode: 7, select regular."),
                                     Error(869, "Invalid value: huge, select medium.")}));
}

TEST_F(GuestPasswordRotationTest, DateWithoutSlashesKeepsTheGivenTime) {
  EXPECT_EQ(Build({{"guest_pwd_rotate_date", "2023-07-04"},
                   {"guest_pwd_rotate_hour", "23"},
                   {"guest_pwd_rotate_minute", "59"}})
                .date,
            "2021-01-01 23:59");
}

TEST_F(GuestPasswordRotationTest, WeekDayIsStoredUnchanged) {
  for (const char* value : {"0,1,2,3,4,5,6", " 8 ", "Monday", "%s", ",,", "\xff\x01"}) {
    EXPECT_EQ(BuildQuietly("week_day", value).week_day, value);
  }
}

TEST_F(GuestPasswordRotationTest, MailListIsSplitAtCommasOnly) {
  EXPECT_EQ(BuildQuietly("mail_list", "a@x.org,b@x.org").mail_list, (Fields{"a@x.org", "b@x.org"}));
  EXPECT_EQ(BuildQuietly("mail_list", "a@x.org,,b@x.org").mail_list, (Fields{"a@x.org", "", "b@x.org"}));
  EXPECT_EQ(BuildQuietly("mail_list", "a@x.org, b@x.org").mail_list, (Fields{"a@x.org", " b@x.org"}));
  EXPECT_EQ(BuildQuietly("mail_list", "a@x.org;b@x.org/c").mail_list, Fields{"a@x.org;b@x.org/c"});
  EXPECT_EQ(BuildQuietly("mail_list", ",").mail_list, (Fields{"", ""}));
  EXPECT_EQ(BuildQuietly("mail_list", "").mail_list, Fields{});
}

}  // namespace
}  // namespace KELP::Wifi::Updater
