// Cuts the power at every instant of a migration and looks what the device is left with, and what the program
// makes of that when it runs again. First the gentle way, a kill before and after every system call; then by
// a model of what a file system may show after a power cut. Then asks of every flush what it is good for.
// Or, on each state of that model, lets the script run by which a firmware calls the program at the next
// boot.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "lab/runs/namespaces.h"
#include "lab/runs/pool.h"
#include "lab/sweeps/choices.h"
#include "lab/sweeps/earlier_run.h"
#include "lab/sweeps/next_boot.h"
#include "lab/sweeps/outcome_text.h"
#include "lab/sweeps/power_cut_rules.h"
#include "lab/sweeps/sample.h"
#include "lab/sweeps/storage_model.h"
#include "lab/sweeps/sweep_command.h"

namespace lab::sweeps {
namespace {

struct Request {
  Subject subject;
  bool old_documents = false;
  std::string program;  // the one beside the sweep where it is empty
  std::string then;     // the script of the next boot; empty for the bare program
  bool after_interrupted_run = false;
  std::size_t endings = 0;  // 0: all
  ChoiceLimits limits;
};

std::string OptionsOf(const Request& request) {
  return std::string(request.old_documents ? " --old-documents" : "") +
         (request.after_interrupted_run ? " --after-interrupted-run" : "");
}

/// What may come out of the model: a place in the run's operations and a choice.
struct ModelState {
  std::size_t operations;
  std::vector<unsigned> digits;
};

class Sweep {
 public:
  Sweep(Request request, Device device)
      : request_(std::move(request)),
        programs_(Programs::BesideThisOne(request_.program)),
        device_(std::move(device)),
        undisturbed_(Migrate(device_, programs_.migration).outcome),
        calls_(RecordMigration(device_, programs_)),
        operations_(ExtractFileOperations(calls_)),
        rules_(device_, undisturbed_, operations_) {
    if (!request_.then.empty()) next_boot_.emplace(request_.then, device_, programs_, undisturbed_);
  }

  bool Run() {
    std::printf("%s --from %d%s: %zu system calls from main on, %zu of them change files\n",
                request_.subject.image.c_str(), request_.subject.build_number, OptionsOf(request_).c_str(),
                calls_.size() - FirstCallOfMain(calls_), operations_.size());
    if (!next_boot_) KillEverywhere();
    CutPowerEverywhere();
    if (!next_boot_) QuestionFlushes();
    std::printf("%zu failed\n", failed_);
    return failed_ == 0;
  }

 private:
  void Fail(const std::string& where, const std::string& wrong) {
    ++failed_;
    std::printf("\nFAILED %s: %s\n", where.c_str(), wrong.c_str());
  }

  /// Lets the program run again on a device that was left so, and gives what is wrong with that.
  std::string RunAgain(const Tree& state) const {
    if (next_boot_) return next_boot_->FindWrong(state).value_or("");
    const Device left{state, device_.build_number};
    return rules_.FindWrongRun(state, Migrate(left, programs_.migration).outcome).value_or("");
  }

  /// The orders to the helper that end the program at each of its calls; a sample of them if that is asked
  /// for.
  std::vector<std::vector<std::string>> Endings() const {
    std::vector<std::vector<std::string>> orders;
    for (std::size_t index = FirstCallOfMain(calls_); index < calls_.size(); ++index) {
      const std::string place = std::to_string(index + 1);
      orders.push_back({"kill-before", place});
      orders.push_back({"kill-after", place});
      for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
        orders.push_back({"signal", place, std::to_string(signal)});
      }
    }
    if (request_.endings == 0) return orders;
    std::vector<std::string> kinds;
    for (const std::vector<std::string>& order : orders) kinds.push_back(order.front());
    std::vector<std::vector<std::string>> sample;
    for (const std::size_t place : DrawSample(kinds, request_.endings, request_.limits.seed)) {
      sample.push_back(orders[place]);
    }
    return sample;
  }

  void KillEverywhere() {
    const std::vector<std::vector<std::string>> kills = Endings();
    const std::vector<std::string> outcomes =
        ParallelMap(kills.size(), request_.subject.workers, [&](std::size_t place) {
          Manner manner;
          manner.wrapper = {kTamper};
          manner.wrapper.insert(manner.wrapper.end(), kills[place].begin(), kills[place].end());
          manner.helpers = {{kTamper, programs_.tamper}};
          return ToText(Migrate(device_, programs_.migration, manner).outcome);
        });

    std::vector<Tree> states;
    std::set<std::string> known;
    for (std::size_t i = 0; i < kills.size(); ++i) {
      Outcome outcome = FromText(outcomes[i]);
      std::string where;
      for (const std::string& word : kills[i]) where += word + " ";
      const bool may_end = kills[i].at(1) == std::to_string(calls_.size());  // nothing comes behind the last
      if (outcome.signal == 0 && !may_end) Fail(where, "was not killed");
      if (const auto wrong = rules_.FindWrongState(outcome.files)) Fail(where, *wrong);
      Outcome state;
      state.files = std::move(outcome.files);
      if (known.insert(ToText(state)).second) states.push_back(std::move(state.files));
    }
    const std::vector<std::string> wrong = ParallelMap(
        states.size(), request_.subject.workers, [&](std::size_t place) { return RunAgain(states[place]); });
    for (const std::string& text : wrong) {
      if (!text.empty()) Fail("run after a kill", text);
    }
    std::printf(
        "killed before and after%s system calls, and ended there by SIGTERM, SIGHUP and SIGINT: %zu runs, "
        "%zu different states, the program run again on each\n",
        request_.endings == 0 ? " all" : "", kills.size(), states.size());
  }

