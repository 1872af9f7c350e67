#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <vector>

#include "lab/households/rehearsal.h"

namespace lab {

/// One setting before and after.
struct Setting {
  /// Its member in the document, with those on the way: "guestPasswordRotation.date".
  std::string member;
  /// The schema's words for the member.
  std::string title;
  /// The legacy file's path and key; empty where the setting has none.
  std::string file;
  std::string key;
  /// The legacy word as it stood.
  std::optional<std::string> was;
  Json::Value now;
  /// The schema's words for the value.
  std::string meaning;
  /// Whether something else than the legacy word says counts now: the word is unknown, damaged, or missing
  /// where the log complains.
  bool fell_back = false;
  /// Whether smart connect lets another word decide than the radio's own.
  bool decided_elsewhere = false;
};

/// The settings of one network on one radio.
std::vector<Setting> SettingsOf(const Rehearsal& rehearsal, const NetworkPart& network,
                                const RadioPart& radio);
/// The settings of a radio.
std::vector<Setting> SettingsOf(const Rehearsal& rehearsal, const RadioPart& radio);
/// Whether the primary network's smart connect makes the all-bands file decide.
bool IsSmartConnectOn(const Rehearsal& rehearsal);
/// The files of which the program reads whether WPS is on: those of the radios up to the first that says so.
std::vector<std::string> WPSFiles(const Rehearsal& rehearsal);
/// What holds for a network as a whole: smart connect, the MAC filter.
std::vector<Setting> SettingsOf(const Rehearsal& rehearsal, const NetworkPart& network);
std::vector<Setting> WPSSettings(const Rehearsal& rehearsal);
/// The device as a whole: model, mesh, country, topology, broadcast detection.
std::vector<Setting> DeviceSettings(const Rehearsal& rehearsal);

}  // namespace lab
