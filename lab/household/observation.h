#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lab {

/// What a finding follows from: its kind, and which one of that kind (a file's path, for example).
struct Cause {
  std::string_view id{};
  std::string origin{};

  bool operator==(const Cause&) const = default;
};

/// A finding before it has its place among the others.
struct Observation {
  /// Of a kind of finding.
  std::string_view id;
  std::string detail;
  Cause cause{};

  bool operator==(const Observation&) const = default;
};

using Observations = std::vector<Observation>;

/// The one kind that is no loss: the stored value is spelled in a way that works by luck only.
inline constexpr std::string_view kReadByLuck = "words-read-by-luck";
/// Stands for whatever is lost in a network that was off and is off.
inline constexpr std::string_view kOffNetworkDamaged = "off-network-damaged";

}  // namespace lab
