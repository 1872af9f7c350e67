#include "lab/images/boot_environment.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iomanip>
#include <sstream>
#include <stdexcept>

namespace lab {
namespace {

constexpr std::size_t kSumSize = 4;

/// More than any device has; a size out of a damaged file must not cost the host its memory.
constexpr std::size_t kLargest = std::size_t{1} << 20;

/// The CRC-32 of `data` as it stands before it.
std::string Sum(std::string_view data, std::endian order) {
  const auto number = ::crc32_z(0, reinterpret_cast<const unsigned char*>(data.data()), data.size());
  std::string bytes;
  for (unsigned shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(number >> shift & 0xFF));
  if (order == std::endian::big) std::reverse(bytes.begin(), bytes.end());
  return bytes;
}

void CheckStorable(const std::string& name, const std::string& value) {
  const bool good_name = !name.empty() && name.find_first_of(std::string_view("=\0", 2)) == std::string::npos;
  const bool good_value = value.find('\0') == std::string::npos;
  if (!good_name || !good_value) {
    throw std::invalid_argument("a boot environment cannot store \"" + name + "=" + value + "\"");
  }
}

/// The variables, each with its terminator, one more terminator, and padding up to `size`.
std::string Data(const BootVariables& variables, std::size_t size, unsigned char padding) {
  std::string data;
  for (const auto& [name, value] : variables) {
    CheckStorable(name, value);
    data.append(name).append("=").append(value).push_back('\0');
  }
  data.push_back('\0');
  if (variables.empty()) data.push_back('\0');
  if (data.size() > size) {
    throw std::invalid_argument("the boot variables need " + std::to_string(data.size() - size) +
                                " bytes more than the boot environment has");
  }
  data.resize(size, static_cast<char>(padding));
  return data;
}

BootVariables VariablesIn(std::string_view data) {
  BootVariables variables;
  while (!data.empty() && data.front() != '\0') {
    const std::string_view entry = data.substr(0, data.find('\0'));
    if (const std::size_t equals = entry.find('='); equals != std::string_view::npos) {
      variables[std::string(entry.substr(0, equals))] = entry.substr(equals + 1);
    }
    data.remove_prefix(std::min(data.size(), entry.size() + 1));
  }
  return variables;
}

std::size_t SizeBehind(std::size_t header, std::size_t size) {
  if (size < header)
    throw std::invalid_argument("a boot environment has more than " + std::to_string(header) + " bytes");
  return size - header;
}

}  // namespace

std::string BootEnvironment(const BootVariables& variables, std::size_t size, unsigned char padding,
                            std::endian order) {
  const std::string data = Data(variables, SizeBehind(kSumSize, size), padding);
  return Sum(data, order) + data;
}

std::string RedundantBootEnvironment(const BootVariables& variables, std::size_t size, std::uint8_t flag,
                                     unsigned char padding, std::endian order) {
  const std::string data = Data(variables, SizeBehind(kSumSize + 1, size), padding);
  return Sum(data, order) + static_cast<char>(flag) + data;
}

std::vector<BootCopy> BootCopiesIn(const std::string& config) {
  std::vector<BootCopy> copies;
  std::istringstream lines(config);
  for (std::string line; std::getline(lines, line) && copies.size() < 2;) {
    if (line.starts_with('#')) continue;
    std::istringstream fields(line);
    BootCopy copy;
    if (!(fields >> copy.path >> std::setbase(0) >> copy.offset >> copy.size)) continue;
    if (copy.path.front() == '/' && copy.size <= kLargest && copy.offset <= kLargest) copies.push_back(copy);
  }
  return copies;
}

std::optional<BootContent> ReadBootCopy(std::string_view file, const BootCopy& copy, bool is_redundant) {
  const std::size_t header = is_redundant ? kSumSize + 1 : kSumSize;
  if (file.size() < copy.offset + copy.size || copy.size < header) return std::nullopt;
  const std::string_view bytes = file.substr(copy.offset, copy.size);
  BootContent content;
  content.flag = is_redundant ? static_cast<std::uint8_t>(bytes[kSumSize]) : std::uint8_t{0};
  for (const std::endian order : {std::endian::little, std::endian::big}) {
    if (bytes.substr(0, kSumSize) != Sum(bytes.substr(header), order)) continue;
    content.order = order;
    content.variables = VariablesIn(bytes.substr(header));
    return content;
  }
  return std::nullopt;
}

bool IsNewerBootFlag(std::uint8_t flag, std::uint8_t other) {
  constexpr std::uint8_t kLast = 255;
  if (flag == 0 && other == kLast) return true;
  if (flag == kLast && other == 0) return false;
  return flag > other;
}

std::string BootEnvironmentConfigLine(std::string_view device_path, std::size_t offset, std::size_t size) {
  std::array<char, 64> numbers{};
  std::snprintf(numbers.data(), numbers.size(), " 0x%zx 0x%zx\n", offset, size);
  return std::string(device_path) + numbers.data();
}

void InstallBootEnvironment(PrivateRoot& root, const BootVariables& variables, const std::string& device_path,
                            std::size_t size) {
  root.Write(device_path, BootEnvironment(variables, size));
  root.Write("/etc/fw_env.config", BootEnvironmentConfigLine(device_path, 0, size));
}

}  // namespace lab
