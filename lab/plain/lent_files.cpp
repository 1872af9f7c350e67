#include "lab/plain/lent_files.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <system_error>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"

namespace lab {
namespace {

namespace fs = std::filesystem;

/// Where what a device has in place of a copy is put meanwhile, beside the copies.
std::string AsideOf(std::size_t number) {
  return std::to_string(number) + ".aside";
}

std::string NameOf(std::string_view path) {
  return std::string(path.substr(path.rfind('/') + 1));
}

Descriptor OpenFolderOf(const PrivateRoot& root, const std::string& device_path) {
  return root.Open(device_path.substr(0, device_path.rfind('/') + 1), O_PATH | O_DIRECTORY);
}

/// Nothing has to be there.
void Rename(const Descriptor& from, const std::string& name, const Descriptor& to,
            const std::string& new_name, const std::string& path) {
  if (::renameat(from.Get(), name.c_str(), to.Get(), new_name.c_str()) != 0 && errno != ENOENT) {
    ThrowErrno("rename", path);
  }
}

/// What may have been put in place of a copy, too.
void RemoveEntry(const Descriptor& folder, const std::string& name, const std::string& path) {
  if (::unlinkat(folder.Get(), name.c_str(), 0) == 0 || errno != EISDIR) return;
  RemoveEntries(OpenAt(folder.Get(), name, O_RDONLY | O_DIRECTORY, path).Get(), path);
  ::unlinkat(folder.Get(), name.c_str(), AT_REMOVEDIR);
}

void CopyFile(const LentFile& file, const Descriptor& copy) {
  const std::string& path = file.host_path.native();
  const Descriptor source(Checked(::open(path.c_str(), O_RDONLY | O_CLOEXEC), "open", path));
  constexpr std::size_t kPiece = std::size_t{1} << 30;
  while (Checked(::sendfile(copy.Get(), source.Get(), nullptr, kPiece), "copy", path) > 0) {
  }
  Checked(::fchmod(copy.Get(), 0755), "set the mode of", path);
}

}  // namespace

bool LetsProgramsRun(const fs::path& folder) {
  struct statvfs status {};
  return ::statvfs(folder.c_str(), &status) == 0 && (status.f_flag & ST_NOEXEC) == 0;
}

LentFiles::LentFiles(const std::vector<LentFile>& files) : store_(PrivateRoot::Bare{}) {
  if (!LetsProgramsRun(store_.Path())) {
    throw std::system_error(
        EACCES, std::generic_category(),
        store_.Path().parent_path().native() +
            " lets no program run (it is mounted noexec): name a folder that does with TMPDIR");
  }
  for (const LentFile& file : files) {
    const bool is_new = std::ranges::none_of(
        copies_, [&](const Copy& copy) { return copy.file.device_path == file.device_path; });
    if (is_new) copies_.push_back({file});
  }
}

bool LentFiles::IsAsMade(const std::string& name, const Copy& copy) const {
  struct stat status {};
  return ::fstatat(store_.Directory(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISREG(status.st_mode) && status.st_mtim.tv_sec == copy.changed.tv_sec &&
         status.st_mtim.tv_nsec == copy.changed.tv_nsec;
}

void LentFiles::Make(const std::string& name, Copy& copy) {
  const Descriptor folder = store_.Open("/", O_PATH | O_DIRECTORY);
  RemoveEntry(folder, name, name);
  const Descriptor file(Checked(
      ::openat(folder.Get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0700),
      "copy", copy.file.host_path.native()));
  try {
    CopyFile(copy.file, file);
  } catch (const std::system_error& error) {
    if (error.code() != std::errc::no_space_on_device) throw;
    std::uintmax_t size = 0;
    for (const Copy& each : copies_) size += fs::file_size(each.file.host_path);
    throw std::system_error(error.code(), "no room in " + store_.Path().parent_path().native() +
                                              " for the program and its libraries (" +
                                              std::to_string((size >> 20U) + 1) +
                                              " MiB): make room, or name another folder with TMPDIR");
  }
  struct stat status {};
  Checked(::fstat(file.Get(), &status), "examine", name);
  copy.changed = status.st_mtim;
}

Lent::Lent(LentFiles& files, PrivateRoot& root) : files_(files), root_(root) {
  try {
    for (std::size_t number = 0; number < files.copies_.size(); ++number) Put(number);
  } catch (...) {
    TakeBack();
    throw;
  }
}

Lent::~Lent() {
  TakeBack();
}

void Lent::Put(std::size_t number) {
  LentFiles::Copy& copy = files_.copies_[number];
  const std::string stored = std::to_string(number);
  if (!files_.IsAsMade(stored, copy)) files_.Make(stored, copy);
  const std::string& path = copy.file.device_path;
  MakeFoldersOf(path);
  const Descriptor folder = OpenFolderOf(root_, path);
  const Descriptor store = files_.store_.Open("/", O_PATH | O_DIRECTORY);
  const std::string name = NameOf(path);
  Rename(folder, name, store, AsideOf(number), path);
  put_.push_back(number);
  Rename(store, stored, folder, name, path);
}

void Lent::MakeFoldersOf(const std::string& device_path) {
  for (std::size_t end = device_path.find('/', 1); end != std::string::npos;
       end = device_path.find('/', end + 1)) {
    const std::string folder = device_path.substr(0, end);
    if (root_.Exists(folder)) continue;
    root_.MakeDirectory(folder);
    made_folders_.push_back(folder);
  }
}

void Lent::TakeBack() noexcept {
  for (const std::size_t number : put_) {
    const std::string& path = files_.copies_[number].file.device_path;
    try {
      const Descriptor folder = OpenFolderOf(root_, path);
      const Descriptor store = files_.store_.Open("/", O_PATH | O_DIRECTORY);
      const std::string name = NameOf(path);
      Rename(folder, name, store, std::to_string(number), path);
      Rename(store, AsideOf(number), folder, name, path);
    } catch (const std::exception&) {
      // The program removed the folder, and what was in it.
    }
  }
  for (auto path = made_folders_.rbegin(); path != made_folders_.rend(); ++path) {
    try {
      ::unlinkat(OpenFolderOf(root_, *path).Get(), NameOf(*path).c_str(), AT_REMOVEDIR);
    } catch (const std::exception&) {
      // As above.
    }
  }
  put_.clear();
  made_folders_.clear();
}

}  // namespace lab
