#pragma once

#include <cstdint>
#include <string>

#include "legacy/vocabulary.h"
#include "platform/records/radio_frequency.h"

namespace KELP::Wifi::Updater {

/// The legacy words of each setting as the numbers that the settings records store. All are exact and
/// case-sensitive, and total: a word that is not listed gives the fall-back and one log line at error
/// priority.

// The vocabularies themselves. The wireless mode has one for 2.4 GHz and one for 5 GHz.
extern const Vocabulary kSecurityVocabulary;
extern const Vocabulary kPMFVocabulary;
extern const Vocabulary kMode24Vocabulary;
extern const Vocabulary kMode5Vocabulary;
extern const Vocabulary kTxPowerVocabulary;
extern const Vocabulary kRotationStrengthVocabulary;
extern const Vocabulary kRotationDateTypeVocabulary;
extern const Vocabulary kBandwidthVocabulary;

/// 0 disabled, 1 OWE, 2 WEP, 3 to 7 personal, 8 to 11 enterprise; fall-back 4 (personal WPA2).
std::int32_t ToSecurityMode(const std::string& word);

/// Protected management frames: 0 disabled, 1 capable, 2 required; fall-back 0.
std::int32_t ToPMFMode(const std::string& word);

/// 0 n, 1 bgn, 4 ac, 5 an+ac; fall-back 1 on the 2.4 GHz radio, else 4.
std::int32_t ToWirelessMode(const std::string& word, Util::RadioFrequency radio);

/// 0 low, 1 medium, 2 high; fall-back 2.
std::int32_t ToTxPower(const std::string& word);

/// Strength of a rotated guest password: 0 low, 1 medium, 2 high; fall-back 1.
std::int32_t ToRotationStrength(const std::string& word);

/// Kind of rotation schedule: "0" gives 1 (regular), "1" gives 0; fall-back 1.
std::int32_t ToRotationDateType(const std::string& word);

/// Channel bandwidth from the keys "bandwidth" and, on the 2.4 GHz radio, "force_24g_40mhz" of the legacy
/// file at `file`: 0 20 MHz, 1 40 MHz forced, 2 20/40, 3 20/40/80, 4 20/40/80/160, 5 80+80; fall-back 2.
std::int32_t ToBandwidth(const std::string& file, Util::RadioFrequency radio);

/// The legacy key that holds the secret of a network with this security value: the authentication server's
/// for the enterprise modes, "password" for every other value.
std::string SecretKeyName(std::int32_t security);

}  // namespace KELP::Wifi::Updater
