#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace lab {

// The plain way to a private root, for root of a container that may neither mount nor make namespaces: a
// folder (GuardTemporaryFiles) with the program and its libraries copied in (LentFiles), entered by chroot(2)
// alone, whose processes are caught as they are found (process_tree.h).

/// Why this process cannot take the plain way, in a few words; nothing where it can.
std::optional<std::string> WhyNoPlainWay();

/// From here on this process and its children take the plain way. `refused` is what the full one failed at.
void TakePlainWay(const std::string& refused);

bool IsPlainWay();

/// What the plain way does not keep apart, a few words each.
inline constexpr std::array<std::string_view, 4> kNotKeptApart{"root folder", "processes", "temporary files",
                                                               "storage"};

/// The same for a person, in two lines.
std::string PlainWayNotice();

}  // namespace lab
