// The legacy words and numbers. Input: a byte that gives the radio, then the text, taken once for a word, a
// number and a name, and once for a legacy file.
#include "legacy/vocabularies.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "base/enum_names.h"
#include "fuzz/support/captured_log.h"
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/memory_file.h"
#include "fuzz/support/plain_text.h"
#include "legacy/enumeration_text.h"
#include "legacy/legacy_value.h"
#include "legacy/network_value.h"
#include "platform/exceptions.h"

namespace {

using namespace KELP::Wifi::Updater;
using KELP::Wifi::Util::RadioFrequency;

using Words = std::map<std::string, std::int32_t>;

const Words kSecurityModes{
    {"disabled", 0},
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
    {"ENTERPRISE_WPA_MIXED", 11},
};
const Words kPMFModes{{"disabled", 0}, {"capable", 1}, {"required", 2}};
const Words kWirelessModes{{"n", 0}, {"bgn", 1}, {"ac", 4}, {"an+ac", 5}};
const Words kLevels{{"low", 0}, {"medium", 1}, {"high", 2}};
const Words kDateTypes{{"0", 1}, {"1", 0}};
const Words kBandwidths{
    {"20MHZ", 0}, {"20_40MHZ", 2}, {"20_40_80MHZ", 3}, {"20_40_80_160MHZ", 4}, {"80_80MHZ", 5}};

/// That `value` is what the words or the fall-back say, and that the log heard of a fall-back and of nothing
/// else.
void CheckWord(std::int32_t value, const Words& words, const std::string& word, std::int32_t fallback,
               const std::string& before, const std::string& behind) {
  const auto log = fuzz::TakeLogLines();
  const auto known = words.find(word);
  if (known != words.end()) {
    FUZZ_CHECK(value == known->second && log.empty());
  } else {
    FUZZ_CHECK(value == fallback);
    FUZZ_CHECK(fuzz::IsOneError(log, "kelpwifiupdater:" + before + fuzz::UpToNul(word) + behind));
  }
}

void CheckWords(const std::string& word, RadioFrequency radio) {
  const std::int32_t mode = radio == RadioFrequency::Band2_4GHz ? 1 : 4;
  CheckWord(ToSecurityMode(word), kSecurityModes, word, 4, "760 Invalid security mode: ", ", select wpa2.");
  CheckWord(ToPMFMode(word), kPMFModes, word, 0, "776 Invalid pmf mode: ", ", select disabled.");
  CheckWord(ToWirelessMode(word, radio), kWirelessModes, word, mode, "795 Invalid wireless mode: ", ".");
  CheckWord(ToTxPower(word), kLevels, word, 2, "811 Invalid tx power: ", ", select high.");
  CheckWord(ToRotationStrength(word), kLevels, word, 1, "869 Invalid value: ", ", select medium.");
  CheckWord(ToRotationDateType(word), kDateTypes, word, 1, "855 Invalid mode: ", ", select regular.");
}

void CheckBandwidth(const std::string& text, RadioFrequency radio) {
  static fuzz::MemoryFile file;
  file.Write(text);
  const std::int32_t value = ToBandwidth(file.Path(), radio);
  std::map<std::string, std::string> entries = fuzz::PlainEntries(text);
  if (radio == RadioFrequency::Band2_4GHz && entries["force_24g_40mhz"] == "yes") {
    FUZZ_CHECK(value == 1 && fuzz::TakeLogLines().empty());
  } else {
    CheckWord(value, kBandwidths, entries["bandwidth"], 2, "838 Invalid bandwidth: ", ", select 20_40.");
  }
}

void CheckNumber(const std::string& text) {
  const std::optional<std::int32_t> number = fuzz::PlainNumber(text);
  for (const std::int32_t other : {0, -1, 256})
    FUZZ_CHECK(ParseLegacyInt(text, other) == number.value_or(other));

  const std::int32_t security = number.value_or(0);
  const bool is_enterprise = security >= 8 && security <= 11;
  FUZZ_CHECK(SecretKeyName(security) == (is_enterprise ? "auth_server_shared_secret" : "password"));
}

template <typename Convert>
void CheckName(const std::string& text, Convert convert) {
  using Enumeration = decltype(convert(text));
  std::optional<Enumeration> value;
  try {
    value = convert(text);
  } catch (const KELP::Wifi::RuntimeError& error) {
    FUZZ_CHECK(std::string(error.what()).starts_with("Failed to convert string to enum class ["));
  }
  if (value) FUZZ_CHECK(KELP::Wifi::EnumName(*value) == text);
  // No country or model is spelt in other letters or with anything around it.
  if (value)
    FUZZ_CHECK(text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ") ==
               std::string::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const auto radio = static_cast<RadioFrequency>(input.TakeByte() % 6);
  const std::string text = input.TakeRest();

  CheckWords(text, radio);
  CheckBandwidth(text, radio);
  CheckNumber(text);
  CheckName(text, ToCountryCode);
  CheckName(text, ToSupportedModel);
  FUZZ_CHECK(GuestKey(text, true) == (text == "pmf_mode" ? text : "guest_" + text));
  FUZZ_CHECK(GuestKey(text, false) == text);
  FUZZ_CHECK(fuzz::TakeLogLines().empty());
  return 0;
}
