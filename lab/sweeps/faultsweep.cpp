// Makes each single system call of a migration fail in turn, in each way in which the kernel can let it fail,
// and looks whether the run still ends as it must.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "lab/images/namespaces.h"
#include "lab/sweeps/earlier_run.h"
#include "lab/sweeps/fault_plan.h"
#include "lab/sweeps/rules_oracle.h"
#include "lab/sweeps/sweep_command.h"
#include "lab/sweeps/verdict.h"
#include "lab/sweeps/workers.h"

namespace lab::sweeps {
namespace {

struct Request {
  Subject subject;
  std::size_t sample = 0;  // 0: all faults
  std::uint64_t seed = 1;
  std::vector<std::string> only;
  bool after_earlier_run = false;
};

std::vector<Fault> Choose(const Request& request, const std::vector<Fault>& planned) {
  if (request.only.empty()) {
    return request.sample == 0 ? planned : Sample(planned, request.sample, request.seed);
  }
  std::vector<Fault> chosen;
  for (const Fault& fault : planned) {
    const auto named = std::find(request.only.begin(), request.only.end(), NameOf(fault));
    if (named != request.only.end()) chosen.push_back(fault);
  }
  if (chosen.size() != request.only.size()) throw std::runtime_error("the run has no such fault");
  return chosen;
}

/// Whether the fault happened, and to the call that was meant. Of errors strace's record tells; a tamperer
/// that had nothing to do ends with a status that no run may have.
bool WasMet(const Fault& fault, const MigrationRun& run) {
  if (!IsOfStrace(fault)) return true;
  const auto record = run.scratch.find(kRecord);
  if (record == run.scratch.end()) return false;
  const std::vector<SystemCall> calls = ParseRecord(record->second.content);
  return std::any_of(calls.begin(), calls.end(), [&](const SystemCall& call) {
    return call.injected && call.ordinal == fault.ordinal && SubjectOf(call) == fault.subject;
  });
}

/// Gives what went wrong in words; nothing when the run ended well.
std::string Try(const Fault& fault, const Measure& measure, const Programs& programs) {
  Manner manner;
  manner.wrapper = WrapperOf(fault, programs.strace, kTamper, kRecord);
  manner.needs_tamper = !IsOfStrace(fault);
  const MigrationRun run = Migrate(measure.device, programs.migration, programs.tamper, manner);
  if (!WasMet(fault, run)) return "the run did not come to this call";
  return FindWrong(measure, fault, run.outcome).value_or("");
}

std::string Command(const Fault& fault) {
  std::string command;
  for (const std::string& word : WrapperOf(fault, "strace", "tamper", "record")) command += word + " ";
  return command + "kelpwifiupdater";
}

void PrintFailure(const Fault& fault, const std::string& wrong, const Request& request,
                  const std::string& program) {
  std::printf(
      "\nFAILED %s: %s\n  reproduce: %s %s --from %d%s --only %s\n  which runs: %s --update-config %d\n",
      NameOf(fault).c_str(), wrong.c_str(), program.c_str(), request.subject.image.c_str(),
      request.subject.build_number, request.after_earlier_run ? " --after-earlier-run" : "",
      NameOf(fault).c_str(), Command(fault).c_str(), request.subject.build_number);
}

bool Sweep(const Request& request, const std::string& program) {
  const Programs programs = Programs::BesideThisOne();
  Device device = ReadDevice(request.subject.image, request.subject.build_number);
  if (request.after_earlier_run) device = WithLeftovers(WithOldDocuments(device, programs), programs);
  const std::vector<SystemCall> calls = RecordMigration(device, programs);
  const Measure measure = TakeMeasure(device, AskRules(device, programs, request.subject.workers), calls);
  const std::size_t first = FirstCallOfMain(calls);
  const std::vector<Fault> planned = PlanFaults(calls, first);
  const std::vector<Fault> faults = Choose(request, planned);
  std::printf(
      "%s --from %d%s: %zu system calls from main on, %zu ways in which one of them can fail, %zu of them "
      "tried; "
      "undisturbed status %d, %zu outcomes by the rules when one service fails\n",
      request.subject.image.c_str(), request.subject.build_number,
      request.after_earlier_run ? " --after-earlier-run" : "", calls.size() - first, planned.size(),
      faults.size(), measure.oracle.undisturbed.status, measure.oracle.with_failed_service.size());

  const std::vector<std::string> results =
      DoInWorkers(faults.size(), request.subject.workers,
                  [&](std::size_t place) { return Try(faults[place], measure, programs); });

  std::map<std::string, std::pair<std::size_t, std::size_t>> kinds;  // tried, ended well
  std::size_t well = 0;
  for (std::size_t i = 0; i < faults.size(); ++i) {
    // cppcheck-suppress variableScope ; a structured binding has but one scope
    auto& [tried, ended_well] = kinds[KindOf(faults[i])];
    ++tried;
    if (results[i].empty()) {
      ++ended_well;
      ++well;
    } else {
      PrintFailure(faults[i], results[i], request, program);
    }
  }
  for (const auto& [kind, counts] : kinds) {
    std::printf("  %-24s %5zu tried %5zu ended well\n", kind.c_str(), counts.first, counts.second);
  }
  std::printf("%zu faults tried, %zu ended well\n", faults.size(), well);
  return well == faults.size();
}

int SweepAsAsked(int argument_count, char* arguments[]) {
  Request request;
  CLI::App app("Lets each system call of a migration fail in turn, in every way in which it can.");
  AddSubject(app, request.subject);
  app.add_option("--sample", request.sample, "try only so many faults, one of every kind among them");
  app.add_option("--seed", request.seed, "what the sample is drawn with");
  app.add_option("--only", request.only, "try only this fault, named as in a report: read:12:EIO");
  app.add_flag("--after-earlier-run", request.after_earlier_run,
               "begin with old documents in place, and beside them what an interrupted run left");
  CLI11_PARSE(app, argument_count, arguments);
  EnterNamespaces();
  return Sweep(request, arguments[0]) ? 0 : 1;
}

}  // namespace
}  // namespace lab::sweeps

int main(int argument_count, char* arguments[]) {
  return lab::sweeps::RunCommand("faultsweep",
                                 [&] { return lab::sweeps::SweepAsAsked(argument_count, arguments); });
}
