#include "lab/sweeps/verdict.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "lab/sweeps/call_errors.h"
#include "lab/sweeps/documents.h"
#include "lab/sweeps/fault_rules.h"
#include "lab/sweeps/outcome_text.h"

namespace lab::sweeps {
namespace {

std::ptrdiff_t CountReports(const std::vector<std::string>& log) {
  return std::count_if(log.begin(), log.end(), [](const std::string& line) {
    return line.find(kFailureReport) != std::string::npos;
  });
}

bool IsOneReport(const std::string& err) {
  return err.starts_with(kFailureReport) && err.ends_with('\n') &&
         std::count(err.begin(), err.end(), '\n') == 1;
}

std::optional<std::string> FindWrongReport(const LostLines& lost, const Outcome& outcome) {
  const bool failed = outcome.status != 0;
  if (!lost.standard_error) {
    if (failed && !IsOneReport(outcome.err)) return "not one failure line on standard error: " + outcome.err;
    if (!failed && !outcome.err.empty()) return "success, and on standard error: " + outcome.err;
  }
  if (!lost.log) {
    const std::ptrdiff_t reports = CountReports(outcome.log);
    if (reports != (failed ? 1 : 0)) return std::to_string(reports) + " failure lines in the log";
  }
  return std::nullopt;
}

std::optional<std::string> FindWrongStatus(const Outcome& outcome) {
  if (outcome.timed_out) return "did not end";
  if (outcome.signal != 0) return "ended by signal " + std::to_string(outcome.signal);
  if (outcome.status != 0 && outcome.status != 1) return "status " + std::to_string(outcome.status);
  return std::nullopt;
}

/// Status 0 means that all steps were made, in their order; status 1 that the first ones were.
std::optional<std::string> FindWrongSteps(const Measure& measure, const Outcome& outcome) {
  const std::optional<std::size_t> made = CountStepsMade(measure.steps, measure.device.files, outcome.files);
  if (!made) return "a step was made behind one that was not";
  const bool are_all_made = *made == measure.steps.size();
  if (outcome.status == 0 && !are_all_made) {
    return "success, though a step was not done: " + measure.steps[*made].path;
  }
  if (outcome.status != 0 && are_all_made) return "a failure, though all steps were made";
  return std::nullopt;
}

/// Whether `log` is `whole` or lacks lines of it: one, or any number.
bool LacksLines(const std::vector<std::string>& log, const std::vector<std::string>& whole, bool only_one) {
  if (only_one && log.size() + 1 < whole.size()) return false;
  auto place = whole.begin();
  for (const std::string& line : log) {
    place = std::find(place, whole.end(), line);
    if (place == whole.end()) return false;
    ++place;
  }
  return true;
}

/// A run that lost lines of its report did everything else as if nothing had happened.
bool IsUndisturbedButFor(const LostLines& lost, bool only_one, const RulesOracle& oracle, Outcome outcome) {
  if (lost.standard_error) {
    const std::string& whole = oracle.undisturbed.err;
    if (outcome.err.size() > whole.size()) return false;
    outcome.err = whole;
  }
  if (lost.log) {
    if (!LacksLines(outcome.log, oracle.undisturbed.log, only_one)) return false;
    outcome.log = oracle.undisturbed.log;
  }
  return outcome == oracle.undisturbed;
}

/// The failure line of the run without what it begins with; from standard error where the log has none.
std::string ReasonOf(const Outcome& outcome) {
  const auto behind_begin = [](const std::string& line) {
    const std::size_t place = line.find(kFailureReport);
    return place == std::string::npos ? "" : line.substr(place + std::string_view(kFailureReport).size());
  };
  for (const std::string& line : outcome.log) {
    if (std::string reason = behind_begin(line); !reason.empty()) return reason;
  }
  return behind_begin(outcome.err);
}

bool Says(const std::string& reason, const std::vector<std::string>& texts) {
  if (texts.empty()) return true;
  return reason.starts_with(texts.front()) &&
         std::all_of(texts.begin(), texts.end(),
                     [&](const std::string& text) { return reason.find(text) != std::string::npos; });
}

std::string Joined(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) joined += " \"" + text + "\"";
  return joined;
}

/// What cannot be read is told, as a failure or as a fallback: by a line that the fault-free run does not
/// have, since that one may fall back for the same fact, for another reason.
std::optional<std::string> FindUntold(const Measure& measure, const Outcome& outcome) {
  if (outcome.status != 0 && Says(ReasonOf(outcome), ReasonOfUnreadableStore())) return std::nullopt;
  const std::vector<std::string>& usual = measure.oracle.undisturbed.log;
  const bool is_told = std::any_of(outcome.log.begin(), outcome.log.end(), [&](const std::string& line) {
    return TellsFallbackOfStore(line) && std::find(usual.begin(), usual.end(), line) == usual.end();
  });
  if (is_told) return std::nullopt;
  return "nothing tells that the information store could not be read";
}

/// Whether the run did as the rule for the fault wants it, whatever the sources make of it.
std::optional<std::string> FindWrongByRule(const Measure& measure, const Fault& fault,
                                           const Outcome& outcome) {
  const Outcome& undisturbed = measure.oracle.undisturbed;
  switch (fault.duty) {
    case Fault::Duty::SameResult:
      if (outcome == undisturbed) return std::nullopt;
      return "the result has changed:\n" + Difference(undisturbed, outcome);
    case Fault::Duty::Fail:
      return FindWrongFailure(measure, fault, outcome);
    case Fault::Duty::Forgive:
      if (outcome.status == undisturbed.status) return std::nullopt;
      return "not forgiven: " + outcome.err;
    case Fault::Duty::Tell:
      return FindUntold(measure, outcome);
    case Fault::Duty::None:
      break;
  }
  return std::nullopt;
}

}  // namespace

