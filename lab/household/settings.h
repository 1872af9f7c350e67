#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <vector>

#include "lab/household/run_view.h"

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
std::vector<Setting> SettingsOf(const RunView& view, const NetworkView& network, const RadioView& radio);
/// The settings of a radio.
std::vector<Setting> SettingsOf(const RunView& view, const RadioView& radio);
/// Whether the primary network's smart connect makes the all-bands file decide.
bool IsSmartConnectOn(const RunView& view);
/// The files of which the program reads whether WPS is on: those of the radios up to the first that says so.
std::vector<std::string> WPSFiles(const RunView& view);
/// What holds for a network as a whole: smart connect, the MAC filter.
std::vector<Setting> SettingsOf(const RunView& view, const NetworkView& network);
std::vector<Setting> WPSSettings(const RunView& view);
/// The device as a whole: model, mesh, country, topology, broadcast detection.
std::vector<Setting> DeviceSettings(const RunView& view);

}  // namespace lab
