#include "lab/sweeps/verdict.h"

#include <algorithm>

#include "lab/sweeps/documents.h"
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

/// A channel that the fault fell on may have lost a line of it; the other one may not.
std::optional<std::string> FindWrongReport(const Fault& fault, const Outcome& outcome) {
  const bool failed = outcome.status != 0;
  if (fault.channel != Fault::Channel::StandardError) {
    if (failed && !IsOneReport(outcome.err)) return "not one failure line on standard error: " + outcome.err;
    if (!failed && !outcome.err.empty()) return "success, and on standard error: " + outcome.err;
  }
  if (fault.channel != Fault::Channel::Log) {
    const std::ptrdiff_t reports = CountReports(outcome.log);
    if (reports != (failed ? 1 : 0)) return std::to_string(reports) + " failure lines in the log";
  }
  return std::nullopt;
}

/// Whether `log` is `whole` or lacks one line of it.
bool LacksAtMostOneLine(const std::vector<std::string>& log, const std::vector<std::string>& whole) {
  if (log == whole) return true;
  if (log.size() + 1 != whole.size()) return false;
  const auto [in_log, in_whole] = std::mismatch(log.begin(), log.end(), whole.begin());
  return std::equal(in_log, log.end(), in_whole + 1);
}

/// Whether everything stands where it stands after a whole run, whatever it holds.
bool IsComplete(const Outcome& outcome, const Outcome& whole) {
  return std::equal(outcome.files.begin(), outcome.files.end(), whole.files.begin(), whole.files.end(),
                    [](const auto& file, const auto& other) { return file.first == other.first; });
}

/// A run that lost a line of its report did everything else as if nothing had happened.
bool IsUndisturbedButFor(Fault::Channel channel, const RulesOracle& oracle, Outcome outcome) {
  if (channel == Fault::Channel::StandardError) {
    const std::string& whole = oracle.undisturbed.err;
    if (outcome.err.size() > whole.size()) return false;
    outcome.err = whole;
  }
  if (channel == Fault::Channel::Log) {
    if (!LacksAtMostOneLine(outcome.log, oracle.undisturbed.log)) return false;
    outcome.log = oracle.undisturbed.log;
  }
  return outcome == oracle.undisturbed;
}

}  // namespace

std::optional<std::string> FindWrong(const Device& device, const Fault& fault, const RulesOracle& oracle,
                                     const Outcome& outcome) {
  if (outcome.timed_out) return "did not end";
  if (outcome.signal != 0) return "ended by signal " + std::to_string(outcome.signal);
  if (outcome.status != 0 && outcome.status != 1) return "status " + std::to_string(outcome.status);
  if (auto wrong = FindWrongReport(fault, outcome)) return wrong;
  if (auto breach = FindBreach(device.files, outcome.files, oracle.Trees(), false)) return breach;

  if (fault.kind == Fault::Kind::NoMemory) {  // more than one service may fail
    if (outcome.status == 1 || IsComplete(outcome, oracle.undisturbed)) return std::nullopt;
    return "success, though a step was not done:\n" + Difference(oracle.undisturbed, outcome);
  }
  switch (fault.duty) {
    case Fault::Duty::SameResult:
      if (!(outcome == oracle.undisturbed)) {
        return "the result has changed:\n" + Difference(oracle.undisturbed, outcome);
      }
      return std::nullopt;
    case Fault::Duty::Fail:
      if (outcome.status == 0) return "success, though a step was not done";
      break;
    case Fault::Duty::None:
      break;
  }
  if (fault.channel != Fault::Channel::None) {
    if (IsUndisturbedButFor(fault.channel, oracle, outcome)) return std::nullopt;
    return "more was lost than a line:\n" + Difference(oracle.undisturbed, outcome);
  }
  if (!oracle.Allows(outcome, fault.place)) {
    return "the rules give no such result; from the undisturbed one it differs so:\n" +
           Difference(oracle.undisturbed, outcome);
  }
  return std::nullopt;
}

}  // namespace lab::sweeps
