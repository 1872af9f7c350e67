#pragma once

#include <string>
#include <vector>

#include "lab/images/tree.h"

namespace bench {

/// Where the documents of two runs on the same device differ, as a text for each place; nothing where they
/// say the same. Left out are the secrets (the members "password"), which a shell script cannot open. A run
/// of bytes that is no UTF-8 counts as one U+FFFD, which is all that jq makes of it.
std::vector<std::string> DocumentDifferences(const lab::Tree& program, const lab::Tree& peer);

/// `bytes` with one U+FFFD for each run of bytes, and of U+FFFD themselves, that is no UTF-8.
std::string OnlyUtf8(const std::string& bytes);

}  // namespace bench
