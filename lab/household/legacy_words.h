#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lab {

/// Whether a word says that something is switched off, in whichever way people and their editors write it:
/// "no", "OFF", "0", nothing at all; blanks and carriage returns around it are nothing.
bool LooksOff(std::string_view word);
/// The same for on.
bool LooksOn(std::string_view word);

/// Whether a flag of that word, which is off unless it is exactly "yes", was perhaps not meant to be off.
bool MaybeMeantYes(const std::optional<std::string>& word);
/// Whether a flag of that word, which refuses if it is exactly "no" and only then, was perhaps meant to
/// refuse.
bool MaybeMeantNo(const std::optional<std::string>& word);

/// Without the blanks at its beginning: white space as C has it, carriage returns included.
std::string_view TrimStart(std::string_view word);
/// With the letters of ASCII in lower case.
std::string ToLowerAscii(std::string_view word);
/// Without blanks around it and in lower case.
std::string NormalizeValue(std::string_view word);

}  // namespace lab
