#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "legacy/update_context.h"
#include "platform/records/network_setting.h"

namespace KELP::Wifi::Updater {

/// The kinds of networks by their numbers: what the platform's header calls them is its own affair.
inline constexpr auto kPrimaryNetwork = static_cast<decltype(NetworkSetting::kind)>(0);
inline constexpr auto kGuestNetwork = static_cast<decltype(NetworkSetting::kind)>(1);

/// Fills `network`, whose number, name and kind are set, from the access-point files of `radios`: AllBands
/// gives its own block and its smart-connect flag, every other radio an element of its list, in order. The
/// guest network's blocks carry its password rotation. Gives the paths of the files that it used. Throws what
/// GetAccessPointFilePath and BuildGuestPasswordRotation throw.
std::set<std::string> AssembleNetworkSetting(const UpdateContext& context, NetworkSetting& network,
                                             const std::vector<Util::RadioFrequency>& radios,
                                             std::int32_t mac_filter_profile_id);

}  // namespace KELP::Wifi::Updater
