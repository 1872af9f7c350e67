#pragma once

#include <bitset>
#include <map>
#include <string>
#include <string_view>

namespace lab {

/// Texts that are not to be shown, with what stands in their place.
class KnownTexts {
 public:
  /// No household has more of them, nor any longer: a device that does so wants the memory of the host.
  static constexpr std::size_t kMost = 100'000;
  static constexpr std::size_t kLongest = std::size_t{64} * 1024;

  /// Of two replacements of one text the first counts. An empty text is none, nor is what goes beyond the
  /// limits.
  void Add(std::string_view text, std::string_view replacement);

  /// Whether any of them stands in `text`.
  bool AreIn(std::string_view text) const;

  /// The longest of them that stands at the start of `text`; none where there is no such.
  const std::pair<const std::string, std::string>* LongestAt(std::string_view text) const;

  /// `text` with each of them replaced, from its start on, the longest first: one may begin another or stand
  /// in the middle of it.
  std::string Replaced(std::string_view text) const;

 private:
  std::map<std::string, std::string, std::less<>> texts_;
  std::bitset<256> first_bytes_;
};

}  // namespace lab
