#include "lab/experiments/boot_variables.h"

#include <cstdint>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "lab/images/boot_environment.h"
#include "lab/images/tree_lookup.h"

namespace lab {
namespace {

constexpr std::size_t kSumSize = 4;

/// One copy of an environment in a file.
struct Copy {
  std::string path;
  std::size_t offset = 0;
  std::size_t size = 0;
};

std::vector<Copy> ReadConfig(const Tree& device) {
  std::vector<Copy> copies;
  const Entry* const config = FindFile(device, "/etc/fw_env.config");
  if (config == nullptr) return copies;
  std::istringstream lines(config->content);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with('#')) continue;
    std::istringstream words(line);
    Copy copy;
    std::string offset;
    std::string size;
    if (!(words >> copy.path >> offset >> size)) continue;
    try {
      copy.offset = std::stoull(offset, nullptr, 0);
      copy.size = std::stoull(size, nullptr, 0);
    } catch (const std::logic_error&) {
      continue;
    }
    copies.push_back(copy);
  }
  return copies;
}

/// The bytes of a copy, where the file has them all.
std::optional<std::string_view> BytesOf(const Tree& device, const Copy& copy, std::size_t header) {
  const Entry* const file = FindFile(device, copy.path);
  if (file == nullptr || copy.size <= header || file->content.size() < copy.size ||
      copy.offset > file->content.size() - copy.size) {
    return std::nullopt;
  }
  return std::string_view(file->content).substr(copy.offset, copy.size);
}

BootVariables ParseVariables(std::string_view data) {
  BootVariables variables;
  while (!data.empty() && data.front() != '\0') {
    const std::size_t end = data.find('\0');
    if (end == std::string_view::npos) break;
    const std::string_view variable = data.substr(0, end);
    const std::size_t equals = variable.find('=');
    if (equals != 0 && equals != std::string_view::npos) {
      variables.emplace(variable.substr(0, equals), variable.substr(equals + 1));
    }
    data.remove_prefix(end + 1);
  }
  return variables;
}

}  // namespace

std::vector<Input> BootVariableInputs(const Tree& device) {
  const std::vector<Copy> copies = ReadConfig(device);
  if (copies.empty() || copies.size() > 2) return {};
  const bool is_redundant = copies.size() == 2;
  const std::size_t header = kSumSize + (is_redundant ? 1 : 0);

  const Copy* current = nullptr;
  std::string_view bytes;
  for (const Copy& copy : copies) {
    const auto found = BytesOf(device, copy, header);
    if (!found) return {};
    const auto flag = [](std::string_view text) { return static_cast<unsigned char>(text[kSumSize]); };
    if (current == nullptr || flag(*found) > flag(bytes)) {
      current = &copy;
      bytes = *found;
    }
  }

  const BootVariables variables = ParseVariables(bytes.substr(header));
  const auto varied = [&](const BootVariables& others) {
    const auto flag = static_cast<std::uint8_t>(bytes[kSumSize]);
    std::string content = FindFile(device, current->path)->content;
    content.replace(current->offset, current->size,
                    is_redundant ? RedundantBootEnvironment(others, current->size, flag)
                                 : BootEnvironment(others, current->size));
    return Variation{current->path, content};
  };
  std::vector<Input> inputs;
  for (const auto& [name, value] : variables) {
    Input input{current->path, name, {}};
    BootVariables others = variables;
    others.erase(name);
    input.variations.push_back(varied(others));
    others[name] = value == "0" ? "1" : "0";
    input.variations.push_back(varied(others));
    inputs.push_back(std::move(input));
  }
  return inputs;
}

}  // namespace lab
