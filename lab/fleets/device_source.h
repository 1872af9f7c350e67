#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "lab/images/boot_environment.h"

namespace lab::fleets {

/// One device to rehearse: its image, and what is laid over it because no backup holds it.
struct DeviceSource {
  /// A folder or an archive; its name in the records too.
  std::string image;
  /// The build number that the device had before, as the program is given it.
  std::string from;
  /// Texts of files by their absolute paths on the device.
  std::map<std::string, std::string> files;
  BootVariables boot;

  bool operator==(const DeviceSource&) const = default;
};

/// Reads a line of a list: {"image": PATH, "from": BUILD, "files": {DEVICE_PATH: TEXT}, "boot": {NAME:
/// VALUE}}, all but "image" optional. A relative PATH starts at `folder`; `from` stands in for a missing
/// BUILD, which is a text or a number. Throws std::invalid_argument with what is wrong with the line, without
/// its number.
DeviceSource ParseListLine(std::string_view line, const std::filesystem::path& folder,
                           const std::string& from);

/// The line that ParseListLine reads back.
std::string ListLine(const DeviceSource& source);

/// A source as a text between processes, and back. Its parts may be any bytes.
std::string ToMessage(const DeviceSource& source);
DeviceSource FromMessage(const std::string& message);

}  // namespace lab::fleets
