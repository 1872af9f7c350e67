#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab {

/// An entry of a legacy file, any bytes.
struct LegacyEntry {
  /// The section that it stands in; empty in a file without sections.
  std::string section;
  std::string key;
  /// Without the quotes that enclose it whole.
  std::string value;
  /// Its line, from 0.
  std::size_t line = 0;

  bool operator==(const LegacyEntry&) const = default;
};

/// The entries of a key=value file in file order, those that an earlier one of the same key hides included.
std::vector<LegacyEntry> ParseKeyValueText(std::string_view text);

/// The entries of a file of sections in file order. Entries before the first section are left out.
std::vector<LegacyEntry> ParseSectionText(std::string_view text);

/// The value of the first entry with that key and section.
std::optional<std::string> FindValue(const std::vector<LegacyEntry>& entries, std::string_view key,
                                     std::string_view section = "");

/// Whether the number is all that a word says, or there is no word: blanks around it, a plus and leading
/// zeros are nothing.
bool IsExactNumber(std::string_view word, int number);

/// The text without the line of `entry`, or with another value in it.
std::string WithoutEntry(std::string_view text, const LegacyEntry& entry);
std::string WithValue(std::string_view text, const LegacyEntry& entry, std::string_view value);

}  // namespace lab
