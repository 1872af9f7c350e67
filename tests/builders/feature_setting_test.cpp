#include "builders/feature_setting.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

#include "lab/images/secret_seal.h"
#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Entries;
using testing_support::Error;
using testing_support::LogLines;
using Util::RadioFrequency;

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_ap_00:11:32:2a:0b:0c";
constexpr const char* kKey = "8f1d5c3b7a9e02644d6b8890aabbccddeeff00112233445566778899a0b1c2d3";
constexpr bool kPrimary = false;
constexpr bool kGuest = true;

/// What a file without any keys gives.
FeatureSetting Defaults() {
  FeatureSetting setting;
  setting.enabled = false;
  setting.frequency = RadioFrequency::Band2_4GHz;
  setting.ssid = "";
  setting.display_ssid = false;
  setting.max_num_client = 256;
  setting.restrict_guest_access = false;
  setting.security = 4;
  setting.password = "";
  setting.auth_server_ip = "";
  setting.auth_server_port = 0;
  setting.schedule_enabled = false;
  setting.schedule_kind = 1;
  setting.schedule = "";
  setting.preset_number = 0;
  setting.preset_flag = false;
  setting.mac_filter_profile_id = -1;
  setting.guestPasswordRotation.enable = false;
  setting.guestPasswordRotation.date_type = 1;
  setting.guestPasswordRotation.strength = 1;
  setting.guestPasswordRotation.date = "2021-01-01 00:00";
  setting.guestPasswordRotation.week_day = "0,1,2,3,4,5,6";
  setting.guestPasswordRotation.notify_enable = false;
  setting.guestPasswordRotation.mail_list = {};
  setting.pmf_mode = 0;
  setting.ampdu = false;
  setting.uapsd_enable = false;
  setting.ap_mumimo = false;
  setting.ap_enable_11r = false;
  setting.ap_mcast_translating = false;
  setting.country_abbrev_override_enable = false;
  setting.ap_isolation = false;
  setting.preset_on = true;
  setting.enable_ext_nss = false;
  setting.sc_disable_legacy_steering = false;
  setting.key_rotation = 3600;
  setting.dtim = 4;
  return setting;
}

template <typename T>
FeatureSetting DefaultsBut(T FeatureSetting::*field, const T& value) {
  FeatureSetting setting = Defaults();
  setting.*field = value;
  return setting;
}

/// The lines of a file without any keys, in order.
LogLines LinesOfDefaults() {
  return {Error(760, "Invalid security mode: , select wpa2."), Error(589, "Failed to decrypt ssid with "),
          Error(776, "Invalid pmf mode: , select disabled.")};
}

std::string Prefixed(const std::string& key, bool is_guest) {
  return is_guest ? "guest_" + key : key;
}

class FeatureSettingTest : public ::testing::Test {
 protected:
  FeatureSettingTest() { device_.Files().Write("/usr/kelp/etc/secret.key", kKey); }

  FeatureSetting Build(bool is_guest) {
    return device_.Run([&] {
      return BuildFeatureSetting(UpdateContext{}, kFile, RadioFrequency::Band2_4GHz, -1, is_guest);
    });
  }
  FeatureSetting Build(bool is_guest, const Entries& entries) {
    device_.WriteEntries(kFile, entries);
    return Build(is_guest);
  }

  testing_support::TestDevice device_;
};

// Defaults

TEST_F(FeatureSettingTest, FileWithoutKeysGivesTheDefaultsAndThreeLinesInOrder) {
  EXPECT_EQ(Build(kPrimary, {}), Defaults());
  EXPECT_EQ(device_.Log(), LinesOfDefaults());
}

TEST_F(FeatureSettingTest, GuestOfAFileWithoutKeysGivesTheSame) {
  EXPECT_EQ(Build(kGuest, {}), Defaults());
  EXPECT_EQ(device_.Log(), LinesOfDefaults());
}

TEST_F(FeatureSettingTest, MissingFileGivesTheSameAsOneWithoutKeys) {
  EXPECT_EQ(Build(kPrimary), Defaults());
  EXPECT_EQ(device_.Log(), LinesOfDefaults());
}

TEST_F(FeatureSettingTest, DirectoryInTheFilesPlaceGivesTheSameAsAFileWithoutKeys) {
  device_.Files().MakeDirectory(kFile);
  EXPECT_EQ(Build(kPrimary), Defaults());
  EXPECT_EQ(device_.Log(), LinesOfDefaults());
}

