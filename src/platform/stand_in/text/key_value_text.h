#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace KELP::Wifi {

/// The text of a key=value file, ready to be asked for single keys.
///
/// Lines end at LF; the last may lack it. A line that starts with '#' or has no '=' is no entry. Of two
/// entries with one key the first counts.
class KeyValueText {
 public:
  explicit KeyValueText(std::string text);
  KeyValueText(const KeyValueText&) = delete;
  KeyValueText& operator=(const KeyValueText&) = delete;
  ~KeyValueText() = default;

  /// The value of `key`, compared whole and byte for byte; none where no entry has it. Valid as long as this
  /// is.
  std::optional<std::string_view> Find(std::string_view key) const;

 private:
  std::string text_;
  std::unordered_map<std::string_view, std::string_view> values_;
};

}  // namespace KELP::Wifi
