#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "lab/fleets/device_source.h"

namespace lab::fleets {

/// A made-up device: the files of its backup by their device paths, and what a list has to add to it.
struct SyntheticDevice {
  std::map<std::string, std::string> files;
  /// Its "image" is the device's name.
  DeviceSource source;
};

/// Device number `number` of those of a seed: the same one on any machine, whichever others are made. Models,
/// roles and topologies of all kinds, mostly ordinary households; unless they are to be `plain`, some with
/// what real ones have: names in old encodings, files from another editor, damaged secrets, unknown words,
/// missing files, odd addresses, an upgrade that had broken off.
SyntheticDevice MakeSyntheticDevice(std::uint64_t seed, std::size_t number, bool plain);

}  // namespace lab::fleets
