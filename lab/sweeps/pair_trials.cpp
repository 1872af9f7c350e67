#include "lab/sweeps/pair_trials.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "lab/sweeps/fault_plan.h"
#include "lab/sweeps/met_faults.h"

namespace lab::sweeps {
namespace {

struct Pair {
  Fault first;
  Fault second;
};

bool IsOneError(const Fault& fault) {
  return fault.kind == Fault::Kind::Error && !fault.lasting;
}

std::vector<Fault> OneErrors(const std::vector<Fault>& faults) {
  std::vector<Fault> errors;
  std::copy_if(faults.begin(), faults.end(), std::back_inserter(errors), IsOneError);
  return errors;
}

/// strace lets calls of one name fail in one way only.
bool CanBePaired(const Fault& first, const Fault& second) {
  return first.call != second.call || first.error == second.error;
}

/// The options that let both happen.
std::vector<std::string> InjectionOf(const Pair& pair) {
  const auto& [first, second] = pair;
  if (first.call == second.call) {
    const int distance = second.ordinal - first.ordinal;
    return {"-e", "inject=" + first.call + ":error=" + first.error +
                      ":when=" + std::to_string(first.ordinal) + ".." + std::to_string(second.ordinal) + "+" +
                      std::to_string(distance)};
  }
  std::vector<std::string> options = InjectionOf(first);
  for (const std::string& word : InjectionOf(second)) options.push_back(word);
  return options;
}

std::size_t PlaceBehind(const Fault& fault, const std::vector<SystemCall>& calls) {
  const auto met = std::find_if(calls.begin(), calls.end(), [&](const SystemCall& call) {
    return call.name == fault.call && call.ordinal == fault.ordinal;
  });
  return static_cast<std::size_t>(met - calls.begin()) + (met == calls.end() ? 0 : 1);
}

/// Whether a failed removal of the name that a document is written under may have left it.
bool FailsToClear(const Fault& fault) {
  return fault.call.starts_with("unlink") && fault.duty == Fault::Duty::Fail;
}

std::optional<std::string> FindWrong(const Measure& measure, const Pair& pair, const Outcome& outcome) {
  const auto& [first, second] = pair;
  LostLines lost = LinesLostBy(first);
  lost.log |= LinesLostBy(second).log;
  lost.standard_error |= LinesLostBy(second).standard_error;
  if (auto wrong = FindWrongEnd(measure, lost, outcome, FailsToClear(second))) return wrong;
  if (lost.log && lost.standard_error) return std::nullopt;
  if (first.duty == Fault::Duty::Fail) return FindWrongFailure(measure, first, outcome);
  if (second.duty == Fault::Duty::Fail) return FindWrongFailure(measure, second, outcome);
  return std::nullopt;
}

class Drawing {
 public:
  Drawing(const Measure& measure, const Programs& programs, std::uint64_t seed)
      : measure_(measure), programs_(programs), random_(seed) {}

  TrialResult Try(const std::vector<SystemCall>& calls) {
    const std::vector<Fault> firsts = OneErrors(PlanFaults(calls, FirstCallOfMain(calls)));
    const Fault first = firsts.at(random_() % firsts.size());
    const std::vector<SystemCall> disturbed = RecordMigration(measure_.device, programs_, InjectionOf(first));
    if (!IsMet(first, disturbed)) return Wrong(NameOf(first) + ": the run did not come to this call");
    std::vector<Fault> seconds = OneErrors(PlanFaults(disturbed, PlaceBehind(first, disturbed)));
    std::erase_if(seconds, [&](const Fault& second) { return !CanBePaired(first, second); });
    if (seconds.empty()) return {true, "with nothing behind the first"};
    return Try({first, seconds.at(random_() % seconds.size())});
  }

 private:
  TrialResult Try(const Pair& pair) const {
    const auto& [first, second] = pair;
    Manner manner;
    manner.wrapper = {programs_.strace, "-f", "-qq", "-xx", "-s", "4096", "--seccomp-bpf"};
    const std::string traced = first.call == second.call ? first.call : first.call + "," + second.call;
    manner.wrapper.insert(manner.wrapper.end(), {"-e", "trace=" + traced, "-o", kRecord});
    for (const std::string& option : InjectionOf(pair)) manner.wrapper.push_back(option);
    const MigrationRun run = Migrate(measure_.device, programs_.migration, manner);
    const std::string name = NameOf(first) + ", then " + NameOf(second) + ": ";
    if (const auto wrong = FindWrong(measure_, pair, run.outcome)) return Wrong(name + *wrong);
    const bool are_met = IsMet(first, run) && IsMet(second, run);
    return are_met ? Well() : Wrong(name + "the run did not come to both calls");
  }

  const Measure& measure_;
  const Programs& programs_;
  std::mt19937_64 random_;
};

}  // namespace

std::vector<Trial> PairTrials(const Measure& measure, const Programs& programs,
                              const std::vector<SystemCall>& calls, std::size_t count, std::uint64_t seed) {
  std::vector<Trial> trials;
  std::mt19937_64 seeds(seed);
  for (std::size_t i = 1; i <= count; ++i) {
    trials.push_back(
        {"pair:" + std::to_string(i), "pair", "", [own_seed = seeds(), &measure, &programs, &calls] {
           return Drawing(measure, programs, own_seed).Try(calls);
         }});
  }
  return trials;
}

}  // namespace lab::sweeps
