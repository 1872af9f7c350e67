#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "lab/images/descriptor.h"

namespace lab {

// The building blocks of everything that reads, copies or removes a device's files. They work relative to
// open folders, so that long paths and links lead nowhere else. Where a function takes a `path`, that is for
// the message of the std::system_error that it throws.

/// Opens the entry `name` of `directory`. Never follows a link there, and never waits for the other end of a
/// FIFO.
Descriptor OpenAt(int directory, const std::string& name, int flags, const std::string& path);

/// Opens `device_path` as if the folder open as `root` were the root folder: no link leads out of it. Gives
/// none, with errno, on failure.
Descriptor OpenBelow(int root, const std::string& device_path, int flags, mode_t mode = 0);

/// The names of all that the folder open as `directory` holds, in no particular order; of more than `most`
/// only that many. O_PATH suffices.
std::vector<std::string> Names(int directory, const std::string& path, std::size_t most = SIZE_MAX);

std::string LinkTarget(int directory, const std::string& name, const std::string& path);

/// All that is left to read.
std::string ReadAll(int descriptor, const std::string& path);

void WriteAll(int descriptor, std::string_view bytes, const std::string& path);

/// Copies all that the folder open as `from` holds into the one open as `to`: files, folders and links with
/// their modes, and FIFOs. Sockets are left out, devices are an error. `path` names `from`.
void CopyEntries(int from, int to, const std::string& path);

/// Removes all that the folder open as `directory` holds, whatever the modes. Never follows a link, never
/// enters anything mounted there.
void RemoveEntries(int directory, const std::string& path);

}  // namespace lab
