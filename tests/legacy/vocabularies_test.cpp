#include "legacy/vocabularies.h"

#include <gtest/gtest.h>

#include <cctype>
#include <climits>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/legacy/logged.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::LoggedErrors;
using testing_support::Messages;
using Util::RadioFrequency;

using Words = std::map<std::string, int>;
using Translator = std::function<std::int32_t(const std::string&)>;

std::string WithCase(std::string word, int (*to_case)(int)) {
  for (char& byte : word) byte = static_cast<char>(to_case(static_cast<unsigned char>(byte)));
  return word;
}

/// Words that resemble those of the vocabulary and are none of them.
std::set<std::string> Strangers(const Words& words) {
  std::set<std::string> strangers{"", " ", "0", "1", "2", "yes", "%s%n%d", "caf\xE9\xFF"};
  for (const auto& [word, value] : words) {
    strangers.insert({WithCase(word, std::toupper), WithCase(word, std::tolower), word + " ", " " + word,
                      word + "\r", word + "x", word.substr(1), word.substr(0, word.size() - 1),
                      "\"" + word + "\"", std::to_string(value)});
  }
  for (const auto& [word, value] : words) strangers.erase(word);
  return strangers;
}

/// Every word gives its value without a line; every other gives `fallback` and the one line `before` + word +
/// `behind`.
void ExpectVocabulary(const Words& words, int fallback, const std::string& before, const std::string& behind,
                      const Translator& translate) {
  lab::PrivateRoot device;
  lab::InRoot inside(device);
  for (const auto& [word, value] : words) {
    EXPECT_EQ(translate(word), value) << word;
    EXPECT_EQ(LoggedErrors(inside), Messages{}) << word;
  }
  for (const std::string& word : Strangers(words)) {
    EXPECT_EQ(translate(word), fallback) << word;
    EXPECT_EQ(LoggedErrors(inside), (Messages{before + word + behind}));
  }
}

TEST(Vocabularies, SecurityMode) {
  ExpectVocabulary({{"disabled", 0},
                    {"OWE", 1},
                    {"WEP", 2},
                    {"PERSONAL_WPA", 3},
                    {"PERSONAL_WPA2", 4},
                    {"PERSONAL_WPA3", 5},
                    {"PERSONAL_WPA_MIXED", 6},
                    {"PERSONAL_WPA2_WPA3_MIXED", 7},
                    {"ENTERPRISE_WPA", 8},
                    {"ENTERPRISE_WPA2", 9},
                    {"ENTERPRISE_WPA3", 10},
                    {"ENTERPRISE_WPA_MIXED", 11}},
                   4, "kelpwifiupdater:760 Invalid security mode: ", ", select wpa2.", ToSecurityMode);
}

TEST(Vocabularies, SecurityModeKnowsNoLowerCaseWpa2) {
  lab::PrivateRoot device;
  lab::InRoot inside(device);
  EXPECT_EQ(ToSecurityMode("wpa2"), 4);
  EXPECT_EQ(ToSecurityMode(""), 4);
  EXPECT_EQ(LoggedErrors(inside), (Messages{"kelpwifiupdater:760 Invalid security mode: wpa2, select wpa2.",
                                            "kelpwifiupdater:760 Invalid security mode: , select wpa2."}));
}

TEST(Vocabularies, PMFMode) {
  ExpectVocabulary({{"disabled", 0}, {"capable", 1}, {"required", 2}}, 0,
                   "kelpwifiupdater:776 Invalid pmf mode: ", ", select disabled.", ToPMFMode);
}

const Words kWirelessModes{{"n", 0}, {"bgn", 1}, {"ac", 4}, {"an+ac", 5}};

TEST(Vocabularies, WirelessModeOfThe24GHzRadioFallsBackToOne) {
  ExpectVocabulary(kWirelessModes, 1, "kelpwifiupdater:795 Invalid wireless mode: ", ".",
                   [](const std::string& word) { return ToWirelessMode(word, RadioFrequency::Band2_4GHz); });
}

TEST(Vocabularies, WirelessModeOfEveryOtherRadioFallsBackToFour) {
  for (const int radio : {0, 2, 3, 4, 5, 7, -1}) {
    ExpectVocabulary(kWirelessModes, 4, "kelpwifiupdater:795 Invalid wireless mode: ", ".",
                     [&](const std::string& word) { return ToWirelessMode(word, RadioFrequency{radio}); });
  }
}

TEST(Vocabularies, TxPower) {
  ExpectVocabulary({{"low", 0}, {"medium", 1}, {"high", 2}}, 2,
                   "kelpwifiupdater:811 Invalid tx power: ", ", select high.", ToTxPower);
}

