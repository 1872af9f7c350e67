#include "lab/images/secret_seal.h"
#include "tests/lab/household/found.h"

namespace lab_test {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

const std::string k24 = "wifi_ap_02:11:32:00:00:04: ";

std::string SealedElsewhere() {
  return lab::SealSecret("of another unit", std::string(64, 'f'));
}

TEST(FindingsAboutSecrets, TellOnePasswordThatIsLost) {
  Household household;
  household.Set(Household::k24, "guest_password", SealedElsewhere());
  EXPECT_THAT(Found(household), ElementsAre("password-lost: " + k24 + "guest_password"));
}

TEST(FindingsAboutSecrets, TellAPasswordThatNeverWas) {
  Household household;
  household.Drop(Household::k24, "password");
  EXPECT_THAT(Found(household), ElementsAre("password-lost: " + k24 + "password is empty or missing"));
}

TEST(FindingsAboutSecrets, NeedNoPasswordOfANetworkThatIsOff) {
  Household household;
  household.Drop(Household::k24, "password");
  household.Set(Household::k24, "enabled", "no");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutSecrets, NeedNoPasswordOfAnOpenNetwork) {
  Household household;
  household.Set(Household::k24, "guest_security", "disabled");
  household.Set(Household::k24, "guest_password", "");
  household.Set(Household::k5, "guest_security", "OWE");
  household.Set(Household::k5, "guest_password", SealedElsewhere());
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutSecrets, AskForTheSharedSecretOfAnEnterpriseNetwork) {
  Household household;
  household.Set(Household::k5, "security", "ENTERPRISE_WPA2");
  household.Set(Household::k5, "auth_server_ip", "192.168.1.2");
  household.Set(Household::k5, "auth_server_shared_secret", SealedElsewhere());
  EXPECT_THAT(Found(household),
              ElementsAre("password-lost: wifi_ap_02:11:32:00:00:05: auth_server_shared_secret"));
}

TEST(FindingsAboutSecrets, TellAKeyThatIsMissing) {
  Household household;
  household.Files().Remove(Household::kKey);
  EXPECT_THAT(Found(household), Contains("secret-key-unusable: secret.key is missing"));
}

TEST(FindingsAboutSecrets, TellAKeyThatIsNone) {
  Household household;
  household.Files().Write(Household::kKey, "0011\n");
  EXPECT_THAT(Found(household),
              Contains("secret-key-unusable: secret.key is no key of 64 hexadecimal digits"));
}

TEST(FindingsAboutSecrets, TellAKeyOfAnotherUnit) {
  Household household;
  household.Files().Write(Household::kKey, std::string(64, 'f') + "\n");
  EXPECT_THAT(Found(household), Contains("secret-key-unusable: secret.key opens none of the secrets"));
}

TEST(FindingsAboutSecrets, MissNoKeyWhereNothingIsSealed) {
  Household household;
  household.Files().Remove(Household::kKey);
  household.SetEverywhere("security", "disabled");
  household.SetEverywhere("guest_security", "OWE");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutSecrets, TellASecretThatIsStoredUnsealedWithoutTellingIt) {
  for (const std::string& secret : {std::string("swordfish"), std::string(64, 'a')}) {
    Household household;
    household.Set(Household::k24, "password", secret);
    const std::vector<std::string> found = Found(household);
    EXPECT_THAT(found,
                ElementsAre("password-lost: " + k24 + "password", "secret-unsealed: " + k24 + "password"));
    EXPECT_THAT(found, Each(Not(HasSubstr(secret))));
  }
}

TEST(FindingsAboutSecrets, TakeADamagedSecretForNoUnsealedOne) {
  Household household;
  std::string sealed = household.Sealed("home secret");
  household.Set(Household::k24, "password", sealed + "\r");
  sealed[20] = '*';
  household.Set(Household::k5, "password", sealed);
  EXPECT_THAT(Found(household),
              ElementsAre("crlf-lines: wifi_ap_02:11:32:00:00:04", "password-lost: " + k24 + "password",
                          "password-lost: wifi_ap_02:11:32:00:00:05: password"));
}

TEST(FindingsAboutSecrets, TellAWPSPinThatIsAnotherOne) {
  Household household;
  household.Drop(Household::kWPS, "wps_ap_pin");
  EXPECT_THAT(Found(household), ElementsAre(StartsWith("wps-pin-changed: wifi_wps: wps_ap_pin is missing")));
  Household other;
  other.Set(Household::kWPS, "wps_ap_pin", "");
  EXPECT_THAT(Found(other), ElementsAre("wps-pin-changed: wifi_wps: wps_ap_pin is empty; no PIN counts"));
}

TEST(FindingsAboutSecrets, NeedNoPinWhereNobodyMayUseOne) {
  Household household;
  household.Drop(Household::kWPS, "wps_ap_pin");
  household.Set(Household::kWPS, "is_wps_ap_pin_enabled", "no");
  EXPECT_THAT(Found(household), IsEmpty());
}

}  // namespace
}  // namespace lab_test