  StorageModel ModelAfter(std::size_t operations) const {
    StorageModel model(device_.files);
    for (std::size_t i = 0; i < operations; ++i) model.Apply(operations_[i]);
    return model;
  }

  std::string Describe(const ModelState& state) const {
    std::string text = "power cut after operation " + std::to_string(state.operations) + " of " +
                       std::to_string(operations_.size()) + ", choice ";
    for (const unsigned digit : state.digits) text += std::to_string(digit);
    return text;
  }

  void CutPowerEverywhere() {
    std::vector<ModelState> states;
    std::set<std::string> known;
    std::size_t visited = 0;
    StorageModel model(device_.files);
    for (std::size_t done = 0; done <= operations_.size(); ++done) {
      if (done > 0) model.Apply(operations_[done - 1]);
      ForEachChoice(model.Radixes(), request_.limits, [&](const std::vector<unsigned>& digits) {
        ++visited;
        if (known.insert(model.KeyOf(digits)).second) states.push_back({done, digits});
        return true;
      });
    }
    const std::vector<std::string> wrong =
        ParallelMap(states.size(), request_.subject.workers, [&](std::size_t place) {
          const Tree state = ModelAfter(states[place].operations).StateOf(states[place].digits);
          if (auto breach = rules_.FindWrongState(state)) return *breach;
          return RunAgain(state);
        });
    for (std::size_t i = 0; i < states.size(); ++i) {
      if (!wrong[i].empty()) Fail(Describe(states[i]), wrong[i]);
    }
    std::printf(
        "power cut after each of %zu file operations: %zu states, %zu different ones checked, "
        "%s run again on each\n",
        operations_.size(), visited, states.size(), next_boot_ ? request_.then.c_str() : "the program");
  }

  /// What can go wrong without the flush at `place`; empty when nothing can.
  std::string WithoutFlush(std::size_t place) const {
    StorageModel model(device_.files);
    std::string harm;
    for (std::size_t i = 0; i < operations_.size() && harm.empty(); ++i) {
      if (i == place) continue;
      model.Apply(operations_[i]);
      ForEachChoice(model.Radixes(), request_.limits, [&](const std::vector<unsigned>& digits) {
        harm = rules_.FindWrongState(model.StateOf(digits)).value_or("");
        return harm.empty();
      });
    }
    return harm;
  }

  void QuestionFlushes() {
    std::vector<std::size_t> flushes;
    for (std::size_t i = 0; i < operations_.size(); ++i) {
      if (operations_[i].IsFlush()) flushes.push_back(i);
    }
    const std::vector<std::string> harms = ParallelMap(
        flushes.size(), request_.subject.workers, [&](std::size_t i) { return WithoutFlush(flushes[i]); });
    std::printf("%zu flushes; without each of them a power cut could do harm:\n", flushes.size());
    for (std::size_t i = 0; i < flushes.size(); ++i) {
      const FileOperation& flush = operations_[flushes[i]];
      std::printf("  %2zu. %s %s: %s\n", i + 1,
                  flush.kind == FileOperation::Kind::FlushFile ? "file" : "folder", flush.path.c_str(),
                  harms[i].empty() ? "none" : harms[i].c_str());
      if (harms[i].empty()) Fail("flush " + std::to_string(i + 1), "nothing needs it");
    }
  }

  Request request_;
  Programs programs_;
  Device device_;
  Outcome undisturbed_;
  std::vector<SystemCall> calls_;
  std::vector<FileOperation> operations_;
  PowerCutRules rules_;
  std::optional<NextBoot> next_boot_;
  std::size_t failed_ = 0;
};

int SweepAsAsked(int argument_count, char* arguments[]) {
  Request request;
  CLI::App app("Cuts the power at every instant of a migration.");
  AddSubject(app, request.subject);
  app.add_option("--all-up-to", request.limits.all_up_to,
                 "so many states after one operation are all checked");
  app.add_option("--sample", request.limits.sample, "of more, so many are");
  app.add_option("--seed", request.limits.seed, "what the sample is drawn with");
  app.add_option("--program", request.program, "the program, if not the one beside the sweep");
  app.add_option("--then", request.then,
                 "on each state this script of the next boot runs, not the bare program")
      ->check(CLI::ExistingFile);
  app.add_option("--endings", request.endings, "kill the program, or end it by a signal, only so many times");
  app.add_flag("--old-documents", request.old_documents, "begin with documents of an earlier time in place");
  app.add_flag(
      "--after-interrupted-run", request.after_interrupted_run,
      "begin with what an interrupted run left: half documents under their temporary names, an archive");
  CLI11_PARSE(app, argument_count, arguments);
  EnterNamespaces();
  KeepTemporaryFilesToThisProcess();
  Device device = ReadDevice(request.subject.image, request.subject.build_number);
  const Programs programs = Programs::BesideThisOne(request.program);
  if (request.old_documents) device = WithOldDocuments(device, programs);
  if (request.after_interrupted_run) device = WithLeftovers(device, programs);
  return Sweep(request, std::move(device)).Run() ? 0 : 1;
}

}  // namespace
}  // namespace lab::sweeps

int main(int argument_count, char* arguments[]) {
  return lab::sweeps::RunCommand("powercutsweep",
                                 [&] { return lab::sweeps::SweepAsAsked(argument_count, arguments); });
}
