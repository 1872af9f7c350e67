#include "platform/stand_in/text/section_text.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace KELP::Wifi {
namespace {

std::optional<std::string_view> ParseHeader(std::string_view line) {
  if (line.size() < 2 || line.front() != '[' || line.back() != ']') return std::nullopt;
  const std::string_view name = line.substr(1, line.size() - 2);
  return name.substr(0, std::min(name.find('\0'), name.size()));
}

}  // namespace

SectionText::SectionText(std::string text) : text_(std::move(text)) {
  std::string_view rest = text_;
  std::optional<std::string_view> name;
  const char* lines = text_.data();
  const auto close_section = [&](const char* end) {
    if (name) AddBlock(*name, std::string_view(lines, static_cast<std::size_t>(end - lines)));
  };
  while (!rest.empty()) {
    const std::string_view line = TakeLine(rest);
    const std::optional<std::string_view> header = ParseHeader(line);
    if (!header) continue;
    close_section(line.data());
    name = header;
    lines = rest.data();
  }
  close_section(text_.data() + text_.size());
}

void SectionText::AddBlock(std::string_view name, std::string_view lines) {
  const std::size_t block = blocks_.size();
  blocks_.push_back({lines, kNone});
  const auto [known, is_new] = index_.try_emplace(name, sections_.size());
  if (is_new) {
    sections_.push_back({name, block, block});
    return;
  }
  Section& section = sections_[known->second];
  blocks_[section.last_block].next = block;
  section.last_block = block;
}

std::vector<std::string_view> SectionText::Names() const {
  std::vector<std::string_view> names;
  names.reserve(sections_.size());
  for (const Section& section : sections_) names.push_back(section.name);
  return names;
}

std::optional<Entry> SectionText::ParseSectionEntry(std::string_view line) {
  return line.starts_with(';') ? std::nullopt : ParseEntry(line);
}

}  // namespace KELP::Wifi
