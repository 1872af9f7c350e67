#pragma once

#include <cstddef>
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
  explicit KeyValueText(std::string text);

  /// The value of `key`, compared whole and byte for byte; none where no entry has it. Valid as long as this
  /// is.
  std::optional<std::string_view> Find(std::string_view key) const;

 private:
  std::string text_;
  std::vector<std::size_t> lines_;  // where each entry's line starts, in file order
};

}  // namespace KELP::Wifi
