#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace KELP::Wifi {

/// The text of a key=value file, ready to be asked for single keys.
///
/// Lines end at LF; the last may lack it. A line that starts with '#' or has no '=' is no entry. Of two
/// entries with one key the first counts. Costs one word a line beside the text itself.
class KeyValueText {
 public:
  /// Throws std::length_error for a text of 4 GiB or more.
  explicit KeyValueText(std::string text);

  /// The value of `key`, compared whole and byte for byte; none where no entry has it. Valid as long as this
  /// is.
  std::optional<std::string_view> Find(std::string_view key) const;

 private:
  static constexpr std::size_t kKinds = 256;
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  struct Place {
    std::uint32_t start;  // of the entry's line, and so of its key
    std::uint32_t next;   // of the entries whose key is of the same kind, further down in the file
  };

  static std::size_t KindOf(std::string_view key);

  std::string text_;
  std::vector<Place> entries_;               // in file order
  std::array<std::uint32_t, kKinds> first_;  // of the entries of each kind
};

}  // namespace KELP::Wifi
