#include "lab/sweeps/documents.h"

#include <algorithm>
#include <string_view>

#include "lab/household/known_files.h"

namespace lab::sweeps {
namespace {

constexpr std::string_view kFolder = kWifiFolder;
constexpr std::string_view kTemporarySuffix = ".new";

bool IsConsumedBy13(const std::string& path) {
  return path == kModelFile || path == kCountryFile;
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

class Search {
 public:
  Search(const Tree& before, const Tree& after, const IsGiven& is_given, bool may_leave_temporary)
      : before_(before), after_(after), is_given_(is_given), may_leave_temporary_(may_leave_temporary) {}

  std::optional<std::string> FindBreach() const {
    for (const auto& [path, entry] : before_) {
      const bool is_no_matter =
          entry.kind == Entry::Kind::Directory || IsTemporaryName(path) || IsLockOfBootEnvironment(path);
      const Entry* const here = Find(after_, path);
      const bool is_as_before = here != nullptr && *here == entry;
      if (is_no_matter || is_as_before) continue;
      if (auto breach = IsDocument(path) ? OfDocument(path) : OfFile(path, entry)) return breach;
    }
    for (const auto& [path, entry] : after_) {
      if (auto breach = IsTemporaryName(path) ? OfTemporary(path, entry) : OfNewEntry(path, entry))
        return breach;
    }
    return std::nullopt;
  }

 private:
  /// An old document that is not as it was.
  std::optional<std::string> OfDocument(const std::string& path) const {
    if (!after_.contains(path)) return "the old document is gone: " + path;
    if (!IsNew(path)) return "neither the old nor a new document, whole: " + path;
    return std::nullopt;
  }

  /// Any other file that is not as it was.
  std::optional<std::string> OfFile(const std::string& path, const Entry& entry) const {
    if (const Entry* const here = Find(after_, path)) {
      if (IsArchived(path, *here, before_)) return std::nullopt;  // replaced by a file of the same name
      return "changed: " + path;
    }
    const Entry* const archived = Find(after_, ArchivedPath(path));
    if (archived != nullptr && *archived == entry) return std::nullopt;
    if (!IsConsumedBy13(path)) return "gone from its place and from the archive: " + path;
    if (!IsNew(kGlobalDocument)) return "gone before global.json stands: " + path;
    return std::nullopt;
  }

  std::optional<std::string> OfTemporary(const std::string& path, const Entry& entry) const {
    const Entry* const earlier = Find(before_, path);
    const bool is_untouched = earlier != nullptr && *earlier == entry && !IsNew(DocumentOf(path));
    if (!may_leave_temporary_ && !is_untouched) return "left beside the documents: " + path;
    if (entry.kind != Entry::Kind::File || entry.mode != kDocumentMode) return "others may read " + path;
    return std::nullopt;
  }

  std::optional<std::string> OfNewEntry(const std::string& path, const Entry& entry) const {
    if (before_.contains(path) || path == kArchive || IsLockOfBootEnvironment(path)) return std::nullopt;
    if (IsDocument(path)) {
      if (!IsNew(path)) return "no document that the rules give, whole: " + path;
    } else if (!IsArchived(path, entry, before_)) {
      return "nobody asked for " + path;
    }
    return std::nullopt;
  }

  /// Whether the document at `path` is one that the rules give and not the one that stood there before.
  bool IsNew(const std::string& path) const {
    const Entry* const document = Find(after_, path);
    const Entry* const old = Find(before_, path);
    const bool is_old = document != nullptr && old != nullptr && *old == *document;
    if (document == nullptr || document->mode != kDocumentMode || is_old) return false;
    return is_given_(path, *document);
  }

  const Tree& before_;
  const Tree& after_;
  const IsGiven& is_given_;
  bool may_leave_temporary_;
};

}  // namespace

bool IsDocument(const std::string& path) {
  return path.starts_with(kFolder) && IsDocumentName(std::string_view(path).substr(kFolder.size()));
}

bool IsTemporaryName(const std::string& path) {
  return path.starts_with(kFolder) && path.ends_with(kTemporarySuffix);
}

std::string TemporaryNameOf(const std::string& path) {
  return path + std::string(kTemporarySuffix);
}

std::string DocumentOf(const std::string& temporary_name) {
  return temporary_name.substr(0, temporary_name.size() - kTemporarySuffix.size());
}

bool IsLockOfBootEnvironment(const std::string& path) {
  return path == kBootEnvironmentLock;
}

std::string ArchivedPath(const std::string& path) {
  return std::string(kArchive) + path.substr(path.rfind('/'));
}

std::optional<std::string> FindBreach(const Tree& before, const Tree& after, const IsGiven& is_given,
                                      bool may_leave_temporary) {
  return Search(before, after, is_given, may_leave_temporary).FindBreach();
}

std::optional<std::string> FindBreach(const Tree& before, const Tree& after,
                                      const std::vector<const Tree*>& written, bool may_leave_temporary) {
  const IsGiven is_given = [&](const std::string& path, const Entry& document) {
    return std::any_of(written.begin(), written.end(), [&](const Tree* tree) {
      const Entry* const expected = Find(*tree, path);
      return expected != nullptr && *expected == document;
    });
  };
  return FindBreach(before, after, is_given, may_leave_temporary);
}

}  // namespace lab::sweeps
