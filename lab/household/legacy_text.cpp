#include "lab/household/legacy_text.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "lab/household/legacy_words.h"

namespace lab {
namespace {

std::vector<std::string_view> LinesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::string_view WithoutQuotes(std::string_view value) {
  const bool quoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
  return quoted ? value.substr(1, value.size() - 2) : value;
}

std::optional<LegacyEntry> ParseLine(std::string_view line) {
  if (line.starts_with('#')) return std::nullopt;
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  LegacyEntry entry;
  entry.key = line.substr(0, equals);
  entry.value = WithoutQuotes(line.substr(equals + 1));
  return entry;
}

std::string Replaced(std::string_view text, const LegacyEntry& entry,
                     const std::optional<std::string>& line) {
  std::string changed;
  const std::vector<std::string_view> lines = LinesOf(text);
  for (std::size_t number = 0; number < lines.size(); ++number) {
    if (number == entry.line && !line) continue;
    changed += number == entry.line ? *line : std::string(lines[number]);
    changed += '\n';
  }
  return changed;
}

}  // namespace

std::vector<LegacyEntry> ParseKeyValueText(std::string_view text) {
  std::vector<LegacyEntry> entries;
  const std::vector<std::string_view> lines = LinesOf(text);
  for (std::size_t number = 0; number < lines.size(); ++number) {
    auto entry = ParseLine(lines[number]);
    if (!entry) continue;
    entry->line = number;
    entries.push_back(std::move(*entry));
  }
  return entries;
}

std::vector<LegacyEntry> ParseSectionText(std::string_view text) {
  std::vector<LegacyEntry> entries;
  std::optional<std::string> section;
  const std::vector<std::string_view> lines = LinesOf(text);
  for (std::size_t number = 0; number < lines.size(); ++number) {
    const std::string_view line = lines[number];
    if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
      section = line.substr(1, line.size() - 2);
      continue;
    }
    if (!section || line.starts_with(';')) continue;
    auto entry = ParseLine(line);
    if (!entry) continue;
    entry->section = *section;
    entry->line = number;
    entries.push_back(std::move(*entry));
  }
  return entries;
}

std::optional<std::string> FindValue(const std::vector<LegacyEntry>& entries, std::string_view key,
                                     std::string_view section) {
  const auto found = std::ranges::find_if(
      entries, [&](const LegacyEntry& entry) { return entry.key == key && entry.section == section; });
  if (found == entries.end()) return std::nullopt;
  return found->value;
}

bool IsExactNumber(std::string_view word, int number) {
  word = TrimStart(word);
  if (word.empty()) return true;
  if (word.starts_with('+') && !word.starts_with("+-")) word.remove_prefix(1);
  int read = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), read);
  word.remove_prefix(static_cast<std::size_t>(end - word.data()));
  return error == std::errc() && TrimStart(word).empty() && read == number;
}

std::string WithoutEntry(std::string_view text, const LegacyEntry& entry) {
  return Replaced(text, entry, std::nullopt);
}

std::string WithValue(std::string_view text, const LegacyEntry& entry, std::string_view value) {
  return Replaced(text, entry, entry.key + "=" + std::string(value));
}

}  // namespace lab
