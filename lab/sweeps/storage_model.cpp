#include "lab/sweeps/storage_model.h"

#include <algorithm>
#include <stdexcept>

namespace lab::sweeps {
namespace {

using Kind = FileOperation::Kind;

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

void Edit(std::map<std::string, int>& names, const std::vector<std::pair<std::string, int>>& edits,
          int none) {
  for (const auto& [name, inode] : edits) {
    if (inode == none) {
      names.erase(name);
    } else {
      names[name] = inode;
    }
  }
}

std::string WithZerosFrom(std::size_t place, std::string bytes) {
  std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(place), bytes.end(), '\0');
  return bytes;
}

}  // namespace

StorageModel::StorageModel(const Tree& durable) {
  for (const auto& [path, entry] : durable) durable_[path] = AddInode(entry);
  current_ = durable_;
}

int StorageModel::AddInode(Entry entry) {
  inodes_.push_back({std::move(entry), {}, false});
  inodes_.back().written = inodes_.back().entry.content;
  return static_cast<int>(inodes_.size()) - 1;
}

void StorageModel::Change(std::vector<std::pair<std::string, int>> edits) {
  Edit(current_, edits, kNone);
  NameChange change{std::move(edits), {}};
  for (const auto& [name, inode] : change.edits) change.folders.insert(FolderOf(name));
  pending_.push_back(std::move(change));
}

void StorageModel::OpenFile(const FileOperation& operation) {
  const auto found = current_.find(operation.path);
  if (found == current_.end()) {
    const int inode = AddInode({Entry::Kind::File, operation.mode, {}});
    opened_[operation.opened] = inode;
    Change({{operation.path, inode}});
    return;
  }
  opened_[operation.opened] = found->second;
  Inode& inode = inodes_[static_cast<std::size_t>(found->second)];
  if (operation.truncates && !inode.written.empty()) {
    inode.written.clear();
    inode.is_open = true;
  }
}

void StorageModel::FlushDirectory(const std::string& folder) {
  std::vector<NameChange> rest;
  for (NameChange& change : pending_) {
    if (change.folders.contains(folder)) {
      Edit(durable_, change.edits, kNone);
    } else {
      rest.push_back(std::move(change));
    }
  }
  pending_ = std::move(rest);
}

void StorageModel::Apply(const FileOperation& operation) {
  switch (operation.kind) {
    case Kind::Open:
      OpenFile(operation);
      return;
    case Kind::Write: {
      Inode& inode = inodes_.at(static_cast<std::size_t>(opened_.at(operation.opened)));
      inode.written += operation.bytes;
      inode.is_open = true;
      return;
    }
    case Kind::FlushFile: {
      Inode& inode = inodes_.at(static_cast<std::size_t>(opened_.at(operation.opened)));
      inode.entry.content = inode.written;
      inode.is_open = false;
      return;
    }
    case Kind::Rename:
      Change({{operation.path, kNone}, {operation.target, current_.at(operation.path)}});
      return;
    case Kind::Remove:
      Change({{operation.path, kNone}});
      return;
    case Kind::MakeDirectory:
      Change({{operation.path, AddInode({Entry::Kind::Directory, operation.mode, {}})}});
      return;
    case Kind::FlushDirectory:
      FlushDirectory(operation.path);
      return;
  }
  throw std::logic_error("no such operation");
}

std::vector<int> StorageModel::OpenInodes() const {
  std::vector<int> open;
  for (std::size_t i = 0; i < inodes_.size(); ++i) {
    if (inodes_[i].is_open) open.push_back(static_cast<int>(i));
  }
  return open;
}

std::vector<unsigned> StorageModel::Radixes() const {
  std::vector<unsigned> radixes(pending_.size(), 2);
  radixes.insert(radixes.end(), OpenInodes().size(), kContentVariants);
  return radixes;
}

StorageModel::Names StorageModel::NamesOf(const std::vector<unsigned>& digits) const {
  Names names = durable_;
  for (std::size_t i = 0; i < pending_.size(); ++i) {
    if (digits.at(i) != 0) Edit(names, pending_[i].edits, kNone);
  }
  // Folders stand before what is in them, so one pass finds everything that is out of reach.
  for (auto name = names.begin(); name != names.end();) {
    const std::string folder = FolderOf(name->first);
    name = folder == "/" || names.contains(folder) ? std::next(name) : names.erase(name);
  }
  return names;
}

std::string StorageModel::ContentOf(const Inode& inode, unsigned variant) {
  switch (variant) {
    case 0:
      return inode.entry.content;
    case 1:
      return inode.written.substr(0, inode.written.size() / 2);
    case 2:
      return WithZerosFrom(0, inode.written);
    case 3:  // the size of the whole, but not all of its blocks
      return WithZerosFrom(inode.written.size() / 2, inode.written);
    default:
      return inode.written;
  }
}

std::string StorageModel::KeyOf(const std::vector<unsigned>& digits) const {
  const std::vector<int> open = OpenInodes();
  std::string key;
  for (const auto& [name, inode] : NamesOf(digits)) {
    key.append(name).append(1, '\0').append(std::to_string(inode));
    const auto found = std::find(open.begin(), open.end(), inode);
    if (found != open.end()) {
      key += '.';
      key += std::to_string(inodes_[static_cast<std::size_t>(inode)].written.size());
      key += '.';
      key += std::to_string(digits.at(pending_.size() + static_cast<std::size_t>(found - open.begin())));
    } else {
      key += '=';  // flushed bytes: their number tells them from the same file's unflushed ones
      key += std::to_string(inodes_[static_cast<std::size_t>(inode)].written.size());
    }
    key += '\n';
  }
  return key;
}

Tree StorageModel::StateOf(const std::vector<unsigned>& digits) const {
  const std::vector<int> open = OpenInodes();
  Tree tree;
  for (const auto& [name, inode] : NamesOf(digits)) {
    const Inode& node = inodes_[static_cast<std::size_t>(inode)];
    Entry& entry = tree[name];
    entry = node.entry;
    const auto found = std::find(open.begin(), open.end(), inode);
    if (found == open.end()) continue;
    entry.content =
        ContentOf(node, digits.at(pending_.size() + static_cast<std::size_t>(found - open.begin())));
  }
  return tree;
}

}  // namespace lab::sweeps
