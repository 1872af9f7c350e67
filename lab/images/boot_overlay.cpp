#include "lab/images/boot_overlay.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iomanip>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "lab/images/device_layout.h"

namespace lab {
namespace {

constexpr const char* kConfig = "/etc/fw_env.config";

/// More than any device has; a size out of a damaged file must not cost the host its memory.
constexpr std::size_t kLargest = std::size_t{1} << 20;

/// Where one copy of the environment lies.
struct Copy {
  std::string path;
  std::size_t offset = 0;
  std::size_t size = 0;
};

std::vector<Copy> Copies(const std::string& config) {
  std::vector<Copy> copies;
  std::istringstream lines(config);
  for (std::string line; std::getline(lines, line) && copies.size() < 2;) {
    if (line.starts_with('#')) continue;
    std::istringstream fields(line);
    Copy copy;
    if (!(fields >> copy.path >> std::setbase(0) >> copy.offset >> copy.size)) continue;
    if (copy.path.front() == '/' && copy.size <= kLargest && copy.offset <= kLargest) copies.push_back(copy);
  }
  return copies;
}

std::string FileOrNothing(const PrivateRoot& root, const std::string& path) {
  try {
    return root.Read(path);
  } catch (const std::exception&) {
    return "";
  }
}

/// What a good copy holds.
struct Content {
  BootVariables variables;
  std::uint8_t flag = 0;
  std::endian order = std::endian::native;
};

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

/// Takes a copy apart; none where its sum is wrong in either byte order.
std::optional<Content> Read(const std::string& file, const Copy& copy, bool is_redundant) {
  const std::size_t header = is_redundant ? 5 : 4;
  if (file.size() < copy.offset + copy.size || copy.size < header) return std::nullopt;
  const std::string bytes = file.substr(copy.offset, copy.size);
  Content content;
  content.flag = is_redundant ? static_cast<std::uint8_t>(bytes[4]) : std::uint8_t{0};
  for (const std::endian order : {std::endian::little, std::endian::big}) {
    if (!HasBootEnvironmentSum(bytes, header, order)) continue;
    content.order = order;
    content.variables = VariablesIn(std::string_view(bytes).substr(header));
    return content;
  }
  return std::nullopt;
}

void Write(PrivateRoot& root, const Copy& copy, const std::string& environment) {
  std::string file = FileOrNothing(root, copy.path);
  // cppcheck-suppress invalidFunctionArg  ; that is a char
  if (file.size() < copy.offset + copy.size) file.resize(copy.offset + copy.size, '\xFF');
  file.replace(copy.offset, copy.size, environment);
  root.Write(copy.path, file);
}

void Lay(PrivateRoot& root, const BootVariables& variables) {
  const std::vector<Copy> copies = Copies(FileOrNothing(root, kConfig));
  if (copies.empty()) {
    InstallBootEnvironment(root, variables);
    return;
  }
  const bool is_redundant = copies.size() == 2;
  Content newest;
  bool is_found = false;
  for (const Copy& copy : copies) {
    const auto content = Read(FileOrNothing(root, copy.path), copy, is_redundant);
    if (content && (!is_found || content->flag > newest.flag)) newest = *content;
    is_found = is_found || content.has_value();
  }
  for (const auto& [name, value] : variables) newest.variables[name] = value;
  for (const Copy& copy : copies) {
    Write(root, copy,
          is_redundant ? RedundantBootEnvironment(newest.variables, copy.size, 1, 0xFF, newest.order)
                       : BootEnvironment(newest.variables, copy.size, 0xFF, newest.order));
  }
}

}  // namespace

void LayBootVariables(PrivateRoot& root, const BootVariables& variables) {
  try {
    if (!variables.empty()) Lay(root, variables);
  } catch (const std::exception& error) {
    throw UnusableImage(std::string("cannot be given its boot variables: ") + error.what());
  }
}

}  // namespace lab
