#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/stand_in/text/entry_lines.h"

namespace KELP::Wifi {

/// The text of a section file, cut into its sections.
///
/// The line rules are those of key=value files; a line that starts with ';' is a comment too. A line whose
/// first byte is '[' and whose last is ']' opens the section named by what stands between them. Entries
/// before the first section belong to none; a name that comes again continues the earlier section.
///
/// The interfaces that hand names and values out are zero-terminated, so names are cut at their first NUL
/// here.
class SectionText {
 public:
  explicit SectionText(std::string text);
  SectionText(const SectionText&) = delete;
  SectionText& operator=(const SectionText&) = delete;
  ~SectionText() = default;

  /// The names in file order, each once.
  std::vector<std::string_view> Names() const;

  /// Calls `visit` with each entry of the section `name` in file order; none where there is no such section.
  template <typename Visit>
  void ForEachEntry(std::string_view name, Visit visit) const {
    const auto section = index_.find(name);
    if (section == index_.end()) return;
    for (std::size_t block = sections_[section->second].first_block; block != kNone;
         block = blocks_[block].next) {
      std::string_view rest = blocks_[block].lines;
      while (!rest.empty()) {
        if (const auto entry = ParseSectionEntry(TakeLine(rest))) visit(*entry);
      }
    }
  }

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  struct Section {
    std::string_view name;
    std::size_t first_block;
    std::size_t last_block;
  };
  /// The lines between one section header and the next.
  struct Block {
    std::string_view lines;
    std::size_t next;
  };

  static std::optional<Entry> ParseSectionEntry(std::string_view line);
  void AddBlock(std::string_view name, std::string_view lines);

  std::string text_;
  std::vector<Section> sections_;
  std::vector<Block> blocks_;
  std::unordered_map<std::string_view, std::size_t> index_;  // name to place in sections_
};

}  // namespace KELP::Wifi