TEST_F(FeatureSettingTest, MembersWithoutALegacyKeyCannotBeSet) {
  Entries entries;
  for (const char* key : {"frequency",
                          "restrict_guest_access",
                          "auth_server_port",
                          "schedule_kind",
                          "preset_number",
                          "preset_flag",
                          "preset_on",
                          "mac_filter_profile_id",
                          "enable",
                          "date_type",
                          "strength",
                          "date",
                          "week_day",
                          "notify_enable",
                          "mail_list",
                          "guest_pwd_rotate_enable",
                          "guest_pwd_rotate_date_type",
                          "guest_pwd_rotate_strength",
                          "guest_pwd_rotate_date",
                          "guest_pwd_rotate_week_day",
                          "guest_pwd_rotate_notify_enable",
                          "guest_pwd_rotate_mail_list",
                          "smartconnect_enabled"}) {
    entries.emplace_back(key, "yes");
    entries.emplace_back(std::string("guest_") + key, "yes");
  }
  EXPECT_EQ(Build(kPrimary, entries), Defaults());
  EXPECT_EQ(Build(kGuest, entries), Defaults());
}

TEST_F(FeatureSettingTest, RadioAndProfileAreStoredAsTheyAre) {
  using Limits = std::numeric_limits<std::int32_t>;
  for (const auto& [radio, profile] :
       {std::pair{0, -1}, {1, 0}, {2, 3}, {3, 17}, {4, -2}, {7, Limits::max()}, {-1, Limits::min()}}) {
    const FeatureSetting setting = device_.Run([radio = radio, profile = profile] {
      return BuildFeatureSetting(UpdateContext{}, kFile, static_cast<RadioFrequency>(radio), profile,
                                 kPrimary);
    });
    FeatureSetting expected = Defaults();
    expected.frequency = static_cast<RadioFrequency>(radio);
    expected.mac_filter_profile_id = profile;
    EXPECT_EQ(setting, expected) << radio << ", " << profile;
  }
}

TEST_F(FeatureSettingTest, NoFactOfTheDeviceMatters) {
  device_.WriteEntries(kFile, {});
  const UpdateContext context{1, MeshRole::Repeater, Util::SupportedModel::CEDAR};
  EXPECT_EQ(device_.Run([&] {
    return BuildFeatureSetting(context, kFile, RadioFrequency::Band2_4GHz, -1, kPrimary);
  }),
            Defaults());
}

// Flags

struct Flag {
  const char* key;
  bool FeatureSetting::*field;
};

void PrintTo(const Flag& flag, std::ostream* out) {
  *out << flag.key;
}

class FlagTest : public FeatureSettingTest, public ::testing::WithParamInterface<Flag> {};

TEST_P(FlagTest, YesSetsItsFieldAndNoOther) {
  const auto& [key, field] = GetParam();
  EXPECT_EQ(Build(kPrimary, {{key, "yes"}}), DefaultsBut(field, true));
  EXPECT_EQ(Build(kGuest, {{std::string("guest_") + key, "yes"}}), DefaultsBut(field, true));
}

TEST_P(FlagTest, TheOtherNetworksKeySetsNothing) {
  const auto& [key, field] = GetParam();
  EXPECT_EQ(Build(kPrimary, {{std::string("guest_") + key, "yes"}}), Defaults());
  EXPECT_EQ(Build(kGuest, {{key, "yes"}}), Defaults());
  EXPECT_EQ(Build(kGuest, {{std::string("guest_guest_") + key, "yes"}}), Defaults());
}

TEST_P(FlagTest, AnyOtherWordIsFalse) {
  const auto& [key, field] = GetParam();
  for (const char* word : {"Yes", "YES", "yes ", " yes", "ye", "yess", "y", "1", "true", "on", "no", ""}) {
    EXPECT_EQ(Build(kPrimary, {{key, word}}), Defaults()) << '"' << word << '"';
  }
}

TEST_P(FlagTest, KeyInUpperCaseSetsNothing) {
  std::string key = GetParam().key;
  for (char& letter : key) {
    if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
  }
  EXPECT_EQ(Build(kPrimary, {{key, "yes"}}), Defaults());
}

