#include "lab/images/boot_overlay.h"

#include <string>
#include <vector>

#include "lab/images/device_layout.h"

namespace lab {
namespace {

constexpr const char* kConfig = "/etc/fw_env.config";

std::string FileOrNothing(const PrivateRoot& root, const std::string& path) {
  try {
    return root.Read(path);
  } catch (const std::exception&) {
    return "";
  }
}

void Write(PrivateRoot& root, const BootCopy& copy, const std::string& environment) {
  std::string file = FileOrNothing(root, copy.path);
  // cppcheck-suppress invalidFunctionArg  ; that is a char
  if (file.size() < copy.offset + copy.size) file.resize(copy.offset + copy.size, '\xFF');
  file.replace(copy.offset, copy.size, environment);
  root.Write(copy.path, file);
}

void Lay(PrivateRoot& root, const BootVariables& variables) {
  const std::vector<BootCopy> copies = BootCopiesIn(FileOrNothing(root, kConfig));
  if (copies.empty()) {
    InstallBootEnvironment(root, variables);
    return;
  }
  const bool is_redundant = copies.size() == 2;
  BootContent newest;
  bool is_found = false;
  for (const BootCopy& copy : copies) {
    const auto content = ReadBootCopy(FileOrNothing(root, copy.path), copy, is_redundant);
    if (content && (!is_found || IsNewerBootFlag(content->flag, newest.flag))) newest = *content;
    is_found = is_found || content.has_value();
  }
  for (const auto& [name, value] : variables) newest.variables[name] = value;
  for (const BootCopy& copy : copies) {
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
