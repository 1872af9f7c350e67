#pragma once

#include <string>
#include <string_view>

namespace KELP::Wifi {

/// Replaces the file at `path` (absolute) by one that holds `bytes`, all or nothing: also after a power cut
/// the old or the new file stands there, whole. That it is the new one is certain once FlushDirectory was
/// called for its directory. Mode 0600, whatever the umask.
///
/// It is written as "<path>.new" beside the target, flushed and renamed over it. What stands at the temporary
/// name is unlinked first and the file created exclusively: the leftover of an interrupted run is no obstacle
/// and no link is followed.
///
/// Throws std::system_error with the path and the cause. The target is then as it was and nothing is left
/// beside it.
void WriteFileAtomically(const std::string& path, std::string_view bytes);

/// Makes what was created, replaced, renamed or removed in the directory at `path` durable. Where the file
/// system has no flush of directories (EINVAL, EOPNOTSUPP) that counts as done: what it can do, it has done.
/// Throws std::system_error with the path and the cause.
void FlushDirectory(const std::string& path);

}  // namespace KELP::Wifi