INSTANTIATE_TEST_SUITE_P(
    FeatureSetting, FlagTest,
    ::testing::Values(
        Flag{"enabled", &FeatureSetting::enabled}, Flag{"display_ssid", &FeatureSetting::display_ssid},
        Flag{"schedule_enabled", &FeatureSetting::schedule_enabled}, Flag{"ampdu", &FeatureSetting::ampdu},
        Flag{"uapsd_enable", &FeatureSetting::uapsd_enable}, Flag{"ap_mumimo", &FeatureSetting::ap_mumimo},
        Flag{"ap_enable_11r", &FeatureSetting::ap_enable_11r},
        Flag{"ap_mcast_translating", &FeatureSetting::ap_mcast_translating},
        Flag{"country_abbrev_override_enable", &FeatureSetting::country_abbrev_override_enable},
        Flag{"ap_isolation", &FeatureSetting::ap_isolation},
        Flag{"enable_ext_nss", &FeatureSetting::enable_ext_nss},
        Flag{"sc_disable_legacy_steering", &FeatureSetting::sc_disable_legacy_steering}),
    [](const auto& test) { return std::string(test.param.key); });

// Guest access

TEST_F(FeatureSettingTest, GuestAccessIsRestrictedByTheWordNo) {
  EXPECT_EQ(Build(kGuest, {{"guest_allow_access_guest", "no"}}),
            DefaultsBut(&FeatureSetting::restrict_guest_access, true));
}

TEST_F(FeatureSettingTest, GuestAccessIsNotRestrictedByAnyOtherWord) {
  for (const char* word : {"yes", "", "No", "NO", "no ", " no", "n", "not", "0", "false"}) {
    EXPECT_EQ(Build(kGuest, {{"guest_allow_access_guest", word}}), Defaults()) << '"' << word << '"';
  }
}

TEST_F(FeatureSettingTest, GuestAccessWithoutThePrefixSetsNothing) {
  EXPECT_EQ(Build(kGuest, {{"allow_access_guest", "no"}}), Defaults());
}

TEST_F(FeatureSettingTest, GuestAccessOfThePrimaryNetworkIsNeverRestricted) {
  EXPECT_EQ(Build(kPrimary, {{"allow_access_guest", "no"}, {"guest_allow_access_guest", "no"}}), Defaults());
}

// Numbers

struct Number {
  const char* key;
  std::int32_t FeatureSetting::*field;
};

void PrintTo(const Number& number, std::ostream* out) {
  *out << number.key;
}

class NumberTest : public FeatureSettingTest, public ::testing::WithParamInterface<Number> {};

TEST_P(NumberTest, SetsItsFieldAndNoOther) {
  const auto& [key, field] = GetParam();
  EXPECT_EQ(Build(kPrimary, {{key, "77"}}), DefaultsBut(field, 77));
  EXPECT_EQ(Build(kGuest, {{std::string("guest_") + key, "77"}}), DefaultsBut(field, 77));
}

TEST_P(NumberTest, TheOtherNetworksKeySetsNothing) {
  const auto& [key, field] = GetParam();
  EXPECT_EQ(Build(kPrimary, {{std::string("guest_") + key, "77"}}), Defaults());
  EXPECT_EQ(Build(kGuest, {{key, "77"}}), Defaults());
}

TEST_P(NumberTest, IsTheDecimalNumberAtTheStartOfItsText) {
  const auto& [key, field] = GetParam();
  const std::pair<const char*, std::int32_t> kTexts[] = {
      {"0", 0},
      {"64 followed by words", 64},
      {" 42", 42},
      {"\t42", 42},
      {"-1", -1},
      {"+7", 7},
      {"12abc", 12},
      {"4x", 4},
      {"010", 10},
      {"0x10", 0},
      {"1e3", 1},
      {"8.9", 8},
      {"2147483647", 2147483647},
      {"-2147483648", std::numeric_limits<std::int32_t>::min()},
  };
  for (const auto& [text, value] : kTexts) {
    EXPECT_EQ(Build(kPrimary, {{key, text}}), DefaultsBut(field, value)) << '"' << text << '"';
  }
}

TEST_P(NumberTest, IsItsDefaultWhenTheTextIsNoNumberOf32Bits) {
  const auto& [key, field] = GetParam();
  for (const char* text : {"", " ", "abc", "x4", "-", "+", "- 5", "--5", "\"", "2147483648", "-2147483649",
                           "3000000000", "4294967296", "99999999999999999999999999"}) {
    EXPECT_EQ(Build(kPrimary, {{key, text}}), Defaults()) << '"' << text << '"';
    EXPECT_EQ(device_.Log(), LinesOfDefaults());
  }
}

