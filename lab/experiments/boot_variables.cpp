#include "lab/experiments/boot_variables.h"

#include <bit>
#include <optional>
#include <string>
#include <utility>

#include "lab/images/boot_environment.h"
#include "lab/images/tree_lookup.h"

namespace lab {
namespace {

constexpr const char* kConfig = "/etc/fw_env.config";

/// The copy that the program reads: of two good ones the newer, of its own byte order alone.
struct Current {
  BootCopy copy;
  BootContent content;
};

std::optional<Current> FindCurrent(const Tree& device, const std::vector<BootCopy>& copies) {
  std::optional<Current> current;
  for (const BootCopy& copy : copies) {
    const Entry* const file = FindFile(device, copy.path);
    if (file == nullptr) continue;
    auto content = ReadBootCopy(file->content, copy, copies.size() == 2);
    if (!content || content->order != std::endian::native) continue;
    if (!current || IsNewerBootFlag(content->flag, current->content.flag)) {
      current = Current{copy, std::move(*content)};
    }
  }
  return current;
}

}  // namespace

std::vector<Input> BootVariableInputs(const Tree& device) {
  const Entry* const config = FindFile(device, kConfig);
  if (config == nullptr) return {};
  const std::vector<BootCopy> copies = BootCopiesIn(config->content);
  const auto current = FindCurrent(device, copies);
  if (!current) return {};
  const BootCopy& copy = current->copy;

  const auto varied = [&](const BootVariables& others) {
    std::string file = FindFile(device, copy.path)->content;
    file.replace(copy.offset, copy.size,
                 copies.size() == 2 ? RedundantBootEnvironment(others, copy.size, current->content.flag)
                                    : BootEnvironment(others, copy.size));
    return Variation{copy.path, file};
  };
  std::vector<Input> inputs;
  for (const auto& [name, value] : current->content.variables) {
    Input input{copy.path, name, {}};
    BootVariables others = current->content.variables;
    others.erase(name);
    input.variations.push_back(varied(others));
    others[name] = value == "0" ? "1" : "0";
    input.variations.push_back(varied(others));
    inputs.push_back(std::move(input));
  }
  return inputs;
}

}  // namespace lab
