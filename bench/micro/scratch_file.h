#pragma once

#include <string>
#include <string_view>

namespace bench {

/// A file for one benchmark, in memory where the host has a folder for that. Goes away with the object.
class ScratchFile {
 public:
  /// Returns once the file is old enough to be remembered by those who do so.
  explicit ScratchFile(std::string_view bytes);
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile();

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace bench
