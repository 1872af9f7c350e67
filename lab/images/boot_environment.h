#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lab/images/private_root.h"

namespace lab {

using BootVariables = std::map<std::string, std::string>;

/// Where a device gets its environment that has none yet, and how large that is.
inline constexpr const char* kDefaultBootDevice = "/dev/mtdblock1";
inline constexpr std::size_t kDefaultBootSize = 0x4000;

/// A U-Boot environment of `size` bytes: the CRC-32 of all that follows it, in the byte order of the device,
/// the variables, padding. Throws std::invalid_argument when they do not fit, or a name or value cannot be
/// stored.
std::string BootEnvironment(const BootVariables& variables, std::size_t size, unsigned char padding = 0xFF,
                            std::endian order = std::endian::native);

/// One of the two copies of a redundant environment: as above, with a flag between the sum and the variables.
/// Of two good copies the newer one counts (IsNewerBootFlag).
std::string RedundantBootEnvironment(const BootVariables& variables, std::size_t size, std::uint8_t flag,
                                     unsigned char padding = 0xFF, std::endian order = std::endian::native);

/// Where one copy of an environment lies.
struct BootCopy {
  /// On the device.
  std::string path;
  std::size_t offset = 0;
  std::size_t size = 0;

  bool operator==(const BootCopy&) const = default;
};

/// The copies that the text of an /etc/fw_env.config names: one, or the two of a redundant environment. Lines
/// that name none, or one beyond a MiB, are left out.
std::vector<BootCopy> BootCopiesIn(const std::string& config);

/// What a copy holds.
struct BootContent {
  BootVariables variables;
  /// Of one copy of a redundant environment.
  std::uint8_t flag = 0;
  /// Of its sum.
  std::endian order = std::endian::native;
};

/// Reads a copy out of the bytes of its file. None where they end before it does, or its sum is wrong in
/// either byte order.
std::optional<BootContent> ReadBootCopy(std::string_view file, const BootCopy& copy, bool is_redundant);

/// Whether of two good copies that with `flag` is newer than the other one: flags count up, and 0 comes
/// behind 255.
bool IsNewerBootFlag(std::uint8_t flag, std::uint8_t other);

/// The line of /etc/fw_env.config for one copy. A redundant environment has two lines.
std::string BootEnvironmentConfigLine(std::string_view device_path, std::size_t offset, std::size_t size);

/// Gives the device a boot environment: an image in the file `device_path` and the /etc/fw_env.config that
/// names it.
void InstallBootEnvironment(PrivateRoot& root, const BootVariables& variables,
                            const std::string& device_path = kDefaultBootDevice,
                            std::size_t size = kDefaultBootSize);

}  // namespace lab
