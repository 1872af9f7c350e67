#pragma once

#include <string>

namespace lab {

/// docs/documents.md: every member of every document, in the words of the schemas.
std::string DocumentsReference();

}  // namespace lab
