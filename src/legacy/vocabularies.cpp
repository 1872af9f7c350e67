#include "legacy/vocabularies.h"

#include <array>
#include <cstdint>
#include <string>

#include "legacy/legacy_value.h"
#include "legacy/radios.h"
#include "legacy/vocabulary.h"
#include "platform/records/radio_frequency.h"

namespace KELP::Wifi::Updater {
namespace {

using Util::RadioFrequency;

constexpr std::int32_t kFirstEnterpriseMode = 8;
constexpr std::int32_t kLastEnterpriseMode = 11;
constexpr std::int32_t kForced40MHz = 1;

constexpr std::array kSecurityModes{
    Word{"disabled", 0},
    Word{"OWE", 1},
    Word{"WEP", 2},
    Word{"PERSONAL_WPA", 3},
    Word{"PERSONAL_WPA2", 4},
    Word{"PERSONAL_WPA3", 5},
    Word{"PERSONAL_WPA_MIXED", 6},
    Word{"PERSONAL_WPA2_WPA3_MIXED", 7},
    Word{"ENTERPRISE_WPA", 8},
    Word{"ENTERPRISE_WPA2", 9},
    Word{"ENTERPRISE_WPA3", 10},
    Word{"ENTERPRISE_WPA_MIXED", 11},
};

constexpr std::array kPMFModes{Word{"disabled", 0}, Word{"capable", 1}, Word{"required", 2}};

constexpr std::array kWirelessModes{Word{"n", 0}, Word{"bgn", 1}, Word{"ac", 4}, Word{"an+ac", 5}};

constexpr std::array kLevels{Word{"low", 0}, Word{"medium", 1}, Word{"high", 2}};

// Crossed on purpose: 1 is the regular schedule.
constexpr std::array kRotationDateTypes{Word{"0", 1}, Word{"1", 0}};

constexpr std::array kBandwidths{
    Word{"20MHZ", 0},           Word{"20_40MHZ", 2}, Word{"20_40_80MHZ", 3},
    Word{"20_40_80_160MHZ", 4}, Word{"80_80MHZ", 5},
};

}  // namespace

constexpr Vocabulary kSecurityVocabulary{kSecurityModes, 4, "%s:%d Invalid security mode: %s, select wpa2.",
                                         760};
constexpr Vocabulary kPMFVocabulary{kPMFModes, 0, "%s:%d Invalid pmf mode: %s, select disabled.", 776};
constexpr Vocabulary kMode24Vocabulary{kWirelessModes, 1, "%s:%d Invalid wireless mode: %s.", 795};
constexpr Vocabulary kMode5Vocabulary{kWirelessModes, 4, "%s:%d Invalid wireless mode: %s.", 795};
constexpr Vocabulary kTxPowerVocabulary{kLevels, 2, "%s:%d Invalid tx power: %s, select high.", 811};
constexpr Vocabulary kRotationStrengthVocabulary{kLevels, 1, "%s:%d Invalid value: %s, select medium.", 869};
constexpr Vocabulary kRotationDateTypeVocabulary{kRotationDateTypes, 1,
                                                 "%s:%d Invalid mode: %s, select regular.", 855};
constexpr Vocabulary kBandwidthVocabulary{kBandwidths, 2, "%s:%d Invalid bandwidth: %s, select 20_40.", 838};

std::int32_t ToSecurityMode(const std::string& word) {
  return Translate(kSecurityVocabulary, word);
}

std::int32_t ToPMFMode(const std::string& word) {
  return Translate(kPMFVocabulary, word);
}

std::int32_t ToWirelessMode(const std::string& word, RadioFrequency radio) {
  return Translate(radio == kBand24 ? kMode24Vocabulary : kMode5Vocabulary, word);
}

std::int32_t ToTxPower(const std::string& word) {
  return Translate(kTxPowerVocabulary, word);
}

std::int32_t ToRotationStrength(const std::string& word) {
  return Translate(kRotationStrengthVocabulary, word);
}

std::int32_t ToRotationDateType(const std::string& word) {
  return Translate(kRotationDateTypeVocabulary, word);
}

std::int32_t ToBandwidth(const std::string& file, RadioFrequency radio) {
  const std::string word = ReadLegacyValue(file, "bandwidth", "");
  if (radio == kBand24 && ReadLegacyFlag(file, "force_24g_40mhz")) return kForced40MHz;
  return Translate(kBandwidthVocabulary, word);
}

std::string SecretKeyName(std::int32_t security) {
  const bool is_enterprise = security >= kFirstEnterpriseMode && security <= kLastEnterpriseMode;
  return is_enterprise ? "auth_server_shared_secret" : "password";
}

}  // namespace KELP::Wifi::Updater
