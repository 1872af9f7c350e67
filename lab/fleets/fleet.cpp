#include "lab/fleets/fleet.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <ostream>
#include <stdexcept>

#include "lab/fleets/device_queue.h"
#include "lab/fleets/key_set.h"
#include "lab/fleets/progress.h"
#include "lab/fleets/record_file.h"
#include "lab/household/findings.h"
#include "lab/runs/pool.h"
#include "lab/text/utf8.h"

namespace lab::fleets {
namespace {

constexpr char kSuccess = '+';
constexpr char kFailure = '-';

class Fleet {
 public:
  Fleet(const FleetOptions& options, std::ostream& messages, bool is_terminal)
      : options_(options),
        messages_(messages),
        progress_(messages, is_terminal),
        file_(options.output),
        queue_(options.images, options.from, [this](const std::string& text) { Complain(text); }) {
    state_.total = queue_.Count();
  }

  bool Run() {
    const PoolTasks tasks =
        ToPoolTasks(queue_, [this](const DeviceSource& source) { return IsWanted(source); });
    const PoolCallbacks callbacks{
        // In a worker, where the first device makes what the next ones use as well.
        .work = [this](const std::string& task) { return Work(FromMessage(task)); },
        .on_result = [this](const std::string& result) { Deliver(result); },
        .on_failure = [this](
                          const std::string& task,
                          const std::string& reason) { Complain(FromMessage(task).image + ": " + reason); },
        .on_tick = [this] { Show(); },
    };
    const PoolStatus status = RunPool(tasks, options_.jobs, callbacks);
    progress_.End();
    if (status == PoolStatus::Interrupted) {
      Complain("interrupted; the records of " + std::to_string(state_.done + state_.done_before) +
               " devices are in " + options_.output.native() + ", and the same command goes on there");
    }
    return is_whole_;
  }

 private:
  /// The record's line after a mark: whether it counts as a failure.
  std::string Work(const DeviceSource& source) {
    if (!rehearsal_) rehearsal_ = std::make_unique<DeviceRehearsal>(options_.rehearsal);
    const Record record = rehearsal_->Rehearse(source);
    return (IsNamedIn(options_.fail_on, record) ? kFailure : kSuccess) + RecordLine(record);
  }

  bool IsWanted(const DeviceSource& source) {
    const std::string image = ValidUtf8(source.image);
    const std::string from = ValidUtf8(source.from);
    if (!seen_.Insert(KeyOf(image, from))) {
      if (state_.total) --*state_.total;
      Complain(image + " with build " + from + " comes again, and is left out: a device has one record");
      return false;
    }
    if (!file_.Has(image, from)) return true;
    ++state_.done_before;
    return false;
  }

  void Deliver(const std::string& result) {
    file_.Append(result.substr(1));
    ++state_.done;
    if (result.front() == kFailure) ++state_.failures;
  }

  void Complain(const std::string& text) {
    is_whole_ = false;
    progress_.End();
    messages_ << "devicelab: " << PrintableLine(text) << std::endl;
  }

  void Show() {
    state_.elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_);
    progress_.Show(state_);
  }

  const FleetOptions& options_;
  std::ostream& messages_;
  Progress progress_;
  RecordFile file_;
  DeviceQueue queue_;
  KeySet seen_;
  ProgressState state_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  bool is_whole_ = true;
  std::unique_ptr<DeviceRehearsal> rehearsal_;  // in a worker
};

}  // namespace

void RequireKnown(const std::set<std::string>& fail_on) {
  for (const std::string& name : fail_on) {
    if (!OutcomeNamed(name) && FindFindingKind(name) == nullptr) {
      throw std::invalid_argument("neither an outcome nor a finding is called " + name);
    }
  }
}

bool RehearseFleet(const FleetOptions& options, std::ostream& messages, bool is_terminal) {
  RequireOverlays(options.rehearsal);
  return Fleet(options, messages, is_terminal).Run();
}

bool IsNamedIn(const std::set<std::string>& names, const Record& record) {
  return names.contains(std::string(OutcomeName(record.outcome))) ||
         std::ranges::any_of(record.findings, [&](const std::string& id) { return names.contains(id); });
}

}  // namespace lab::fleets
