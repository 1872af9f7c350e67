#pragma once

#include <string>

namespace lab {

/// docs/findings.md: every kind of finding with what it means and what to do.
std::string FindingsReference();

/// docs/messages.md: every message of the program by its number, with its cause, effect and remedy.
std::string MessagesReference();

}  // namespace lab
