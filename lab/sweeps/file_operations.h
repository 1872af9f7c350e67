#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "lab/sweeps/strace_record.h"

namespace lab::sweeps {

/// One thing that a run did to the file system.
struct FileOperation {
  enum class Kind { Open, Write, Rename, Remove, MakeDirectory, FlushFile, FlushDirectory };

  Kind kind{};
  std::string path;        // absolute
  std::string target;      // of Rename
  std::string bytes;       // of Write
  bool truncates = false;  // of Open
  std::size_t opened = 0;  // of Open, Write and FlushFile: which opening of a file for writing it belongs to
  unsigned mode = 0;       // of Open and MakeDirectory

  bool IsFlush() const { return kind == Kind::FlushFile || kind == Kind::FlushDirectory; }
};

/// The file operations among the calls of a run that succeeded, in order. Throws std::runtime_error at a call
/// that changes files in a way that the model of storage does not know, and at every call of which it is not
/// known that it changes none.
std::vector<FileOperation> ExtractFileOperations(const std::vector<SystemCall>& calls);

}  // namespace lab::sweeps
