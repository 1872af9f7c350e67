#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lab {

/// Whether a word says that something is switched off, in whichever way people and their editors write it:
/// "no", "OFF", "0", nothing at all; blanks and carriage returns around it are nothing.
bool SaysOff(std::string_view word);
/// The same for on.
bool SaysOn(std::string_view word);

/// Whether a flag of that word, which is off unless it is exactly "yes", was perhaps not meant to be off.
bool IsLostFlag(const std::optional<std::string>& word);
/// Whether a flag of that word, which refuses if it is exactly "no" and only then, was perhaps meant to
/// refuse.
bool IsLostRefusal(const std::optional<std::string>& word);

/// Whether the number is all that a word says, or there is no word: blanks around it, a plus and leading
/// zeros are nothing.
bool IsReadWhole(std::string_view word, int number);

/// Without the blanks at its beginning: white space as C has it, carriage returns included.
std::string_view SkipBlanks(std::string_view word);
/// Without blanks around it and in lower case.
std::string PlainWord(std::string_view word);

}  // namespace lab
