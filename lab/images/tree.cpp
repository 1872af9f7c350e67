#include "lab/images/tree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iomanip>
#include <map>
#include <ostream>
#include <string_view>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"

namespace lab {
namespace {

void ReadBelow(int directory, const std::string& path, Tree& tree) {
  for (const std::string& name : Names(directory, path)) {
    std::string entry_path = path;
    entry_path.append("/").append(name);
    const Entry& entry = tree.emplace(entry_path, ReadEntry(directory, name, entry_path)).first->second;
    if (entry.kind == Entry::Kind::Directory) {
      ReadBelow(OpenAt(directory, name, O_RDONLY | O_DIRECTORY, entry_path).Get(), entry_path, tree);
    }
  }
}

/// Returns the result of a call that makes the entry `path`, unless it failed.
int RequireNew(int result, const char* action, const std::string& path) {
  if (result < 0 && errno == EEXIST) throw MountPointConflict(path);
  return Checked(result, action, path);
}

void WriteFile(int directory, const char* name, const Entry& entry, const std::string& path) {
  constexpr int kNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  const Descriptor file(RequireNew(::openat(directory, name, kNewFile, 0600), "write", path));
  WriteAll(file.Get(), entry.content, path);
  Checked(::fchmod(file.Get(), entry.mode), "set the mode of", path);
}

void MakeDirectory(int directory, const char* name, const std::string& path) {
  if (::mkdirat(directory, name, S_IRWXU) == 0) return;
  struct stat status {};
  if (errno == EEXIST && ::fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
      !S_ISDIR(status.st_mode)) {
    throw MountPointConflict(path);
  }
  if (!S_ISDIR(status.st_mode)) ThrowErrno("make", path);
}

std::string_view FileName(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

bool MayMove(const Entry& entry) {
  return entry.kind == Entry::Kind::File || entry.kind == Entry::Kind::Link;
}

/// Takes the pairs of one removed and one written path that `is_pair` accepts out of the two lists.
template <typename IsPair>
void PairUp(TreeDiff& diff, IsPair is_pair) {
  std::erase_if(diff.removed, [&](const std::string& from) {
    const auto to =
        std::ranges::find_if(diff.written, [&](const std::string& path) { return is_pair(from, path); });
    if (to == diff.written.end()) return false;
    diff.moved.push_back({from, *to});
    diff.written.erase(to);
    return true;
  });
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Entry& entry) {
  static constexpr std::string_view kKinds[] = {"file", "directory", "link", "other"};
  return out << kKinds[static_cast<std::size_t>(entry.kind)] << " 0" << std::oct << entry.mode << std::dec
             << " " << std::quoted(entry.content);
}

Tree ReadTree(const std::filesystem::path& root) {
  const Descriptor directory(
      Checked(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), "open", root.native()));
  return ReadTree(directory.Get());
}

Tree ReadTree(int directory) {
  Tree tree;
  ReadBelow(directory, "", tree);
  return tree;
}

Entry ReadEntry(int directory, const std::string& name, const std::string& path) {
  struct stat status {};
  Checked(::fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW), "examine", path);
  const mode_t mode = status.st_mode & 07777U;
  switch (status.st_mode & S_IFMT) {
    case S_IFREG:
      return {Entry::Kind::File, mode, ReadAll(OpenAt(directory, name, O_RDONLY, path).Get(), path)};
    case S_IFDIR:
      return {Entry::Kind::Directory, mode, ""};
    case S_IFLNK:
      return {Entry::Kind::Link, mode, LinkTarget(directory, name, path)};
    default:
      return {Entry::Kind::Other, mode, ""};
  }
}

void WriteTree(const Tree& tree, int directory) {
  for (const auto& [path, entry] : tree) {
    const char* const name = path.c_str() + 1;
    switch (entry.kind) {
      case Entry::Kind::File:
        WriteFile(directory, name, entry, path);
        break;
      case Entry::Kind::Directory:
        MakeDirectory(directory, name, path);
        break;
      case Entry::Kind::Link:
        RequireNew(::symlinkat(entry.content.c_str(), directory, name), "make", path);
        break;
      case Entry::Kind::Other:
        break;
    }
  }
  // Last, and from the inside out: a directory may not let its owner in.
  for (auto entry = tree.rbegin(); entry != tree.rend(); ++entry) {
    if (entry->second.kind != Entry::Kind::Directory) continue;
    Checked(::fchmodat(directory, entry->first.c_str() + 1, entry->second.mode, 0), "set the mode of",
            entry->first);
  }
}

TreeDiff Diff(const Tree& before, const Tree& after) {
  TreeDiff diff;
  for (const auto& [path, entry] : before) {
    const auto now = after.find(path);
    if (now == after.end()) {
      diff.removed.push_back(path);
    } else if (now->second != entry) {
      diff.changed.push_back(path);
    }
  }
  for (const auto& [path, entry] : after) {
    if (!before.contains(path)) diff.written.push_back(path);
  }

  const auto same_content = [&](const std::string& from, const std::string& to) {
    const Entry& old_entry = before.at(from);
    const Entry& new_entry = after.at(to);
    return MayMove(old_entry) && old_entry.kind == new_entry.kind && old_entry.content == new_entry.content;
  };
  PairUp(diff, [&](const std::string& from, const std::string& to) {
    return FileName(from) == FileName(to) && same_content(from, to);
  });
  PairUp(diff, [&](const std::string& from, const std::string& to) {
    return !before.at(from).content.empty() && same_content(from, to);
  });
  std::ranges::sort(diff.moved, {}, &TreeDiff::Move::from);
  return diff;
}

}  // namespace lab
