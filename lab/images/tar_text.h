#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace lab {

// A tar archive (POSIX ustar) put together from texts: the same entries give the same bytes on any machine,
// since no owner and no time goes into it.

/// One entry: header, bytes, padding. `type` is '0' for a file, '5' for a folder, '2' for a link to `target`.
/// Nothing is checked, so that archives of hostile form can be made as well. Throws std::invalid_argument for
/// a name or target that is too long for the form (100 bytes).
std::string TarEntry(std::string_view name, char type, mode_t mode, std::string_view bytes,
                     std::string_view target = "");

/// What stands behind the last entry.
std::string TarEnd();

}  // namespace lab
