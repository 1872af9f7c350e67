// Makes each single system call of a migration fail in turn, in many ways, once and for good, and two of them
// in one run; limits what the program may have; blocks what it speaks to; and looks whether each run ends as
// it must.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "lab/runs/namespaces.h"
#include "lab/sweeps/earlier_run.h"
#include "lab/sweeps/fault_trials.h"
#include "lab/sweeps/limit_trials.h"
#include "lab/sweeps/obstruction_trials.h"
#include "lab/sweeps/pair_trials.h"
#include "lab/sweeps/rules_oracle.h"
#include "lab/sweeps/sweep_command.h"
#include "lab/sweeps/trial.h"
#include "lab/sweeps/verdict.h"

namespace lab::sweeps {
namespace {

constexpr const char* kDescription =
    "Disturbs a migration, each run in another way, and looks whether it ends as it must.\n\n"
    "Tried are: each system call of the program's main with the errors that file systems, full or broken "
    "storage, odd links, forbidding modes and a lack of memory or descriptors give there (the list stands in "
    "lab/sweeps/call_errors.cpp), with one of them from there on, and, of a write, taking nothing; each "
    "transfer cut short; memory refused from each request for it on; pairs of failed calls; and limits of "
    "file "
    "size, address space, data, descriptors and stack from nothing to plenty; and a log, a console and a "
    "lock "
    "that block.";

struct Request {
  Subject subject;
  std::size_t pairs = 600;
  std::size_t sample = 0;  // 0: all trials
  std::uint64_t seed = 1;
  std::vector<std::string> only;
  bool after_earlier_run = false;
};

void Append(std::vector<Trial> more, std::vector<Trial>& trials) {
  trials.insert(trials.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

std::vector<Trial> Choose(const Request& request, const std::vector<Trial>& trials) {
  if (!request.only.empty()) return Named(trials, request.only);
  return request.sample == 0 ? trials : Sample(trials, request.sample, request.seed);
}

std::string SubjectOf(const Request& request) {
  return request.subject.image + " --from " + std::to_string(request.subject.build_number) +
         (request.after_earlier_run ? " --after-earlier-run" : "");
}

void PrintFailure(const Trial& trial, const std::string& wrong, const Request& request,
                  const std::string& program) {
  std::printf("\nFAILED %s: %s\n  reproduce: %s %s --pairs %zu --seed %llu --only %s\n", trial.name.c_str(),
              wrong.c_str(), program.c_str(), SubjectOf(request).c_str(), request.pairs,
              static_cast<unsigned long long>(request.seed), trial.name.c_str());
  if (trial.command.empty()) return;
  std::printf("  which runs: %skelpwifiupdater --update-config %d\n", trial.command.c_str(),
              request.subject.build_number);
}

bool Sweep(const Request& request, const std::string& program) {
  const Programs programs = Programs::BesideThisOne();
  Device device = ReadDevice(request.subject.image, request.subject.build_number);
  if (request.after_earlier_run) device = WithLeftovers(WithOldDocuments(device, programs), programs);
  const std::vector<SystemCall> calls = RecordMigration(device, programs);
  const Measure measure = TakeMeasure(device, AskRules(device, programs, request.subject.workers), calls);

  std::vector<Trial> trials = FaultTrials(measure, programs, calls);
  Append(PairTrials(measure, programs, calls, request.pairs, request.seed), trials);
  Append(LimitTrials(measure, programs), trials);
  Append(ObstructionTrials(measure, programs), trials);
  const std::vector<Trial> chosen = Choose(request, trials);
  std::printf(
      "%s: %zu system calls from main on, %zu ways to disturb the run, %zu of them tried; undisturbed status "
      "%d, %zu outcomes by the rules when one service fails\n",
      SubjectOf(request).c_str(), calls.size() - FirstCallOfMain(calls), trials.size(), chosen.size(),
      measure.oracle.undisturbed.status, measure.oracle.with_failed_service.size());

  const std::vector<TrialResult> results = Make(chosen, request.subject.workers);
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    if (!results[i].is_well) PrintFailure(chosen[i], results[i].text, request, program);
  }
  return PrintCounts(chosen, results);
}

int SweepAsAsked(int argument_count, char* arguments[]) {
  Request request;
  CLI::App app(kDescription);
  AddSubject(app, request.subject);
  app.add_option("--pairs", request.pairs, "draw so many pairs of failed calls");
  app.add_option("--sample", request.sample, "try only so many ways, one of every kind among them");
  app.add_option("--seed", request.seed, "what the pairs and the sample are drawn with");
  app.add_option("--only", request.only, "try only this, named as in a report: read:12:EIO");
  app.add_flag("--after-earlier-run", request.after_earlier_run,
               "begin with old documents in place, and beside them what an interrupted run left");
  CLI11_PARSE(app, argument_count, arguments);
  EnterNamespaces();
  KeepTemporaryFilesToThisProcess();
  return Sweep(request, arguments[0]) ? 0 : 1;
}

}  // namespace
}  // namespace lab::sweeps

int main(int argument_count, char* arguments[]) {
  return lab::sweeps::RunCommand("faultsweep",
                                 [&] { return lab::sweeps::SweepAsAsked(argument_count, arguments); });
}
