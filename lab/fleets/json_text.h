#pragma once

#include <string>
#include <string_view>

namespace lab::fleets {

/// `text` as valid UTF-8: a byte that is none stands there as the four characters "\xe9", so that names that
/// differ in such bytes stay apart.
std::string Utf8Text(std::string_view text);

/// The same as a JSON string, with its quotation marks.
std::string JsonText(std::string_view text);

}  // namespace lab::fleets
