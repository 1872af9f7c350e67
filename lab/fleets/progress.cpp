#include "lab/fleets/progress.h"

#include <algorithm>
#include <ostream>

#include "lab/fleets/counted.h"

namespace lab::fleets {
namespace {

constexpr std::chrono::seconds kLineEvery{10};
constexpr std::chrono::milliseconds kBarEvery{200};
constexpr std::size_t kBarWidth = 20;

/// "14 s", "3 min", "2 h".
std::string Duration(double seconds) {
  const auto whole = static_cast<std::size_t>(seconds + 0.5);
  if (whole < 120) return std::to_string(whole) + " s";
  if (whole < 120 * 60) return std::to_string(whole / 60) + " min";
  return std::to_string(whole / 3600) + " h";
}

}  // namespace

std::string ProgressText(const ProgressState& state) {
  const std::size_t done = state.done + state.done_before;
  std::string text =
      state.total ? std::to_string(done) + " of " + Counted(*state.total, "device") : Counted(done, "device");
  const double seconds = std::chrono::duration<double>(state.elapsed).count();
  if (state.done > 0 && seconds > 0) {
    const double rate = static_cast<double>(state.done) / seconds;
    text += ", " + std::to_string(static_cast<std::size_t>(rate + 0.5)) + " a second";
    if (state.total && *state.total > done) {
      text += ", " + Duration(static_cast<double>(*state.total - done) / rate) + " left";
    }
  }
  return text + ", " + Counted(state.failures, "failure");
}

std::string ProgressBar(const ProgressState& state, std::size_t width) {
  if (!state.total || *state.total == 0) return ProgressText(state);
  const std::size_t done = std::min(state.done + state.done_before, *state.total);
  const std::size_t full = done * width / *state.total;
  return "[" + std::string(full, '#') + std::string(width - full, '.') + "] " + ProgressText(state);
}

void Progress::Show(const ProgressState& state) {
  if (state.elapsed - shown_ < (is_terminal_ ? kBarEvery : std::chrono::milliseconds(kLineEvery))) return;
  shown_ = state.elapsed;
  if (is_terminal_) {
    out_ << "\r\x1b[K" << ProgressBar(state, kBarWidth) << std::flush;
  } else {
    out_ << ProgressText(state) << std::endl;
  }
}

void Progress::End() {
  if (is_terminal_) out_ << "\r\x1b[K" << std::flush;
}

}  // namespace lab::fleets
