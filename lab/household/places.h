#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "lab/household/rules.h"
#include "lab/household/run_view.h"

namespace lab {

/// A network's settings on one radio, as the rules look at them.
struct Place {
  const NetworkView& network;
  const RadioView& radio;
  const RunView& view;

  /// What stood under the setting's key for this network.
  std::optional<std::string> Was(std::string_view key) const {
    return view.Was(radio.file, network.Key(key));
  }
  /// "wifi_ap_...: guest_security=word", for a finding; "... is missing" where there was none.
  std::string Told(std::string_view key) const;
  /// As Told, without the word: for secrets.
  std::string ToldWithoutWord(std::string_view key) const;
  /// Whether the network was on there, in whichever word.
  bool WasOn() const;
};

/// Stands before what is found of a network that was off.
inline constexpr const char* kOffNote = "the network is off: ";

/// Calls `visit` for each network on each radio (all bands included) whose access-point file was there with
/// settings in it. What that finds where the network was off is noted so.
void ForEachNetworkOnRadio(const RunView& view, FindingCollector& findings,
                           const std::function<void(const Place&)>& visit);

/// "mf.info: policy=word", or "mf.info: policy is missing".
std::string ToldOf(const RunView& view, const std::string& file, std::string_view key);

/// The name of the file at `path` without its folder.
std::string NameOf(const std::string& path);

}  // namespace lab
