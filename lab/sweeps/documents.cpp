#include "lab/sweeps/documents.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace lab::sweeps {
namespace {

constexpr std::string_view kFolder = "/usr/kelp/etc/wifi/";
constexpr std::string_view kTemporarySuffix = ".new";
constexpr mode_t kOwnerOnly = 0600;

bool IsConsumedBy13(const std::string& path) {
  return path == "/usr/kelp/etc/wifi/model.json" || path == "/usr/kelp/etc/wifi/country.json";
}

const Entry* Find(const Tree& tree, const std::string& path) {
  const auto found = tree.find(path);
  return found == tree.end() ? nullptr : &found->second;
}

/// Whether `entry`, at `path` in the archive, is a legacy file of `before`.
bool IsArchived(const std::string& path, const Entry& entry, const Tree& before) {
  return std::any_of(before.begin(), before.end(), [&](const auto& legacy) {
    return ArchivedPath(legacy.first) == path && legacy.second == entry;
  });
}

/// Whether the document at `path` is one of `written` and not the one that stood there before.
bool IsNew(const std::string& path, const Tree& before, const Tree& after,
           const std::vector<const Tree*>& written) {
  const Entry* const document = Find(after, path);
  const Entry* const old = Find(before, path);
  if (document == nullptr || document->mode != kOwnerOnly || (old != nullptr && *old == *document))
    return false;
  return std::any_of(written.begin(), written.end(), [&](const Tree* tree) {
    const Entry* const expected = Find(*tree, path);
    return expected != nullptr && *expected == *document;
  });
}

std::string DocumentOf(const std::string& temporary_name) {
  return temporary_name.substr(0, temporary_name.size() - kTemporarySuffix.size());
}

}  // namespace

bool IsDocument(const std::string& path) {
  static constexpr std::array<std::string_view, 4> kNames{"global.json", "misc.json", "radio.json",
                                                          "wps.json"};
  if (!path.starts_with(kFolder) || IsTemporaryName(path)) return false;
  const std::string_view name = std::string_view(path).substr(kFolder.size());
  return name.starts_with("network.json.") || std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

bool IsTemporaryName(const std::string& path) {
  return path.starts_with(kFolder) && path.ends_with(kTemporarySuffix);
}

std::string TemporaryNameOf(const std::string& path) {
  return path + std::string(kTemporarySuffix);
}

bool IsLockOfBootEnvironment(const std::string& path) {
  return path == "/var/lock/fw_printenv.lock";
}

std::string ArchivedPath(const std::string& path) {
  return std::string(kArchive) + path.substr(path.rfind('/'));
}

std::optional<std::string> FindBreach(const Tree& before, const Tree& after,
                                      const std::vector<const Tree*>& written, bool may_leave_temporary) {
  const auto is_new = [&](const std::string& path) { return IsNew(path, before, after, written); };

  for (const auto& [path, entry] : before) {
    const bool is_no_matter =
        entry.kind == Entry::Kind::Directory || IsTemporaryName(path) || IsLockOfBootEnvironment(path);
    if (is_no_matter) continue;
    const Entry* const here = Find(after, path);
    if (here != nullptr && *here == entry) continue;
    if (IsDocument(path)) {
      if (here == nullptr) return "the old document is gone: " + path;
      if (!is_new(path)) return "neither the old nor a new document, whole: " + path;
      continue;
    }
    if (here != nullptr) {
      if (IsArchived(path, *here, before)) continue;  // replaced by a file of the same name
      return "changed: " + path;
    }
    const Entry* const archived = Find(after, ArchivedPath(path));
    if (archived != nullptr && *archived == entry) continue;
    if (!IsConsumedBy13(path)) return "gone from its place and from the archive: " + path;
    if (!is_new(kGlobalDocument)) return "gone before global.json stands: " + path;
  }
  for (const auto& [path, entry] : after) {
    if (IsTemporaryName(path)) {
      const Entry* const earlier = Find(before, path);
      const bool is_untouched = earlier != nullptr && *earlier == entry && !is_new(DocumentOf(path));
      if (!may_leave_temporary && !is_untouched) return "left beside the documents: " + path;
      if (entry.kind != Entry::Kind::File || entry.mode != kOwnerOnly) return "others may read " + path;
      continue;
    }
    if (before.contains(path) || path == kArchive || IsLockOfBootEnvironment(path)) continue;
    if (IsDocument(path)) {
      if (!is_new(path)) return "no document that the rules give, whole: " + path;
    } else if (!IsArchived(path, entry, before)) {
      return "nobody asked for " + path;
    }
  }
  return std::nullopt;
}

}  // namespace lab::sweeps
