#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <vector>

#include "lab/household/observation.h"
#include "lab/household/run_view.h"

namespace lab {

/// One setting before and after.
struct Setting {
  /// Its member in the document, with those on the way: "guestPasswordRotation.date".
  std::string member;
  /// What the schema says of the member.
  const Json::Value* property = nullptr;
  /// The legacy file's path and key; empty if the setting has none.
  std::string file{};
  std::string key{};
  /// The legacy value as the program reads it.
  std::optional<std::string> was{};
  Json::Value now{};
  /// What there is to find in it.
  Observations observations{};
  /// Whether smart connect lets another file decide than the radio's own.
  bool decided_elsewhere = false;

  /// The schema's words for the member, and for its value.
  std::string Title() const;
  std::string Meaning() const;
  /// Whether the household lost it: one of its findings tells so.
  bool IsLost() const;
};

/// All settings of a household.
struct HouseholdSettings {
  /// A network on one radio, or a radio.
  struct Radio {
    const RadioView* view = nullptr;
    /// Whether the network was on there, in whichever word.
    bool was_on = true;
    std::vector<Setting> settings{};
  };
  struct Network {
    const NetworkView* view = nullptr;
    std::vector<Setting> settings{};
    std::vector<Radio> radios{};
  };

  /// The device as a whole: model, mesh, country, topology, broadcast detection.
  std::vector<Setting> device{};
  std::vector<Network> networks{};
  std::vector<Radio> radios{};
  std::vector<Setting> wps{};
  /// Why the secret key opens none of the secrets that were lost; empty if that is not why.
  std::string secret_key_problem{};
};

/// By the table of settings: what each one was, what it is, and what there is to find in it. `view` must
/// outlive the result.
HouseholdSettings ReadSettings(const RunView& view);

/// The setting of that member; null if there is none.
const Setting* FindSetting(const std::vector<Setting>& settings, std::string_view member);

/// Whether the primary network's smart connect makes the all-bands file decide.
bool IsSmartConnectOn(const RunView& view);
/// The files of which the program reads whether WPS is on: those of the radios up to the first that says so.
std::vector<std::string> WPSFiles(const RunView& view);
/// Whether the network was on with these settings, in whichever word. One whose switch is not stored was on
/// if it has a name.
bool WasEnabled(const RunView& view, const NetworkView& network, const RadioView& radio);

}  // namespace lab
