#include "tests/lab/household/found.h"

namespace lab_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string k24 = "wifi_ap_02:11:32:00:00:04: ";

TEST(FindingsAboutGuests, TellGuestsWhoAreLetInForAWord) {
  Household household;
  household.Set(Household::k24, "guest_allow_access_guest", "No");
  EXPECT_THAT(Found(household), ElementsAre("guests-let-in: " + k24 + "guest_allow_access_guest=No"));
}

TEST(FindingsAboutGuests, TellGuestsWhoAreLetInForAnyWordThatRefuses) {
  for (const char* word : {"NO", "no ", "no\t", "off", "0", "false", "maybe"}) {
    Household household;
    household.Set(Household::k24, "guest_allow_access_guest", word);
    EXPECT_THAT(Found(household), ElementsAre("guests-let-in: " + k24 + "guest_allow_access_guest=" + word));
  }
}

TEST(FindingsAboutGuests, LeaveGuestsAloneWhomAnyWordWelcomes) {
  for (const char* word : {"YES", "Yes ", "1", "true", "on", ""}) {
    Household household;
    household.Set(Household::k24, "guest_allow_access_guest", word);
    EXPECT_THAT(Found(household), IsEmpty()) << word;
  }
}

TEST(FindingsAboutGuests, LeaveARotationAloneThatWasOff) {
  Household household;
  household.Set(Household::k24, "guest_pwd_rotate_enable", "No");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutGuests, LeaveATimeAloneThatIsReadWhole) {
  Household household;
  household.Set(Household::k24, "guest_pwd_rotate_hour", " 09 ");
  household.Set(Household::k24, "guest_pwd_rotate_minute", "+5");
  household.Set(Household::k24, "guest_pwd_rotate_date", "2023/07/4 ");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutGuests, TellATimeThatIsTooLarge) {
  Household household;
  household.Set(Household::k24, "guest_pwd_rotate_hour", "99999999999");
  EXPECT_THAT(Found(household),
              ElementsAre("rotation-changed: " + k24 + "guest_pwd_rotate_hour=99999999999"));
}

TEST(FindingsAboutGuests, LeaveGuestsAloneWhoWereWelcome) {
  Household household;
  household.Set(Household::k24, "guest_allow_access_guest", "yes");
  household.Drop(Household::k5, "guest_allow_access_guest");
  household.SetEverywhere("allow_access_guest", "No");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutGuests, TellARotationThatIsOffForItsSpelling) {
  Household household;
  household.Set(Household::k24, "guest_pwd_rotate_enable", "YES");
  EXPECT_THAT(Found(household), ElementsAre("rotation-lost: " + k24 + "guest_pwd_rotate_enable=YES"));
}

TEST(FindingsAboutGuests, TellWhatFellBackInTheSchedule) {
  Household household;
  household.Set(Household::k24, "guest_pwd_rotate_date_type", "2");
  household.Set(Household::k24, "guest_pwd_rotate_strength", "HIGH");
  household.Set(Household::k24, "guest_pwd_rotate_date", "2023-07-04");
  household.Set(Household::k24, "guest_pwd_rotate_hour", "7pm");
  household.Set(Household::k24, "guest_pwd_rotate_minute", "");
  const std::string changed = "rotation-changed: " + k24 + "guest_pwd_rotate_";
  EXPECT_THAT(Found(household),
              ElementsAre(changed + "date_type=2", changed + "strength=HIGH", changed + "date=2023-07-04",
                          changed + "hour=7pm", changed + "minute="));
}

TEST(FindingsAboutGuests, LeaveAScheduleAloneThatIsOff) {
  Household household;
  household.Set(Household::k24, "guest_pwd_rotate_enable", "no");
  household.Set(Household::k24, "guest_pwd_rotate_strength", "HIGH");
  household.Set(Household::k24, "guest_pwd_rotate_date", "2023/13/32");
  household.Set(Household::k24, "guest_pwd_rotate_mail_list", "");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutGuests, LeaveTheDateAloneThatIsTheFallback) {
  Household household;
  household.Set(Household::k24, "guest_pwd_rotate_date", "2021/01/1");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutGuests, TellADateThatNoCalendarHas) {
  const std::string impossible = "rotation-date-impossible: " + k24 + "guest_pwd_rotate_date is now ";
  for (const auto& [date, now] : {std::pair{"2023/2/29", "2023-02-29 09:05"},
                                  {"2023/13/1", "2023-13-01 09:05"},
                                  {"2023/4/31", "2023-04-31 09:05"}}) {
    Household household;
    household.Set(Household::k24, "guest_pwd_rotate_date", date);
    EXPECT_THAT(Found(household), ElementsAre(impossible + now));
  }
  Household late;
  late.Set(Household::k24, "guest_pwd_rotate_hour", "24");
  EXPECT_THAT(Found(late), ElementsAre(impossible + "2023-07-04 24:05"));
}

TEST(FindingsAboutGuests, KnowLeapYears) {
  Household household;
  household.Set(Household::k24, "guest_pwd_rotate_date", "2024/2/29");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutGuests, TellMailThatGoesAstray) {
  for (const char* addresses : {"a@example.net, b@example.net", "a@example.net,,b@example.net", ""}) {
    Household household;
    household.Set(Household::k24, "guest_pwd_rotate_mail_list", addresses);
    EXPECT_THAT(Found(household),
                ElementsAre("rotation-mail-odd: " + k24 + "guest_pwd_rotate_mail_list=" + addresses));
  }
  Household silent;
  silent.Set(Household::k24, "guest_pwd_rotate_mail_list", "");
  silent.Set(Household::k24, "guest_pwd_rotate_notify_enable", "no");
  EXPECT_THAT(Found(silent), IsEmpty());
}

}  // namespace
}  // namespace lab_test