Measure TakeMeasure(const Device& device, RulesOracle oracle, const std::vector<SystemCall>& calls) {
  Measure measure{device, std::move(oracle), StepsOf(device, AccessPointFilesIn(calls)), {}};
  for (const Tree* const tree : measure.oracle.Trees()) measure.values.Add(*tree);
  for (const Tree& tree : measure.oracle.without_a_file) measure.values.Add(tree);
  if (const auto wrong = FindWrongSteps(measure, measure.oracle.undisturbed)) {
    throw std::runtime_error("the undisturbed run: " + *wrong);
  }
  return measure;
}

LostLines LinesLostBy(const Fault& fault) {
  LostLines lost{fault.channel == Fault::Channel::Log, fault.channel == Fault::Channel::StandardError};
  if (!fault.lasting) return lost;
  // What comes behind the call that was meant may be a report's.
  lost.log |= fault.call == "socket" || fault.call == "connect" || fault.call.starts_with("send") ||
              fault.call.ends_with("poll");
  lost.standard_error |= fault.call == "write" || fault.call.ends_with("poll");
  return lost;
}

std::optional<std::string> FindWrongFailure(const Measure& measure, const Fault& fault,
                                            const Outcome& outcome) {
  if (outcome.status == 0) return "success, though a step was not done";
  const auto made = CountStepsMade(measure.steps, measure.device.files, outcome.files);
  if (made != fault.steps_before) {
    return "the steps before the failed one are " + std::to_string(fault.steps_before) + ", those made " +
           (made ? std::to_string(*made) : "others");
  }
  if (Says(ReasonOf(outcome), fault.reason)) return std::nullopt;
  return "the reason \"" + ReasonOf(outcome) + "\" is not" + Joined(fault.reason);
}

std::optional<std::string> FindWrongEnd(const Measure& measure, const LostLines& lost, const Outcome& outcome,
                                        bool may_leave_temporary) {
  if (auto wrong = FindWrongStatus(outcome)) return wrong;
  if (auto wrong = FindWrongReport(lost, outcome)) return wrong;
  if (auto wrong = FindWrongSteps(measure, outcome)) return wrong;
  const IsGiven is_given = [&](const std::string& path, const Entry& document) {
    return measure.values.Allow(path, document.content);
  };
  return FindBreach(measure.device.files, outcome.files, is_given, may_leave_temporary);
}

std::optional<std::string> FindWrong(const Measure& measure, const Fault& fault, const Outcome& outcome) {
  const LostLines lost = LinesLostBy(fault);
  if (auto wrong = FindWrongEnd(measure, lost, outcome)) return wrong;
  if (fault.kind == Fault::Kind::NoMemory) return std::nullopt;
  if (fault.channel != Fault::Channel::None) {
    if (IsUndisturbedButFor(lost, !fault.lasting, measure.oracle, outcome)) return std::nullopt;
    return "more was lost than " + std::string(fault.lasting ? "lines" : "a line") + ":\n" +
           Difference(measure.oracle.undisturbed, outcome);
  }
  if (fault.lasting) {  // more than one service may fail
    if (fault.duty == Fault::Duty::Fail) return FindWrongFailure(measure, fault, outcome);
    // Among the values of the store are some without which there is no migration.
    const bool is_store_gone = fault.duty == Fault::Duty::Tell;
    if (!is_store_gone || Says(ReasonOf(outcome), ReasonOfUnreadableStore())) return std::nullopt;
    return "the information store could not be read, and the run did not end for it";
  }
  if (auto wrong = FindWrongByRule(measure, fault, outcome)) return wrong;
  // A file that is not there stays so for the run: every service that asks for it misses it.
  if (MeansAbsent(fault.error)) return std::nullopt;
  const auto is_exact = FindBreach(measure.device.files, outcome.files, measure.oracle.Trees(), false);
  if (is_exact) return is_exact;
  if (measure.oracle.Allows(outcome, fault.place)) return std::nullopt;
  return "the rules give no such result; from the undisturbed one it differs so:\n" +
         Difference(measure.oracle.undisturbed, outcome);
}

}  // namespace lab::sweeps
