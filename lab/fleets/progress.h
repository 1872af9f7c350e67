#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>

namespace lab::fleets {

/// How far a fleet is.
struct ProgressState {
  /// In this run of the command, and those that earlier ones had done.
  std::size_t done = 0;
  std::size_t done_before = 0;
  /// Of both together, as far as it is known.
  std::optional<std::size_t> total;
  std::size_t failures = 0;
  std::chrono::milliseconds elapsed{0};
};

/// "1234 of 10000 devices, 612 a second, 14 s left, 3 failures".
std::string ProgressText(const ProgressState& state);

/// The same behind a bar of `width` characters; without one where the total is not known.
std::string ProgressBar(const ProgressState& state, std::size_t width);

/// Tells a person how far it is: as a bar that is drawn over and over on a terminal, elsewhere as a line
/// every ten seconds.
class Progress {
 public:
  Progress(std::ostream& out, bool is_terminal) : out_(out), is_terminal_(is_terminal) {}

  void Show(const ProgressState& state);
  /// Takes the bar away.
  void End();

 private:
  std::ostream& out_;
  bool is_terminal_;
  std::chrono::milliseconds shown_{0};
};

}  // namespace lab::fleets
