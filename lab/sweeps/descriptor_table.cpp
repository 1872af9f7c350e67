#include "lab/sweeps/descriptor_table.h"

#include <charconv>
#include <filesystem>

namespace lab::sweeps {
namespace {

std::optional<int> NumberOf(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::string WithoutSlash(std::string path) {
  if (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

bool TakesDescriptor(const std::string& name) {
  return name == "read" || name == "write" || name == "pread64" || name == "pwrite64" || name == "close" ||
         name == "fsync" || name == "fdatasync" || name == "fchmod" || name == "ftruncate" ||
         name == "lseek" || name == "fstat" || name == "flock" || name == "fcntl" || name == "ioctl" ||
         name == "setsockopt";
}

}  // namespace

std::string DescriptorTable::PathAt(const SystemCall& call, std::size_t place,
                                    std::optional<std::size_t> directory) const {
  const std::string path = QuotedBytes(call.arguments.at(place));
  if (path.starts_with('/')) return WithoutSlash(std::filesystem::path(path).lexically_normal());
  std::string folder = "/";
  if (directory && call.arguments.at(*directory) != "AT_FDCWD") {
    const auto file = files_.find(NumberOf(call.arguments.at(*directory)).value_or(-1));
    if (file != files_.end()) folder = file->second.path;
  }
  return WithoutSlash((std::filesystem::path(folder) / path).lexically_normal());
}

std::optional<OpenedFile> DescriptorTable::OpenedBy(const SystemCall& call) const {
  if (call.name == "socket") return OpenedFile{.path = {}, .flags = {}, .is_socket = true};
  if (call.name == "open") return OpenedFile{PathAt(call, 0, std::nullopt), call.arguments.at(1)};
  if (call.name == "openat") return OpenedFile{PathAt(call, 1, 0), call.arguments.at(2)};
  return std::nullopt;
}

const OpenedFile* DescriptorTable::UsedBy(const SystemCall& call) const {
  if (call.arguments.empty() || !TakesDescriptor(call.name)) return nullptr;
  const auto file = files_.find(NumberOf(call.arguments.front()).value_or(-1));
  return file == files_.end() ? nullptr : &file->second;
}

void DescriptorTable::Follow(const SystemCall& call) {
  if (!call.error.empty()) return;
  if (call.name == "close") {
    files_.erase(NumberOf(call.arguments.at(0)).value_or(-1));
  } else if (const std::optional<OpenedFile> opened = OpenedBy(call)) {
    files_[static_cast<int>(call.result)] = *opened;
  }
}

}  // namespace lab::sweeps
