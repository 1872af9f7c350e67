#include "lab/images/tree_lookup.h"

#include <filesystem>

namespace lab {
namespace {

constexpr int kMaxLinks = 40;  // as the kernel has it

}  // namespace

std::optional<std::string> ResolvePath(const Tree& tree, const std::string& path) {
  namespace fs = std::filesystem;
  fs::path rest = fs::path(path).lexically_normal();
  int links = 0;
  bool followed = true;
  while (followed) {
    followed = false;
    fs::path walked = "/";
    for (auto part = ++rest.begin(); part != rest.end(); ++part) {
      walked /= *part;
      const auto entry = tree.find(walked.native());
      // A snapshot may lack a folder that the lab itself made.
      if (entry == tree.end() || entry->second.kind != Entry::Kind::Link) continue;
      if (++links > kMaxLinks) return std::nullopt;
      fs::path target = walked.parent_path() / entry->second.content;
      while (++part != rest.end()) target /= *part;
      rest = target.lexically_normal();
      followed = true;
      break;
    }
  }
  return rest.native();
}

const Entry* FindFile(const Tree& tree, const std::string& path) {
  const auto resolved = ResolvePath(tree, path);
  const auto entry = resolved ? tree.find(*resolved) : tree.end();
  return entry != tree.end() && entry->second.kind == Entry::Kind::File ? &entry->second : nullptr;
}

}  // namespace lab
