#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace fuzz {

/// The bytes that the fuzzer made up, taken off from the front. What is no longer there reads as zero or
/// empty.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size)
      : rest_(size == 0 ? "" : reinterpret_cast<const char*>(data), size) {}

  std::uint8_t TakeByte() {
    if (rest_.empty()) return 0;
    const auto byte = static_cast<std::uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
  }

  /// Two bytes, the higher one first.
  std::size_t TakeNumber() {
    const std::size_t high = TakeByte();
    return high * 256 + TakeByte();
  }

  std::string TakeBytes(std::size_t count) {
    const std::string_view taken = rest_.substr(0, count);
    rest_.remove_prefix(taken.size());
    return std::string(taken);
  }

  /// The bytes before the first LF, which is taken off too.
  std::string TakeLine() {
    std::string line = TakeBytes(std::min(rest_.find('\n'), rest_.size()));
    rest_.remove_prefix(std::min<std::size_t>(1, rest_.size()));
    return line;
  }

  std::string TakeRest() { return TakeBytes(rest_.size()); }

 private:
  std::string_view rest_;
};

}  // namespace fuzz