TEST(Vocabularies, RotationStrength) {
  ExpectVocabulary({{"low", 0}, {"medium", 1}, {"high", 2}}, 1,
                   "kelpwifiupdater:869 Invalid value: ", ", select medium.", ToRotationStrength);
}

TEST(Vocabularies, RotationDateTypeIsCrossed) {
  ExpectVocabulary({{"0", 1}, {"1", 0}}, 1, "kelpwifiupdater:855 Invalid mode: ", ", select regular.",
                   ToRotationDateType);
}

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_ap_00:11:22:33:44:55";

class Bandwidth : public ::testing::Test {
 protected:
  void Expect(const std::string& text, int radio, int value, const Messages& messages) {
    device_.Write(kFile, text);
    lab::InRoot inside(device_);
    EXPECT_EQ(ToBandwidth(kFile, RadioFrequency{radio}), value) << text << radio;
    EXPECT_EQ(LoggedErrors(inside), messages) << text << radio;
  }

  lab::PrivateRoot device_;
};

TEST_F(Bandwidth, WordsOfTheVocabularyOnEveryRadio) {
  const Words words{
      {"20MHZ", 0}, {"20_40MHZ", 2}, {"20_40_80MHZ", 3}, {"20_40_80_160MHZ", 4}, {"80_80MHZ", 5}};
  for (const int radio : {0, 1, 2, 3, 4, 7, -1}) {
    for (const auto& [word, value] : words) Expect("bandwidth=" + word + "\n", radio, value, {});
  }
  for (const std::string& word : Strangers(words)) {
    if (word.starts_with('"')) continue;  // the file's own quotes
    Expect("bandwidth=" + word + "\n", 2, 2,
           {"kelpwifiupdater:838 Invalid bandwidth: " + word + ", select 20_40."});
  }
}

TEST_F(Bandwidth, MissingOrEmptyWordLogsAndIsTwo) {
  const Messages line{"kelpwifiupdater:838 Invalid bandwidth: , select 20_40."};
  for (const int radio : {1, 2}) {
    Expect("", radio, 2, line);
    Expect("bandwidth=\n", radio, 2, line);
    Expect("guest_bandwidth=20MHZ\n", radio, 2, line);
  }
}

TEST_F(Bandwidth, MissingFileLogsAndIsTwo) {
  lab::InRoot inside(device_);
  EXPECT_EQ(ToBandwidth("/etc/missing", RadioFrequency::Band2_4GHz), 2);
  EXPECT_EQ(LoggedErrors(inside), (Messages{"kelpwifiupdater:838 Invalid bandwidth: , select 20_40."}));
}

TEST_F(Bandwidth, Forced40MHzOnThe24GHzRadioIsOneWhateverTheWord) {
  for (const auto* word : {"20MHZ", "20_40MHZ", "80_80MHZ", "nonsense", ""}) {
    Expect(std::string("bandwidth=") + word + "\nforce_24g_40mhz=yes\n", 1, 1, {});
  }
}

TEST_F(Bandwidth, Forced40MHzWithoutAWordIsOneWithoutALine) {
  Expect("force_24g_40mhz=yes\n", 1, 1, {});
}

TEST_F(Bandwidth, Forced40MHzHasNoEffectOnOtherRadios) {
  for (const int radio : {0, 2, 3, 4, 7, -1}) Expect("bandwidth=20MHZ\nforce_24g_40mhz=yes\n", radio, 0, {});
  Expect("force_24g_40mhz=yes\n", 2, 2, {"kelpwifiupdater:838 Invalid bandwidth: , select 20_40."});
}

TEST_F(Bandwidth, Forced40MHzIsExactlyYes) {
  for (const auto* flag : {"Yes", "YES", "yes ", " yes", "1", "true", "no", ""}) {
    Expect(std::string("bandwidth=20MHZ\nforce_24g_40mhz=") + flag + "\n", 1, 0, {});
  }
}

TEST_F(Bandwidth, WordOneIsNotReachedByAnyWord) {
  Expect("bandwidth=40MHZ\n", 1, 2, {"kelpwifiupdater:838 Invalid bandwidth: 40MHZ, select 20_40."});
}

TEST(SecretKeyName, IsTheServersForTheEnterpriseModesAlone) {
  for (int security = -1; security <= 13; ++security) {
    const bool is_enterprise = security == 8 || security == 9 || security == 10 || security == 11;
    EXPECT_EQ(SecretKeyName(security), is_enterprise ? "auth_server_shared_secret" : "password") << security;
  }
  EXPECT_EQ(SecretKeyName(INT_MIN), "password");
  EXPECT_EQ(SecretKeyName(INT_MAX), "password");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