INSTANTIATE_TEST_SUITE_P(FeatureSetting, NumberTest,
                         ::testing::Values(Number{"max_num_client", &FeatureSetting::max_num_client},
                                           Number{"auth_server_Port", &FeatureSetting::auth_server_port},
                                           Number{"key_rotation", &FeatureSetting::key_rotation},
                                           Number{"dtim", &FeatureSetting::dtim}),
                         [](const auto& test) { return std::string(test.param.key); });

// Texts that stand as they are

struct Text {
  const char* key;
  std::string FeatureSetting::*field;
};

void PrintTo(const Text& text, std::ostream* out) {
  *out << text.key;
}

class TextTest : public FeatureSettingTest, public ::testing::WithParamInterface<Text> {};

TEST_P(TextTest, SetsItsFieldAndNoOther) {
  const auto& [key, field] = GetParam();
  const std::string value = "  Mon 08:00-22:00 \\ %s \xff ";
  EXPECT_EQ(Build(kPrimary, {{key, value}}), DefaultsBut(field, value));
  EXPECT_EQ(Build(kGuest, {{std::string("guest_") + key, value}}), DefaultsBut(field, value));
}

TEST_P(TextTest, TheOtherNetworksKeySetsNothing) {
  const auto& [key, field] = GetParam();
  EXPECT_EQ(Build(kPrimary, {{std::string("guest_") + key, "text"}}), Defaults());
  EXPECT_EQ(Build(kGuest, {{key, "text"}}), Defaults());
}

INSTANTIATE_TEST_SUITE_P(FeatureSetting, TextTest,
                         ::testing::Values(Text{"auth_server_ip", &FeatureSetting::auth_server_ip},
                                           Text{"schedule", &FeatureSetting::schedule}),
                         [](const auto& test) { return std::string(test.param.key); });

TEST_F(FeatureSettingTest, AuthenticationServerIsReadForEverySecurityMode) {
  for (const char* word : {"disabled", "OWE", "WEP", "PERSONAL_WPA3", "ENTERPRISE_WPA3"}) {
    for (const bool is_guest : {kPrimary, kGuest}) {
      const FeatureSetting setting = Build(is_guest, {{Prefixed("security", is_guest), word},
                                                      {Prefixed("auth_server_ip", is_guest), "192.168.1.9"},
                                                      {Prefixed("auth_server_Port", is_guest), "1812"}});
      EXPECT_EQ(setting.auth_server_ip, "192.168.1.9") << word;
      EXPECT_EQ(setting.auth_server_port, 1812) << word;
    }
  }
}

// SSID

TEST_F(FeatureSettingTest, SsidIsDecoded) {
  EXPECT_EQ(Build(kPrimary, {{"ssid", "S2VscCBIb21l"}}),
            DefaultsBut(&FeatureSetting::ssid, std::string("Kelp Home")));
  EXPECT_EQ(Build(kGuest, {{"ssid", "S2VscCBIb21l"}, {"guest_ssid", "VmlzaXRvcnM="}}),
            DefaultsBut(&FeatureSetting::ssid, std::string("Visitors")));
}

TEST_F(FeatureSettingTest, SsidOfTheOtherNetworkIsNotTaken) {
  EXPECT_EQ(Build(kPrimary, {{"guest_ssid", "VmlzaXRvcnM="}}), Defaults());
  EXPECT_EQ(Build(kGuest, {{"ssid", "S2VscCBIb21l"}}), Defaults());
}

TEST_F(FeatureSettingTest, SsidIsBytesInAnyEncoding) {
  // 32 times 0xFF.
  EXPECT_EQ(Build(kPrimary, {{"ssid", "//////////////////////////////////////////8="}}).ssid,
            std::string(32, '\xff'));
  EXPECT_EQ(Build(kPrimary, {{"ssid", "IlwBCn8="}}).ssid, "\"\\\x01\n\x7f");
}

TEST_F(FeatureSettingTest, SsidIsCutAtAnEmbeddedNul) {
  EXPECT_EQ(Build(kPrimary, {{"ssid", "YWIAY2Q="}}).ssid, "ab");  // "ab", NUL, "cd"
  EXPECT_EQ(Build(kPrimary, {{"ssid", "AGFi"}}).ssid, "");
}

