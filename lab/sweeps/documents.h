#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "lab/images/tree.h"

namespace lab::sweeps {

inline constexpr const char* kGlobalDocument = "/usr/kelp/etc/wifi/global.json";
inline constexpr const char* kMiscDocument = "/usr/kelp/etc/wifi/misc.json";
inline constexpr const char* kArchive = "/usr/kelp/etc/wifi/legacy";

/// The one file that a run may leave besides its results.
inline constexpr const char* kBootEnvironmentLock = "/var/lock/fw_printenv.lock";

/// The mode of a document, under whichever name.
inline constexpr mode_t kDocumentMode = 0600;

/// One of the documents that the program writes.
bool IsDocument(const std::string& path);

/// A name under which a document is written before it takes its own.
bool IsTemporaryName(const std::string& path);

/// That name of the document at `path`.
std::string TemporaryNameOf(const std::string& path);

/// The document that is written under a temporary name.
std::string DocumentOf(const std::string& temporary_name);

bool IsLockOfBootEnvironment(const std::string& path);

/// Where the legacy file at `path` goes to in the archive.
std::string ArchivedPath(const std::string& path);

/// Whether a document, at the path, is one that the rules give.
using IsGiven = std::function<bool(const std::string& path, const Entry& document)>;

/// Looks for a breach of what holds whatever goes wrong in a run that began with `before` and left `after`:
/// every document is absent, the old one or a new one that the rules give; no file of the device has changed
/// or is gone from both its place and the archive, but for the two that a migration of generation 1.3
/// consumes once its document stands; nothing lies beside the documents, but for what lay there before beside
/// one that is not new, unless `may_leave_temporary`; and what lies there nobody else may read. Gives the
/// first breach in words.
std::optional<std::string> FindBreach(const Tree& before, const Tree& after, const IsGiven& is_given,
                                      bool may_leave_temporary);

/// The same where the new documents are, byte for byte, those of one of the trees of `written`.
std::optional<std::string> FindBreach(const Tree& before, const Tree& after,
                                      const std::vector<const Tree*>& written, bool may_leave_temporary);

}  // namespace lab::sweeps
