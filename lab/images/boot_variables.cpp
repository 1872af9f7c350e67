#include "lab/images/boot_variables.h"

#include <string>
#include <vector>

#include "lab/images/tree_builder.h"
#include "lab/images/tree_lookup.h"

namespace lab {
namespace {

constexpr const char* kConfig = "/etc/fw_env.config";

std::string FileOrNothing(const Tree& device, const std::string& path) {
  const Entry* const file = FindFile(device, path);
  return file != nullptr ? file->content : "";
}

/// Puts a file where `path` leads to.
void PutFile(Tree& device, const std::string& path, std::string content) {
  const auto resolved = ResolvePath(device, path);
  if (!resolved) throw UnusableImage("too many links: " + path);
  for (std::size_t slash = resolved->find('/', 1); slash != std::string::npos;
       slash = resolved->find('/', slash + 1)) {
    const auto parent =
        device.try_emplace(resolved->substr(0, slash), Entry{Entry::Kind::Directory, 0755, ""}).first;
    if (parent->second.kind != Entry::Kind::Directory)
      throw UnusableImage("not a directory: " + parent->first);
  }
  Entry& file = device.try_emplace(*resolved, Entry{Entry::Kind::File, 0644, ""}).first->second;
  if (file.kind != Entry::Kind::File) throw UnusableImage("not a file: " + *resolved);
  file.content = std::move(content);
}

void Write(Tree& device, const BootCopy& copy, const std::string& environment) {
  std::string file = FileOrNothing(device, copy.path);
  // cppcheck-suppress invalidFunctionArg  ; that is a char
  if (file.size() < copy.offset + copy.size) file.resize(copy.offset + copy.size, '\xFF');
  file.replace(copy.offset, copy.size, environment);
  PutFile(device, copy.path, std::move(file));
}

void Set(Tree& device, const BootVariables& variables) {
  const std::vector<BootCopy> copies = BootCopiesIn(FileOrNothing(device, kConfig));
  if (copies.empty()) {
    PutFile(device, kDefaultBootDevice, BootEnvironment(variables, kDefaultBootSize));
    PutFile(device, kConfig, BootEnvironmentConfigLine(kDefaultBootDevice, 0, kDefaultBootSize));
    return;
  }
  const bool is_redundant = copies.size() == 2;
  BootContent newest;
  bool is_found = false;
  for (const BootCopy& copy : copies) {
    const auto content = ReadBootCopy(FileOrNothing(device, copy.path), copy, is_redundant);
    if (content && (!is_found || IsNewerBootFlag(content->flag, newest.flag))) newest = *content;
    is_found = is_found || content.has_value();
  }
  for (const auto& [name, value] : variables) newest.variables[name] = value;
  for (const BootCopy& copy : copies) {
    Write(device, copy,
          is_redundant ? RedundantBootEnvironment(newest.variables, copy.size, 1, 0xFF, newest.order)
                       : BootEnvironment(newest.variables, copy.size, 0xFF, newest.order));
  }
}

}  // namespace

void SetBootVariables(Tree& device, const BootVariables& variables) {
  try {
    if (!variables.empty()) Set(device, variables);
  } catch (const std::exception& error) {
    throw UnusableImage(std::string("cannot be given its boot variables: ") + error.what());
  }
}

}  // namespace lab
