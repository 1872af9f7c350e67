#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "lab/images/private_root.h"

namespace lab {

using BootVariables = std::map<std::string, std::string>;

/// A U-Boot environment of `size` bytes: the CRC-32 of all that follows it, in the byte order of the device,
/// the variables, padding. Throws std::invalid_argument when they do not fit, or a name or value cannot be
/// stored.
std::string BootEnvironment(const BootVariables& variables, std::size_t size, unsigned char padding = 0xFF,
                            std::endian order = std::endian::native);

/// One of the two copies of a redundant environment: as above, with a flag between the sum and the variables.
/// Of two good copies the one with the higher flag counts.
std::string RedundantBootEnvironment(const BootVariables& variables, std::size_t size, std::uint8_t flag,
                                     unsigned char padding = 0xFF, std::endian order = std::endian::native);

/// Whether `environment`, whose sum is followed by the flag of a redundant one where `header` is 5 and by
/// nothing else where it is 4, has the sum that belongs to it in that byte order.
bool HasBootEnvironmentSum(std::string_view environment, std::size_t header, std::endian order);

/// The line of /etc/fw_env.config for one copy. A redundant environment has two lines.
std::string BootEnvironmentConfigLine(std::string_view device_path, std::size_t offset, std::size_t size);

/// Gives the device a boot environment: an image in the file `device_path` and the /etc/fw_env.config that
/// names it.
void InstallBootEnvironment(PrivateRoot& root, const BootVariables& variables,
                            const std::string& device_path = "/dev/mtdblock1", std::size_t size = 0x4000);

}  // namespace lab
