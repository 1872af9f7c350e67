#pragma once

#include <string>
#include <string_view>

namespace fuzz {

/// One regular file without a place on disk, rewritten in place for every input: who remembers its contents
/// must notice each change.
class MemoryFile {
 public:
  MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile();

  /// Replaces the contents.
  void Write(std::string_view bytes);

  /// Under which this process can open it.
  const std::string& Path() const { return path_; }

 private:
  int descriptor_;
  std::string path_;
};

}  // namespace fuzz
