#pragma once

#include <map>
#include <optional>
#include <string>

#include "lab/sweeps/strace_record.h"

namespace lab::sweeps {

/// What stands behind a descriptor.
struct OpenedFile {
  std::string path;   // absolute; empty for a socket
  std::string flags;  // as strace prints them
  bool is_socket = false;

  bool Has(std::string_view flag) const { return flags.find(flag) != std::string::npos; }
  bool IsCreated() const { return Has("O_CREAT"); }
  /// A file that cannot have been there before.
  bool IsNew() const { return Has("O_EXCL"); }
  bool IsDirectory() const { return Has("O_DIRECTORY"); }
};

/// Follows the calls of a run and knows which file each descriptor stands for. The run's folder is "/".
class DescriptorTable {
 public:
  /// What `call` opens (or would open); none when it opens nothing.
  std::optional<OpenedFile> OpenedBy(const SystemCall& call) const;

  /// What the descriptor stands for that is the first argument of `call`; null when that is none.
  const OpenedFile* UsedBy(const SystemCall& call) const;

  /// The absolute path that the argument at `place` of `call` means; `directory` is the place of the argument
  /// that holds the descriptor of the folder which a relative path starts from.
  std::string PathAt(const SystemCall& call, std::size_t place, std::optional<std::size_t> directory) const;

  /// Takes note of what `call` opened or closed.
  void Follow(const SystemCall& call);

 private:
  std::map<int, OpenedFile> files_;
};

}  // namespace lab::sweeps
