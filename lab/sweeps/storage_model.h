#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "lab/images/tree.h"
#include "lab/sweeps/file_operations.h"

namespace lab::sweeps {

/// What a file system may show after the power was cut, by the model that crash-consistency work has settled
/// on: it promises nothing but what was flushed.
///
/// The bytes of a file that were not flushed since are missing, there in part, zero, or there. A name that
/// was made, moved or removed in a folder that was not flushed since has been so or not, each for itself; a
/// rename is one step, and the flush of either of its folders makes it last.
class StorageModel {
 public:
  explicit StorageModel(const Tree& durable);

  void Apply(const FileOperation& operation);

  /// One digit for each thing that is open, with the number of values that it can take. All zero: nothing of
  /// it has reached the disk.
  std::vector<unsigned> Radixes() const;

  /// The state that the digits choose: equal keys, equal states.
  std::string KeyOf(const std::vector<unsigned>& digits) const;
  Tree StateOf(const std::vector<unsigned>& digits) const;

 private:
  struct Inode {
    Entry entry;  // with the bytes that are durable
    std::string written;
    bool is_open = false;  // written and not flushed
  };
  struct NameChange {
    std::vector<std::pair<std::string, int>> edits;  // name to inode, or to kNone
    std::set<std::string> folders;
  };
  using Names = std::map<std::string, int>;

  static constexpr int kNone = -1;
  static constexpr unsigned kContentVariants = 5;

  int AddInode(Entry entry);
  void Change(std::vector<std::pair<std::string, int>> edits);
  void OpenFile(const FileOperation& operation);
  void FlushDirectory(const std::string& folder);
  std::vector<int> OpenInodes() const;
  /// The names that the digits choose, without those that no folder leads to.
  Names NamesOf(const std::vector<unsigned>& digits) const;
  static std::string ContentOf(const Inode& inode, unsigned variant);

  std::vector<Inode> inodes_;
  Names durable_;
  Names current_;
  std::vector<NameChange> pending_;
  std::map<std::size_t, int> opened_;  // opening to inode
};

}  // namespace lab::sweeps
