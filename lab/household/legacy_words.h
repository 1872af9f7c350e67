#pragma once

#include <string>
#include <string_view>

namespace lab {

/// Whether a word says that something is switched off, in whichever way people and their editors write it:
/// "no", "OFF", "0", nothing at all; blanks and carriage returns around it are nothing.
bool LooksOff(std::string_view word);
/// The same for on.
bool LooksOn(std::string_view word);

/// Without the blanks at its beginning: white space as C has it, carriage returns included.
std::string_view TrimStart(std::string_view word);
/// Without the blanks on either side.
std::string_view TrimBlanks(std::string_view word);
/// Without blanks around it and in lower case.
std::string NormalizeValue(std::string_view word);

/// Whether the number is all that a word says, or there is no word: blanks around it, a plus and leading
/// zeros are nothing.
bool IsExactNumber(std::string_view word, int number);

}  // namespace lab
