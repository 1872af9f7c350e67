#include "lab/images/device_layout.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "lab/images/file_copy.h"

namespace lab {
namespace {

constexpr std::string_view kRoot = "/";

// What the kernel takes for a path, a name and the target of a link.
constexpr std::size_t kLongestPath = 4095;
constexpr std::size_t kLongestName = 255;

/// Deeper than the folders of any device. Whoever walks through them has each of them open.
constexpr std::size_t kDeepest = 100;

/// "/etc" of "/etc/info.conf", "/" of "/etc".
std::string_view ParentOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 ? kRoot : path.substr(0, slash);
}

std::string NameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
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
  if (size > kLongestPath) throw UnusableImage("has a path of " + std::to_string(size) + " bytes");
}

/// Requires a path that can be made. Those that cannot are named by their length alone.
void RequirePossible(std::string_view path) {
  RequireLength(path.size());
  std::size_t depth = 0;
  ForEachPart(path, [&](std::string_view part) {
    if (part.size() > kLongestName) {
      throw UnusableImage("has a name of " + std::to_string(part.size()) + " bytes");
    }
    ++depth;
  });
  if (depth > kDeepest) {
    throw UnusableImage("is more than " + std::to_string(kDeepest) + " levels deep");
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
  if (name.starts_with('/')) throw UnusableImage("has an absolute path: " + std::string(name));
  if (name.find('\0') != std::string_view::npos) throw UnusableImage("has a path with a NUL");
  std::string path;
  ForEachPart(name, [&](std::string_view part) {
    if (part == "..") throw UnusableImage("has a path with \"..\": " + std::string(name));
    path.append("/").append(part);
  });
  return path.empty() ? std::string(kRoot) : path;
}

void DeviceLayout::BeginOverlay() {
  ++layer_;
}

void DeviceLayout::AddDirectory(const std::string& path, mode_t mode) {
  Count(path);
  if (path == kRoot) return;
  EnterFolderOf(path);
  Replaces(path, Entry::Kind::Directory);
  MakeFolder(path, mode, true);
}

void DeviceLayout::AddFile(const std::string& path, mode_t mode, std::string_view bytes) {
  Count(path);
  if (path == kRoot) throw UnusableImage("has a file in place of the root folder");
  RequireRoom(bytes.size());
  bytes_ += bytes.size();
  EnterFolderOf(path);
  const std::string name = NameOf(path);
  if (Replaces(path, Entry::Kind::File)) {
    Checked(::unlinkat(folder_.Get(), name.c_str(), 0), "replace", path);
  }
  const Descriptor file(
      ::openat(folder_.Get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.IsOpen() && errno == EEXIST) throw OccupiedPlace(path);
  Checked(file.Get(), "write", path);
  WriteAll(file.Get(), bytes, path);
  Checked(::fchmod(file.Get(), mode & 07777U), "set the mode of", path);
}

void DeviceLayout::AddLink(const std::string& path, const std::string& target) {
  Count(path);
  if (path == kRoot) throw UnusableImage("has a link in place of the root folder");
  if (target.empty()) throw UnusableImage("has a link to nothing: " + path);
  if (target.size() > kLongestPath) throw UnusableImage("has a link that is too long: " + path);
  if (LeadsOut(path, target))
    throw UnusableImage("has a link that leads out of it: " + path + " -> " + target);
  EnterFolderOf(path);
  const std::string name = NameOf(path);
  if (Replaces(path, Entry::Kind::Link)) {
    Checked(::unlinkat(folder_.Get(), name.c_str(), 0), "replace", path);
  }
  if (::symlinkat(target.c_str(), folder_.Get(), name.c_str()) == 0) return;
  if (errno == EEXIST) throw OccupiedPlace(path);
  ThrowErrno("make", path);
}

void DeviceLayout::AddHardLink(const std::string& path, const std::string& original) {
  const auto laid = laid_.find(original);
  if (laid == laid_.end() || laid->second.kind != Entry::Kind::File) {
    throw UnusableImage("has a hard link to what is no file in it: " + path + " -> " + original);
  }
  EnterFolderOf(original);
  const Descriptor file = OpenAt(folder_.Get(), NameOf(original), O_RDONLY, original);
  struct stat status {};
  Checked(::fstat(file.Get(), &status), "examine", original);
  RequireRoom(static_cast<std::uintmax_t>(status.st_size));
  AddFile(path, status.st_mode & 07777U, ReadAll(file.Get(), original));
}

void DeviceLayout::RequireRoom(std::uintmax_t size) const {
  if (size <= Room()) return;
  throw UnusableImage("holds more than " + std::to_string(limits_.bytes) + " bytes unpacked");
}

void DeviceLayout::Count(const std::string& path) {
  RequirePossible(path);
  const auto laid = laid_.find(path);
  const bool is_counted = laid != laid_.end() && !laid->second.is_named;  // as a folder on the way
  if (!is_counted) CountOne();
  if (laid != laid_.end() && laid->second.is_named && laid->second.layer == layer_) {
    throw UnusableImage("has two entries of one name: " + path);
  }
}

void DeviceLayout::CountOne() {
  if (++entries_ > limits_.entries) {
    throw UnusableImage("holds more than " + std::to_string(limits_.entries) + " entries");
  }
}

/// Takes the entry into the account. Gives whether one that is no folder stands in its place, from an earlier
/// layer.
bool DeviceLayout::Replaces(const std::string& path, Entry::Kind kind) {
  const auto [laid, is_new] = laid_.try_emplace(path);
  const bool was_folder = laid->second.kind == Entry::Kind::Directory;
  if (!is_new && was_folder != (kind == Entry::Kind::Directory)) {
    throw UnusableImage("has a folder and something else of one name: " + path);
  }
  if (is_new && kind == Entry::Kind::Directory) {
    laid_.erase(laid);  // MakeFolder makes it
    return false;
  }
  laid->second = {kind, true, layer_};
  return !is_new && !was_folder;
}

/// Opens the folder that `path` stands in, and makes it where it is missing.
void DeviceLayout::EnterFolderOf(const std::string& path) {
  const std::string_view parent = ParentOf(path);
  if (folder_.IsOpen() && parent == folder_path_) return;
  Descriptor folder = OpenAt(root_.Directory(), ".", O_PATH | O_DIRECTORY, std::string(kRoot));
  std::string made;
  ForEachPart(parent, [&](std::string_view part) {
    made.append("/").append(part);
    const auto laid = laid_.find(made);
    if (laid != laid_.end() && laid->second.kind != Entry::Kind::Directory) {
      throw UnusableImage("has an entry below what is no folder: " + path);
    }
    folder_ = std::move(folder);
    folder_path_ = ParentOf(made);
    if (laid == laid_.end()) {
      CountOne();
      MakeFolder(made, 0755, false);
    }
    folder = Descriptor(
        ::openat(folder_.Get(), std::string(part).c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.IsOpen() && (errno == ENOTDIR || errno == ELOOP)) throw OccupiedPlace(made);
    Checked(folder.Get(), "open", made);
  });
  folder_ = std::move(folder);
  folder_path_ = parent;
}

/// Makes the folder in the one that is open, or gives the one that is there the mode where it is a named one.
void DeviceLayout::MakeFolder(const std::string& path, mode_t mode, bool is_named) {
  const std::string name = NameOf(path);
  const bool is_new = ::mkdirat(folder_.Get(), name.c_str(), 0700) == 0;
  if (!is_new && errno != EEXIST) ThrowErrno("make", path);
  if (!is_new && laid_.find(path) == laid_.end()) {
    struct stat status {};
    Checked(::fstatat(folder_.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW), "examine", path);
    if (!S_ISDIR(status.st_mode)) throw OccupiedPlace(path);
  }
  if (is_new || is_named) {
    Checked(::fchmodat(folder_.Get(), name.c_str(), mode & 07777U, 0), "set the mode of", path);
  }
  laid_[path] = {Entry::Kind::Directory, is_named, layer_};
}

}  // namespace lab
