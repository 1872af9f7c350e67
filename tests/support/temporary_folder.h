#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "lab/images/private_root.h"

namespace lab_test {

/// A folder of the host that goes away with the object.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::filesystem::path& Path() const { return path_; }
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }
  /// Makes a file and the folders on the way to it.
  void Write(std::string_view name, std::string_view bytes) const;

 private:
  std::filesystem::path path_;
};

std::string ReadFile(const std::filesystem::path& path);

/// A private root in `folder`, with a path longer than the address of a socket may be.
lab::PrivateRoot RootWithLongPath(const TemporaryFolder& folder);

}  // namespace lab_test
