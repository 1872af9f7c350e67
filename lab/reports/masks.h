#pragma once

#include <string>

#include "lab/runs/outcome.h"

namespace lab {

/// What stands in place of a secret.
inline constexpr const char* kMask = "********";

/// The text of a line of the log with the stored SSID (line 575) or the stored secret (589) masked that it
/// tells; those that tell nothing, and all other lines, as they are. The shape of such a line does not
/// matter: what is not known for sure to be the message alone is masked.
std::string MaskedLogText(const NumberedLine& line);

}  // namespace lab
