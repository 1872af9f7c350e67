#pragma once

#include <span>
#include <string_view>

#include "legacy/vocabulary.h"

namespace lab {

/// How a stored value becomes a document's value, and so what the household meant by it.
enum class Form {
  Flag,      // "yes" is on
  Refusal,   // "no" restricts
  Number,    // the whole of it
  Channel,   // a number, or "auto" for 0
  Word,      // one of a vocabulary
  Country,   // one of the schema's names
  Topology,  // "router" or "bridge"
  Name,      // base64
  Secret,    // encrypted
  Text,      // as it is
  Date,      // year/month/day
  Hour,
  Minute,
  Days,   // at least one digit from 0 to 6
  Mails,  // with commas between them
  Rule,   // a rule of its own judges it, see the ..._rules.cpp
  Fixed,  // always as it is
};

/// When a setting matters to the household.
enum class Relevance {
  Always,
  NeedsSecret,     // security other than open and OWE
  Enterprise,      // security with an authentication server
  Scheduled,       // schedule_enabled
  Rotating,        // the guest password is changed
  RotationStored,  // other keys of the guest password's schedule are stored
  Mailing,         // and the new one is mailed
  WPSByPin,        // WPS is on, and allowed by PIN
  DetectionOn,     // broadcast detection
  NotARepeater,    // a repeater's topology is not read
};

/// A member of a document, and what becomes of the household if its stored value is lost.
struct SettingRow {
  /// Empty for a further key of the member before it.
  std::string_view member;
  /// The legacy key; null if there is none.
  const char* key;
  Form form;
  /// The finding if another value is in the document than was meant.
  std::string_view lost{};
  /// The finding if the key is missing or empty; none if that is nothing to report.
  std::string_view not_stored{};
  Relevance relevance = Relevance::Always;
  /// Of Form::Word. It also has the number of the line that is logged for a default.
  const KELP::Wifi::Updater::Vocabulary* vocabulary = nullptr;
};

/// Of a network on one radio, and of the guest password's schedule in it.
std::span<const SettingRow> NetworkRows();
std::span<const SettingRow> RotationRows();
std::span<const SettingRow> RadioRows();
/// Of a network as a whole.
std::span<const SettingRow> WholeNetworkRows();
std::span<const SettingRow> WPSRows();
/// Of global.json and its two groups, then of misc.json and its group, by their paths.
std::span<const SettingRow> GlobalRows();
std::span<const SettingRow> MiscRows();

}  // namespace lab
