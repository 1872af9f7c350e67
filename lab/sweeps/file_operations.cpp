#include "lab/sweeps/file_operations.h"

#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>

#include "lab/sweeps/descriptor_table.h"

namespace lab::sweeps {
namespace {

using Kind = FileOperation::Kind;

constexpr int kOctal = 8;

unsigned ModeAt(const SystemCall& call, std::size_t place) {
  if (place >= call.arguments.size()) return 0;
  return static_cast<unsigned>(std::strtoul(call.arguments[place].c_str(), nullptr, kOctal));
}

class Extraction {
 public:
  void Take(const SystemCall& call) {
    static const std::set<std::string_view> unknown{
        "copy_file_range",
        "creat",
        "dup",
        "dup2",
        "dup3",
        "fallocate",
        "ftruncate",
        "link",
        "linkat",
        "mknod",
        "mknodat",
        "openat2",
        "pwrite64",
        "pwritev",
        "pwritev2",
        "rmdir",
        "sendfile",
        "splice",
        "symlink",
        "symlinkat",
        "sync",
        "sync_file_range",
        "syncfs",
        "truncate",
        "writev",
    };
    if (!call.error.empty()) return;
    if (unknown.contains(call.name))
      throw std::runtime_error("the model of storage does not know " + call.name);

    if (call.name == "open" || call.name == "openat") {
      TakeOpen(call);
    } else if (call.name == "write") {
      TakeWrite(call);
    } else if (call.name == "fsync" || call.name == "fdatasync") {
      TakeFlush(call);
    } else if (call.name == "rename") {
      AddRename(descriptors_.PathAt(call, 0, std::nullopt), descriptors_.PathAt(call, 1, std::nullopt));
    } else if (call.name == "renameat" || call.name == "renameat2") {
      AddRename(descriptors_.PathAt(call, 1, 0), descriptors_.PathAt(call, 3, 2));
    } else if (call.name == "unlink") {
      Add(Kind::Remove).path = descriptors_.PathAt(call, 0, std::nullopt);
    } else if (call.name == "unlinkat") {
      Add(Kind::Remove).path = descriptors_.PathAt(call, 1, 0);
    } else if (call.name == "mkdir" || call.name == "mkdirat") {
      const bool is_relative = call.name == "mkdirat";
      FileOperation& operation = Add(Kind::MakeDirectory);
      operation.path =
          is_relative ? descriptors_.PathAt(call, 1, 0) : descriptors_.PathAt(call, 0, std::nullopt);
      operation.mode = ModeAt(call, is_relative ? 2 : 1);
    }
    descriptors_.Follow(call);
  }

  std::vector<FileOperation> Finish() { return std::move(operations_); }

 private:
  FileOperation& Add(Kind kind) {
    operations_.push_back({});
    operations_.back().kind = kind;
    return operations_.back();
  }

  void AddRename(std::string from, std::string to) {
    FileOperation& operation = Add(Kind::Rename);
    operation.path = std::move(from);
    operation.target = std::move(to);
  }

  void TakeOpen(const SystemCall& call) {
    const std::optional<OpenedFile> file = descriptors_.OpenedBy(call);
    const bool writes = file->Has("O_WRONLY") || file->Has("O_RDWR");
    open_for_writing_.erase(call.result);
    if (!writes || file->path == "/dev/null") return;
    open_for_writing_[call.result] = ++openings_;
    FileOperation& operation = Add(Kind::Open);
    operation.path = file->path;
    operation.opened = openings_;
    operation.truncates = file->Has("O_TRUNC");
    operation.mode = ModeAt(call, call.name == "openat" ? 3 : 2);
  }

  void TakeWrite(const SystemCall& call) {
    const auto opened = FindOpening(call);
    if (opened == open_for_writing_.end()) return;  // to a standard stream
    FileOperation& operation = Add(Kind::Write);
    operation.opened = opened->second;
    operation.bytes = QuotedBytes(call.arguments.at(1)).substr(0, static_cast<std::size_t>(call.result));
  }

  void TakeFlush(const SystemCall& call) {
    const OpenedFile* const file = descriptors_.UsedBy(call);
    if (file == nullptr) throw std::runtime_error("a flush of a file that was not seen to be opened");
    const auto opened = FindOpening(call);
    if (opened == open_for_writing_.end()) {
      Add(Kind::FlushDirectory).path = file->path;
    } else {
      FileOperation& operation = Add(Kind::FlushFile);
      operation.path = file->path;
      operation.opened = opened->second;
    }
  }

  std::map<std::int64_t, std::size_t>::const_iterator FindOpening(const SystemCall& call) const {
    const OpenedFile* const file = descriptors_.UsedBy(call);
    if (file == nullptr) return open_for_writing_.end();
    return open_for_writing_.find(std::strtol(call.arguments.at(0).c_str(), nullptr, 10));
  }

  DescriptorTable descriptors_;
  std::map<std::int64_t, std::size_t> open_for_writing_;  // descriptor to opening
  std::size_t openings_ = 0;
  std::vector<FileOperation> operations_;
};

}  // namespace

std::vector<FileOperation> ExtractFileOperations(const std::vector<SystemCall>& calls) {
  Extraction extraction;
  for (const SystemCall& call : calls) extraction.Take(call);
  return extraction.Finish();
}

}  // namespace lab::sweeps
