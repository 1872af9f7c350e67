#pragma once

#include <string>
#include <string_view>

namespace KELP::Wifi {

/// Replaces the file at `path` (absolute) by one that holds `bytes`, all or nothing, also across a power cut;
/// durable when it returns. Mode 0600, whatever the umask.
///
/// It is written as "<path>.new" beside the target, flushed, renamed over it, and the directory is flushed.
/// What stands at the temporary name is unlinked first and the file created exclusively: the leftover of an
/// interrupted run is no obstacle and no link is followed.
///
/// Throws std::system_error with the path and the cause. The target is then as it was and nothing is left
/// beside it; only when the last flush of the directory fails does the new file stay in place.
void ReplaceFile(const std::string& path, std::string_view bytes);

/// Makes what was created, renamed or removed in the directory at `path` durable. Throws std::system_error.
void FlushDirectory(const std::string& path);

}  // namespace KELP::Wifi
