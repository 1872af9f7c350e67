#include "lab/sweeps/limit_trials.h"

#include <csignal>
#include <set>

#include "lab/sweeps/documents.h"
#include "lab/sweeps/outcome_text.h"

namespace lab::sweeps {
namespace {

/// What the helper ends with when the program ended before its main.
constexpr int kNotStarted = 124;

constexpr std::uint64_t kKibi = 1024;
constexpr std::uint64_t kMebi = 1024 * kKibi;

/// With less, the kernel may end the program, which cannot say a word then. A device gives hundreds of times
/// as much.
constexpr std::uint64_t kSmallestStack = 24 * kKibi;

std::vector<std::uint64_t> Steps(std::uint64_t from, std::uint64_t to, std::uint64_t step) {
  std::vector<std::uint64_t> values;
  for (std::uint64_t value = from; value <= to; value += step) values.push_back(value);
  return values;
}

std::vector<std::uint64_t> Doublings(std::uint64_t from, std::uint64_t to) {
  std::set<std::uint64_t> values{0};
  for (std::uint64_t value = from; value <= to; value *= 2) values.insert({value, value + value / 2});
  return {values.begin(), values.end()};
}

TrialResult Try(const Measure& measure, const Programs& programs, const std::string& resource,
                std::uint64_t value, bool is_plenty) {
  Manner manner;
  manner.wrapper = {kTamper, "limit", resource, std::to_string(value)};
  manner.helpers = {{kTamper, programs.tamper}};
  return JudgeLimited(measure, resource, value, is_plenty,
                      Migrate(measure.device, programs.migration, manner).outcome);
}

}  // namespace

std::vector<LimitRange> LimitRanges() {
  return {{"FSIZE", Doublings(1, 32 * kKibi)},
          {"AS", Steps(0, 24 * kMebi, 192 * kKibi)},
          {"DATA", Steps(0, 4 * kMebi, 32 * kKibi)},
          {"NOFILE", Steps(0, 24, 1)},
          {"STACK", Doublings(kKibi, 8 * kMebi)}};
}

TrialResult JudgeLimited(const Measure& measure, const std::string& resource, std::uint64_t value,
                         bool is_plenty, const Outcome& outcome) {
  const Outcome& undisturbed = measure.oracle.undisturbed;
  if (is_plenty) {
    if (outcome == undisturbed) return Well();
    return Wrong("plenty is not enough:\n" + Difference(undisturbed, outcome));
  }
  if (outcome.status == kNotStarted) {
    const bool is_untouched =
        outcome.files == WithoutLabFiles(measure.device.files) && outcome.log.empty() && outcome.out.empty();
    if (is_untouched) return {true, "before main"};
    return Wrong("not started, and yet something was done");
  }
  if (resource == "STACK" && value < kSmallestStack && outcome.signal == SIGSEGV) {
    const auto breach = FindBreach(measure.device.files, outcome.files, measure.oracle.Trees(), true);
    const bool is_in_order = CountStepsMade(measure.steps, measure.device.files, outcome.files).has_value();
    return breach || !is_in_order ? Wrong(breach.value_or("a step was made behind one that was not"))
                                  : TrialResult{true, "with no stack"};
  }
  // Without a descriptor nobody can speak to the log.
  const LostLines lost{.log = resource == "NOFILE", .standard_error = false};
  if (auto wrong = FindWrongEnd(measure, lost, outcome)) return Wrong(*wrong);
  return {true, outcome.status == 0 ? "with status 0" : "with status 1"};
}

std::vector<Trial> LimitTrials(const Measure& measure, const Programs& programs) {
  std::vector<Trial> trials;
  for (const LimitRange& range : LimitRanges()) {
    for (const std::uint64_t value : range.values) {
      const bool is_plenty = value == range.values.back();
      const std::string text = std::to_string(value);
      trials.push_back({"limit:" + range.resource + ":" + text, "limit " + range.resource,
                        "tamper limit " + range.resource + " " + text + " ",
                        [=, resource = range.resource, &measure, &programs] {
                          return Try(measure, programs, resource, value, is_plenty);
                        }});
    }
  }
  return trials;
}

}  // namespace lab::sweeps
