#include "lab/images/private_root.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <utility>

#include "lab/images/file_copy.h"
#include "lab/images/image.h"

namespace lab {
namespace {

std::filesystem::path MakeTemporaryFolder() {
  const std::filesystem::path parent = TemporaryFiles();
  std::string path = std::filesystem::absolute(parent / "devicelab.XXXXXX").native();
  if (::mkdtemp(path.data()) == nullptr) ThrowErrno("make a temporary folder in", parent.native());
  return path;
}

/// An entry by the open folder that it is in and its name there, so that a link that is the entry is not
/// followed.
struct Place {
  Descriptor folder;
  std::string name;
};

/// A device path taken apart: "/etc/" and "info.conf".
std::pair<std::string, std::string> Split(const std::string& device_path) {
  const std::size_t end = device_path.find_last_not_of('/');
  if (device_path.empty() || device_path.front() != '/' || end == std::string::npos) {
    throw std::invalid_argument("not the absolute path of an entry: \"" + device_path + "\"");
  }
  const std::size_t slash = device_path.rfind('/', end);
  return {device_path.substr(0, slash + 1), device_path.substr(slash + 1, end - slash)};
}

Place FindPlace(int root, const std::string& device_path) {
  auto [folder, name] = Split(device_path);
  Place place{OpenBelow(root, folder, O_PATH | O_DIRECTORY), std::move(name)};
  if (!place.folder.IsOpen()) ThrowErrno("find", device_path);
  return place;
}

/// Gives nothing where no entry stands.
std::optional<struct stat> StatusAt(const Place& place, const std::string& device_path) {
  struct stat status {};
  if (::fstatat(place.folder.Get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) return status;
  if (errno != ENOENT) ThrowErrno("examine", device_path);
  return std::nullopt;
}

void SetModeAt(const Place& place, mode_t mode, const std::string& device_path) {
  Checked(::fchmodat(place.folder.Get(), place.name.c_str(), mode, 0), "set the mode of", device_path);
}

void MakeDirectoryAt(const Place& place, mode_t mode, const std::string& device_path) {
  Checked(::mkdirat(place.folder.Get(), place.name.c_str(), S_IRWXU), "make", device_path);
  SetModeAt(place, mode, device_path);
}

/// Makes the folders that are missing on the way to `device_path`, and calls `made` with the path of each.
template <typename Made>
void MakeParents(int root, const std::string& device_path, Made made) {
  std::string parent = Split(device_path).first;
  if (OpenBelow(root, parent, O_PATH | O_DIRECTORY).IsOpen()) return;
  if (errno != ENOENT) ThrowErrno("find", parent);

  parent.pop_back();
  MakeParents(root, parent, made);
  MakeDirectoryAt(FindPlace(root, parent), 0755, parent);
  made(parent);
}

Place PlaceWithParents(int root, const std::string& device_path) {
  MakeParents(root, device_path, [](const std::string&) {});
  return FindPlace(root, device_path);
}

}  // namespace

std::filesystem::path TemporaryFiles() {
  const char* const configured = std::getenv("TMPDIR");
  return configured != nullptr && *configured != '\0' ? configured : "/tmp";
}

PrivateRoot::PrivateRoot(Bare /*unused*/)
    : path_(MakeTemporaryFolder()),
      directory_(Checked(::open(path_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC), "open", path_.native())) {}

PrivateRoot::PrivateRoot() : PrivateRoot(Bare{}) {
  ProvideUsualDirectories();
}

PrivateRoot::PrivateRoot(const Tree& device) : PrivateRoot(Bare{}) {
  // A snapshot lacks the directories that the lab itself made.
  for (const auto& [path, entry] : device) {
    if (!device.contains(path.substr(0, path.rfind('/')))) ProvideParents(path);
  }
  WriteTree(device, directory_.Get());
  ProvideUsualDirectories();
}

PrivateRoot::PrivateRoot(const std::filesystem::path& image) : PrivateRoot(ReadImage(image)) {}

PrivateRoot::PrivateRoot(Descriptor folder) : directory_(std::move(folder)) {}

PrivateRoot::~PrivateRoot() {
  if (!directory_.IsOpen() || path_.empty()) return;
  try {
    ::chmod(path_.c_str(), S_IRWXU);
    RemoveEntries(directory_.Get(), path_.native());
    ::rmdir(path_.c_str());
  } catch (const std::exception&) {
    // A destructor has nobody to tell. What is left lies in the folder for temporary files.
  }
}

void PrivateRoot::Write(const std::string& device_path, std::string_view bytes, mode_t mode) {
  MakeParents(directory_.Get(), device_path, [](const std::string&) {});
  const Descriptor file =
      OpenBelow(directory_.Get(), device_path, O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK, 0600);
  if (!file.IsOpen()) ThrowErrno("write", device_path);
  WriteAll(file.Get(), bytes, device_path);
  Checked(::fchmod(file.Get(), mode), "set the mode of", device_path);
}

void PrivateRoot::MakeDirectory(const std::string& device_path, mode_t mode) {
  const Place place = PlaceWithParents(directory_.Get(), device_path);
  const auto status = StatusAt(place, device_path);
  if (status && S_ISDIR(status->st_mode)) {
    SetModeAt(place, mode, device_path);
  } else {
    MakeDirectoryAt(place, mode, device_path);
  }
}

void PrivateRoot::Link(const std::string& device_path, const std::string& target) {
  const Place place = PlaceWithParents(directory_.Get(), device_path);
  Checked(::symlinkat(target.c_str(), place.folder.Get(), place.name.c_str()), "make", device_path);
}

void PrivateRoot::MakeFifo(const std::string& device_path, mode_t mode) {
  const Place place = PlaceWithParents(directory_.Get(), device_path);
  Checked(::mkfifoat(place.folder.Get(), place.name.c_str(), S_IRUSR | S_IWUSR), "make", device_path);
  SetModeAt(place, mode, device_path);
}

void PrivateRoot::SetMode(const std::string& device_path, mode_t mode) {
  const Place place = FindPlace(directory_.Get(), device_path);
  const auto status = StatusAt(place, device_path);
  if (status && S_ISLNK(status->st_mode)) {
    // The kernel would follow it by the host's paths.
    throw std::invalid_argument("a link has no mode of its own: " + device_path);
  }
  SetModeAt(place, mode, device_path);
}

void PrivateRoot::Remove(const std::string& device_path) {
  const Place place = FindPlace(directory_.Get(), device_path);
  const auto status = StatusAt(place, device_path);
  const bool is_directory = status && S_ISDIR(status->st_mode);
  if (is_directory) {
    SetModeAt(place, S_IRWXU, device_path);
    RemoveEntries(OpenAt(place.folder.Get(), place.name, O_RDONLY | O_DIRECTORY, device_path).Get(),
                  device_path);
  }
  Checked(::unlinkat(place.folder.Get(), place.name.c_str(), is_directory ? AT_REMOVEDIR : 0), "remove",
          device_path);
}

Descriptor PrivateRoot::Open(const std::string& device_path, int flags) const {
  Descriptor entry = OpenBelow(directory_.Get(), device_path, flags);
  if (!entry.IsOpen()) ThrowErrno("open", device_path);
  return entry;
}

std::string PrivateRoot::Read(const std::string& device_path) const {
  const Descriptor file = Open(device_path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  struct stat status {};
  Checked(::fstat(file.Get(), &status), "examine", device_path);
  if (!S_ISREG(status.st_mode)) throw std::invalid_argument("not a regular file: " + device_path);
  return ReadAll(file.Get(), device_path);
}

bool PrivateRoot::Exists(const std::string& device_path) const {
  if (OpenBelow(directory_.Get(), device_path, O_PATH | O_NOFOLLOW).IsOpen()) return true;
  if (errno != ENOENT && errno != ENOTDIR) ThrowErrno("find", device_path);
  return false;
}

Tree PrivateRoot::Snapshot() const {
  Tree tree = ReadTree(directory_.Get());
  for (const auto& [path, entry] : provided_) {
    const auto now = tree.find(path);
    if (now != tree.end() && now->second == entry) tree.erase(now);
  }
  return tree;
}

void PrivateRoot::ProvideDirectory(const std::string& device_path, mode_t mode) {
  if (Exists(device_path)) return;
  ProvideParents(device_path);
  MakeDirectory(device_path, mode);
  MarkProvided(device_path);
}

void PrivateRoot::ProvideFile(const std::string& device_path) {
  if (Exists(device_path)) return;
  ProvideParents(device_path);
  Write(device_path, "", 0755);
  MarkProvided(device_path);
}

void PrivateRoot::ProvideLink(const std::string& device_path, const std::string& target) {
  if (Exists(device_path)) return;
  ProvideParents(device_path);
  Link(device_path, target);
  MarkProvided(device_path);
}

void PrivateRoot::MarkProvided(const std::string& device_path) {
  const Place place = FindPlace(directory_.Get(), device_path);
  provided_.insert_or_assign(device_path, ReadEntry(place.folder.Get(), place.name, device_path));
}

void PrivateRoot::ProvideParents(const std::string& device_path) {
  MakeParents(directory_.Get(), device_path, [this](const std::string& parent) { MarkProvided(parent); });
}

void PrivateRoot::ProvideUsualDirectories() {
  ProvideDirectory("/dev");
  ProvideDirectory("/etc");
  ProvideDirectory("/tmp", 01777);
  ProvideDirectory("/var/lock");
}

}  // namespace lab