TEST_F(FeatureSettingTest, SsidThatIsNoBase64IsEmptyAndLogged) {
  for (const bool is_guest : {kPrimary, kGuest}) {
    EXPECT_EQ(Build(is_guest, {{Prefixed("ssid", is_guest), "Kelp Home!"}}), Defaults());
    EXPECT_EQ(device_.Log(), (LogLines{Error(760, "Invalid security mode: , select wpa2."),
                                       Error(575, "Failed to decode base64 string: Kelp Home!"),
                                       Error(589, "Failed to decrypt ssid with "),
                                       Error(776, "Invalid pmf mode: , select disabled.")}));
  }
}

// Security and secret

class SecretTest : public FeatureSettingTest,
                   public ::testing::WithParamInterface<std::tuple<const char*, int>> {
 protected:
  static bool IsEnterprise(std::int32_t security) { return security >= 8 && security <= 11; }

  Entries Secrets() {
    return {{"password", lab::SealSecret("primary password", kKey)},
            {"auth_server_shared_secret", lab::SealSecret("primary shared", kKey)},
            {"guest_password", lab::SealSecret("guest password", kKey)},
            {"guest_auth_server_shared_secret", lab::SealSecret("guest shared", kKey)}};
  }
};

TEST_P(SecretTest, PrimarySecretFollowsFromTheSecurityMode) {
  const auto& [word, security] = GetParam();
  Entries entries = Secrets();
  entries.emplace_back("security", word);
  entries.emplace_back("guest_security", IsEnterprise(security) ? "WEP" : "ENTERPRISE_WPA");
  FeatureSetting expected = Defaults();
  expected.security = security;
  expected.password = IsEnterprise(security) ? "primary shared" : "primary password";
  EXPECT_EQ(Build(kPrimary, entries), expected);
  EXPECT_EQ(device_.Log(), LogLines{Error(776, "Invalid pmf mode: , select disabled.")});
}

TEST_P(SecretTest, GuestSecretFollowsFromTheGuestSecurityMode) {
  const auto& [word, security] = GetParam();
  Entries entries = Secrets();
  entries.emplace_back("guest_security", word);
  entries.emplace_back("security", IsEnterprise(security) ? "WEP" : "ENTERPRISE_WPA");
  FeatureSetting expected = Defaults();
  expected.security = security;
  expected.password = IsEnterprise(security) ? "guest shared" : "guest password";
  EXPECT_EQ(Build(kGuest, entries), expected);
  EXPECT_EQ(device_.Log(), LogLines{Error(776, "Invalid pmf mode: , select disabled.")});
}

INSTANTIATE_TEST_SUITE_P(FeatureSetting, SecretTest,
                         ::testing::Values(std::tuple{"disabled", 0}, std::tuple{"OWE", 1},
                                           std::tuple{"WEP", 2}, std::tuple{"PERSONAL_WPA", 3},
                                           std::tuple{"PERSONAL_WPA2", 4}, std::tuple{"PERSONAL_WPA3", 5},
                                           std::tuple{"PERSONAL_WPA_MIXED", 6},
                                           std::tuple{"PERSONAL_WPA2_WPA3_MIXED", 7},
                                           std::tuple{"ENTERPRISE_WPA", 8}, std::tuple{"ENTERPRISE_WPA2", 9},
                                           std::tuple{"ENTERPRISE_WPA3", 10},
                                           std::tuple{"ENTERPRISE_WPA_MIXED", 11}),
                         [](const auto& test) { return std::string(std::get<0>(test.param)); });

TEST_F(SecretTest, UnknownSecurityWordIsWPA2AndTakesThePassword) {
  for (const char* word : {"wpa2", "ENTERPRISE_WPA2 ", "enterprise_wpa2", "ENTERPRISE", ""}) {
    Entries entries = Secrets();
    entries.emplace_back("security", word);
    const FeatureSetting setting = Build(kPrimary, entries);
    EXPECT_EQ(setting.security, 4) << word;
    EXPECT_EQ(setting.password, "primary password") << word;
    EXPECT_EQ(device_.Log(),
              (LogLines{Error(760, std::string("Invalid security mode: ") + word + ", select wpa2."),
                        Error(776, "Invalid pmf mode: , select disabled.")}));
  }
}

