#include "lab/images/tree_builder.h"

#include <algorithm>
#include <utility>

namespace lab {
namespace {

constexpr std::string_view kRoot = "/";

/// As every link on Linux has it.
constexpr mode_t kLinkMode = 0777;

// What the kernel takes for a path, a name and the target of a link.
constexpr std::size_t kMaxPath = 4095;
constexpr std::size_t kMaxName = 255;

/// Deeper than the directories of any device. Reading a directory holds each of those above it open.
constexpr std::size_t kMaxDepth = 100;

/// "/etc" of "/etc/info.conf", "/" of "/etc".
std::string_view ParentOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 ? kRoot : path.substr(0, slash);
}

/// Calls `visit` with each part of a path, without the empty ones and ".".
template <typename Visit>
void ForEachPart(std::string_view path, Visit visit) {
  while (!path.empty()) {
    const std::string_view part = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(path.size(), part.size() + 1));
    if (!part.empty() && part != ".") visit(part);
  }
}

void RequireLength(std::size_t size) {
  if (size > kMaxPath) throw UnusableImage("has a path of " + std::to_string(size) + " bytes");
}

/// Requires a path that can be created. The message names one that cannot only by its length.
void RequirePossible(std::string_view path) {
  RequireLength(path.size());
  std::size_t depth = 0;
  ForEachPart(path, [&](std::string_view part) {
    if (part.size() > kMaxName) {
      throw UnusableImage("has a name of " + std::to_string(part.size()) + " bytes");
    }
    ++depth;
  });
  if (depth > kMaxDepth) {
    throw UnusableImage("is more than " + std::to_string(kMaxDepth) + " levels deep");
  }
}

/// Whether a link at `path` points above the root folder on its way, by the names alone.
bool LeadsOut(std::string_view path, std::string_view target) {
  int depth = 0;
  bool leads_out = false;
  const auto step = [&](std::string_view part) {
    depth += part == ".." ? -1 : 1;
    leads_out = leads_out || depth < 0;
  };
  if (!target.starts_with('/')) ForEachPart(ParentOf(path), step);
  ForEachPart(target, step);
  return leads_out;
}

}  // namespace

std::string DevicePathOf(std::string_view name) {
  RequireLength(name.size());
  if (name.starts_with('/') && name.find_first_not_of('/') != std::string_view::npos) {
    throw UnusableImage("has an absolute path: " + std::string(name));
  }
  if (name.find('\0') != std::string_view::npos) throw UnusableImage("has a path with a NUL");
  std::string path;
  ForEachPart(name, [&](std::string_view part) {
    if (part == "..") throw UnusableImage("has a path with \"..\": " + std::string(name));
    path.append("/").append(part);
  });
  return path.empty() ? std::string(kRoot) : path;
}

void TreeBuilder::AddDirectory(const std::string& path, mode_t mode) {
  Put(path, {Entry::Kind::Directory, mode & 07777U, ""});
}

void TreeBuilder::AddFile(const std::string& path, mode_t mode, std::string bytes) {
  if (path == kRoot) throw UnusableImage("has a file in place of the root folder");
  RequireRoom(bytes.size());
  bytes_ += bytes.size();
  Put(path, {Entry::Kind::File, mode & 07777U, std::move(bytes)});
}

void TreeBuilder::AddLink(const std::string& path, const std::string& target) {
  if (path == kRoot) throw UnusableImage("has a link in place of the root folder");
  if (target.empty()) throw UnusableImage("has a link to nothing: " + path);
  if (target.size() > kMaxPath) throw UnusableImage("has a link that is too long: " + path);
  if (LeadsOut(path, target)) {
    throw UnusableImage("has a link that leads out of it: " + path + " -> " + target);
  }
  Put(path, {Entry::Kind::Link, kLinkMode, target});
}

void TreeBuilder::AddHardLink(const std::string& path, const std::string& original) {
  const auto entry = tree_.find(original);
  if (entry == tree_.end() || entry->second.kind != Entry::Kind::File) {
    throw UnusableImage("has a hard link to what is no file in it: " + path + " -> " + original);
  }
  RequireRoom(entry->second.content.size());
  AddFile(path, entry->second.mode, entry->second.content);
}

void TreeBuilder::RequireRoom(std::uintmax_t size) const {
  if (size <= limits_.bytes - bytes_) return;
  throw UnusableImage("holds more than " + std::to_string(limits_.bytes) + " bytes unpacked");
}

void TreeBuilder::Put(const std::string& path, Entry entry) {
  RequirePossible(path);
  if (!named_.insert(path).second) throw UnusableImage("has two entries of one name: " + path);
  RequireEntries(named_.size());
  if (path == kRoot) return;
  RequireDirectory(std::string(ParentOf(path)), path);
  const auto existing = tree_.find(path);
  if (existing == tree_.end()) {
    RequireEntries(tree_.size() + 1);
    tree_.emplace(path, std::move(entry));
    return;
  }
  const bool was_directory = existing->second.kind == Entry::Kind::Directory;
  if (was_directory != (entry.kind == Entry::Kind::Directory)) {
    throw UnusableImage("has a folder and something else of one name: " + path);
  }
  existing->second = std::move(entry);
}

/// Requires the directory `path` on the way to `entry_path`, and adds it if it is missing.
void TreeBuilder::RequireDirectory(const std::string& path, const std::string& entry_path) {
  if (path == kRoot) return;
  const auto existing = tree_.find(path);
  if (existing == tree_.end()) {
    RequireDirectory(std::string(ParentOf(path)), entry_path);
    RequireEntries(tree_.size() + 1);
    tree_.emplace(path, Entry{Entry::Kind::Directory, 0755, ""});
  } else if (existing->second.kind != Entry::Kind::Directory) {
    throw UnusableImage("has an entry below what is no folder: " + entry_path);
  }
}

void TreeBuilder::RequireEntries(std::size_t count) const {
  if (count > limits_.entries) {
    throw UnusableImage("holds more than " + std::to_string(limits_.entries) + " entries");
  }
}

}  // namespace lab
