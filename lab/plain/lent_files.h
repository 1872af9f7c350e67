#pragma once

#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "lab/images/private_root.h"

namespace lab {

/// A file of the host and the path at which a device gets a copy of it.
struct LentFile {
  std::filesystem::path host_path;
  std::string device_path;
};

/// What `program` needs to run at `device_path`: itself, and the host's loader and libraries at their own
/// paths; of a script its interpreter with those. Throws std::system_error.
std::vector<LentFile> FilesOfProgram(const std::filesystem::path& program, const std::string& device_path);

/// Whether the file system that a folder is in lets programs run.
bool LetsProgramsRun(const std::filesystem::path& folder);

/// Copies of files of the host, in a temporary folder of their own, to be lent to one private root after
/// another.
class LentFiles {
 public:
  /// Throws std::system_error where programs may not run there, with what to do.
  explicit LentFiles(const std::vector<LentFile>& files);

 private:
  friend class Lent;

  struct Copy {
    LentFile file;
    /// As it was made; a copy that is there no more, or not as it was, is made again.
    timespec changed{};
  };

  bool IsAsMade(const std::string& name, const Copy& copy) const;
  void Make(const std::string& name, Copy& copy);

  std::vector<Copy> copies_;
  PrivateRoot store_;
};

/// Puts the copies into a private root, which is to be in the same file system, for as long as the object
/// lives. What the device has at their paths is put aside for that time, and folders made for them go again.
/// Throws std::system_error; for want of room with what to do.
class Lent {
 public:
  Lent(LentFiles& files, PrivateRoot& root);
  Lent(const Lent&) = delete;
  Lent& operator=(const Lent&) = delete;
  ~Lent();

 private:
  void Put(std::size_t number);
  void MakeFoldersOf(const std::string& device_path);
  void TakeBack() noexcept;

  LentFiles& files_;
  PrivateRoot& root_;
  std::vector<std::size_t> put_;
  std::vector<std::string> made_folders_;
};

}  // namespace lab