TEST_F(SecretTest, EnterpriseNetworkWithoutASharedSecretDoesNotFallBackToThePassword) {
  const Entries entries{{"security", "ENTERPRISE_WPA2"},
                        {"password", lab::SealSecret("primary password", kKey)},
                        {"guest_security", "ENTERPRISE_WPA2"},
                        {"guest_password", lab::SealSecret("guest password", kKey)}};
  EXPECT_EQ(Build(kPrimary, entries).password, "");
  EXPECT_EQ(Build(kGuest, entries).password, "");
}

TEST_F(SecretTest, GuestSecretIsNotTakenFromThePrimaryNetwork) {
  const Entries entries{{"password", lab::SealSecret("primary password", kKey)},
                        {"auth_server_shared_secret", lab::SealSecret("primary shared", kKey)}};
  EXPECT_EQ(Build(kGuest, entries), Defaults());
}

TEST_F(SecretTest, SecretThatCannotBeDecryptedIsEmptyAndLoggedAsItIsStored) {
  EXPECT_EQ(
      Build(kPrimary, {{"security", "OWE"}, {"password", "plain text"}, {"pmf_mode", "capable"}}).password,
      "");
  EXPECT_EQ(device_.Log(), LogLines{Error(589, "Failed to decrypt ssid with plain text")});
}

TEST_F(SecretTest, SecretIsNotBase64DecodedAndSsidNotDecrypted) {
  const std::string sealed = lab::SealSecret("secret", kKey);
  const FeatureSetting setting = Build(kPrimary, {{"ssid", sealed}, {"password", "S2VscCBIb21l"}});
  EXPECT_EQ(setting.password, "");
  EXPECT_NE(setting.ssid, "secret");
}

// Protected management frames

TEST_F(FeatureSettingTest, PMFModeIsTranslated) {
  const std::pair<const char*, std::int32_t> kWords[] = {{"disabled", 0}, {"capable", 1}, {"required", 2}};
  for (const auto& [word, value] : kWords) {
    EXPECT_EQ(Build(kPrimary, {{"pmf_mode", word}}), DefaultsBut(&FeatureSetting::pmf_mode, value)) << word;
    EXPECT_EQ(device_.Log(), (LogLines{Error(760, "Invalid security mode: , select wpa2."),
                                       Error(589, "Failed to decrypt ssid with ")}));
  }
}

TEST_F(FeatureSettingTest, GuestTakesThePMFModeOfThePrimaryNetwork) {
  EXPECT_EQ(Build(kGuest, {{"guest_pmf_mode", "disabled"}, {"pmf_mode", "required"}}),
            DefaultsBut(&FeatureSetting::pmf_mode, 2));
}

TEST_F(FeatureSettingTest, GuestPMFKeyIsNeverRead) {
  EXPECT_EQ(Build(kGuest, {{"guest_pmf_mode", "required"}}), Defaults());
  EXPECT_EQ(device_.Log(), LinesOfDefaults());
}

// Order

TEST_F(FeatureSettingTest, LinesComeInTheOrderSecuritySsidSecretPMF) {
  EXPECT_EQ(
      Build(kPrimary, {{"pmf_mode", "maybe"}, {"password", "p!"}, {"ssid", "s!"}, {"security", "wpa9"}}),
      Defaults());
  EXPECT_EQ(device_.Log(), (LogLines{Error(760, "Invalid security mode: wpa9, select wpa2."),
                                     Error(575, "Failed to decode base64 string: s!"),
                                     Error(589, "Failed to decrypt ssid with p!"),
                                     Error(776, "Invalid pmf mode: maybe, select disabled.")}));
}

TEST_F(FeatureSettingTest, GuestLinesComeInTheSameOrder) {
  EXPECT_EQ(Build(kGuest, {{"pmf_mode", "maybe"},
                           {"guest_password", "gp!"},
                           {"guest_ssid", "gs!"},
                           {"guest_security", "wpa8"},
                           {"password", "p!"},
                           {"ssid", "s!"},
                           {"security", "wpa9"}}),
            Defaults());
  EXPECT_EQ(device_.Log(), (LogLines{Error(760, "Invalid security mode: wpa8, select wpa2."),
                                     Error(575, "Failed to decode base64 string: gs!"),
                                     Error(589, "Failed to decrypt ssid with gp!"),
                                     Error(776, "Invalid pmf mode: maybe, select disabled.")}));
}

