#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "lab/images/descriptor.h"
#include "lab/images/tree.h"

namespace lab {

/// The folder for temporary files: $TMPDIR, or /tmp where that is unset.
std::filesystem::path TemporaryFiles();

/// A temporary folder laid out like a device, to be the root folder of the program under test. It lies below
/// TemporaryFiles(), and goes away with the object. A signal that ends the process leaves
/// it behind, unless KeepTemporaryFilesToThisProcess() was called before.
///
/// Paths are the device's own, absolute. Links on the way are followed as on the device: an absolute target
/// leads to the private root, and nothing leads out of it. All operations also work while the process is
/// inside the root (see InRoot), and whatever the process's umask is. They throw std::system_error with the
/// path and the cause.
class PrivateRoot {
 public:
  /// A device with the folders /dev, /etc, /tmp and /var/lock, and nothing in them.
  PrivateRoot();
  /// The device, with the folders above where it lacks them.
  explicit PrivateRoot(const Tree& device);
  /// The same for a device image, which is only read.
  explicit PrivateRoot(const std::filesystem::path& image);
  /// What the open folder holds as a device. The folder is the caller's, who also removes it; such a root has
  /// no path.
  explicit PrivateRoot(Descriptor folder);
  /// A device with nothing in it yet.
  struct Bare {};
  explicit PrivateRoot(Bare);
  PrivateRoot(PrivateRoot&& other) noexcept = default;
  PrivateRoot& operator=(PrivateRoot&&) = delete;
  PrivateRoot(const PrivateRoot&) = delete;
  PrivateRoot& operator=(const PrivateRoot&) = delete;
  ~PrivateRoot();

  /// Where the root lies on the host.
  const std::filesystem::path& Path() const { return path_; }
  /// The root as an open folder.
  int Directory() const { return directory_.Get(); }

  /// Makes a file, or replaces the bytes and the mode of the one that stands there. Makes missing parent
  /// folders.
  void Write(const std::string& device_path, std::string_view bytes, mode_t mode = 0644);
  /// Makes a folder and its missing parents; an existing one only gets the mode.
  void MakeDirectory(const std::string& device_path, mode_t mode = 0755);
  /// Makes a symbolic link, dangling or not, and its missing parents.
  void Link(const std::string& device_path, const std::string& target);
  /// Makes a FIFO and its missing parents.
  void MakeFifo(const std::string& device_path, mode_t mode = 0644);
  void SetMode(const std::string& device_path, mode_t mode);
  /// Removes an entry, a folder with all that is in it. A link is removed itself. Nothing there is an error.
  void Remove(const std::string& device_path);
  /// Opens an existing entry with the flags of open(2), following a link.
  Descriptor Open(const std::string& device_path, int flags) const;
  /// The bytes of a regular file.
  std::string Read(const std::string& device_path) const;
  /// Whether any entry stands there, a dangling link too.
  bool Exists(const std::string& device_path) const;

  /// The whole device, without what the lab itself put there and nothing has touched since.
  Tree Snapshot() const;

  /// Make folders, files and links that a run needs but no device image has: mount points, for example. They
  /// are made where nothing stands, and are left out of snapshots for as long as they stay as they were made.
  void ProvideDirectory(const std::string& device_path, mode_t mode = 0755);
  void ProvideFile(const std::string& device_path);
  void ProvideLink(const std::string& device_path, const std::string& target);
  /// Counts what stands at the path now as provided.
  void MarkProvided(const std::string& device_path);
  /// Provides the folders that PrivateRoot() makes.
  void ProvideUsualDirectories();
  /// What was provided, as it was made.
  const Tree& Provided() const { return provided_; }

 private:
  void ProvideParents(const std::string& device_path);

  std::filesystem::path path_;
  Descriptor directory_;
  Tree provided_;
};

}  // namespace lab