TEST_F(FeatureSettingTest, WordsFromTheFileAreNoFormats) {
  Build(kPrimary, {{"security", "%s%n"}, {"ssid", "%n"}, {"password", "%s%s"}, {"pmf_mode", "%d"}});
  EXPECT_EQ(device_.Log(), (LogLines{Error(760, "Invalid security mode: %s%n, select wpa2."),
                                     Error(575, "Failed to decode base64 string: %n"),
                                     Error(589, "Failed to decrypt ssid with %s%s"),
                                     Error(776, "Invalid pmf mode: %d, select disabled.")}));
}

// Everything at once

TEST_F(FeatureSettingTest, BothNetworksStandInOneFile) {
  const Entries entries{
      {"enabled", "yes"},
      {"ssid", "S2VscCBIb21l"},
      {"display_ssid", "no"},
      {"max_num_client", "64"},
      {"security", "ENTERPRISE_WPA3"},
      {"password", lab::SealSecret("unused", kKey)},
      {"auth_server_shared_secret", lab::SealSecret("radius secret", kKey)},
      {"auth_server_ip", "10.0.0.2"},
      {"auth_server_Port", "1812"},
      {"schedule_enabled", "yes"},
      {"schedule", "111100001111"},
      {"pmf_mode", "required"},
      {"ampdu", "no"},
      {"uapsd_enable", "yes"},
      {"ap_mumimo", "no"},
      {"ap_enable_11r", "yes"},
      {"ap_mcast_translating", "no"},
      {"country_abbrev_override_enable", "yes"},
      {"ap_isolation", "no"},
      {"enable_ext_nss", "yes"},
      {"sc_disable_legacy_steering", "no"},
      {"key_rotation", "7200"},
      {"dtim", "2"},
      {"guest_enabled", "no"},
      {"guest_ssid", "VmlzaXRvcnM="},
      {"guest_display_ssid", "yes"},
      {"guest_max_num_client", "16"},
      {"guest_allow_access_guest", "no"},
      {"guest_security", "PERSONAL_WPA2_WPA3_MIXED"},
      {"guest_password", lab::SealSecret("welcome!", kKey)},
      {"guest_auth_server_ip", "10.0.0.3"},
      {"guest_auth_server_Port", "1813"},
      {"guest_schedule_enabled", "no"},
      {"guest_schedule", "0000"},
      {"guest_ampdu", "yes"},
      {"guest_uapsd_enable", "no"},
      {"guest_ap_mumimo", "yes"},
      {"guest_ap_enable_11r", "no"},
      {"guest_ap_mcast_translating", "yes"},
      {"guest_country_abbrev_override_enable", "no"},
      {"guest_ap_isolation", "yes"},
      {"guest_enable_ext_nss", "no"},
      {"guest_sc_disable_legacy_steering", "yes"},
      {"guest_key_rotation", "0"},
      {"guest_dtim", "3"},
  };

  FeatureSetting primary = Defaults();
  primary.enabled = true;
  primary.ssid = "Kelp Home";
  primary.max_num_client = 64;
  primary.security = 10;
  primary.password = "radius secret";
  primary.auth_server_ip = "10.0.0.2";
  primary.auth_server_port = 1812;
  primary.schedule_enabled = true;
  primary.schedule = "111100001111";
  primary.pmf_mode = 2;
  primary.uapsd_enable = true;
  primary.ap_enable_11r = true;
  primary.country_abbrev_override_enable = true;
  primary.enable_ext_nss = true;
  primary.key_rotation = 7200;
  primary.dtim = 2;
  EXPECT_EQ(Build(kPrimary, entries), primary);
  EXPECT_EQ(device_.Log(), LogLines{});

  FeatureSetting guest = Defaults();
  guest.ssid = "Visitors";
  guest.display_ssid = true;
  guest.max_num_client = 16;
  guest.restrict_guest_access = true;
  guest.security = 7;
  guest.password = "welcome!";
  guest.auth_server_ip = "10.0.0.3";
  guest.auth_server_port = 1813;
  guest.schedule = "0000";
  guest.pmf_mode = 2;
  guest.ampdu = true;
  guest.ap_mumimo = true;
  guest.ap_mcast_translating = true;
  guest.ap_isolation = true;
  guest.sc_disable_legacy_steering = true;
  guest.key_rotation = 0;
  guest.dtim = 3;
  EXPECT_EQ(Build(kGuest, entries), guest);
  EXPECT_EQ(device_.Log(), LogLines{});
}

}  // namespace
}  // namespace KELP::Wifi::Updater
