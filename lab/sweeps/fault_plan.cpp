#include "lab/sweeps/fault_plan.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "lab/sweeps/call_errors.h"
#include "lab/sweeps/descriptor_table.h"
#include "lab/sweeps/documents.h"
#include "lab/sweeps/fault_rules.h"
#include "lab/sweeps/migration_steps.h"

namespace lab::sweeps {
namespace {

bool IsTransfer(const std::string& name) {
  static const std::set<std::string_view> transfers{"read", "write", "pread64", "pwrite64"};
  return transfers.contains(name);
}

bool IsLogCall(const SystemCall& call, const OpenedFile* used) {
  return call.name == "socket" || call.name == "connect" || call.name.starts_with("send") ||
         (used != nullptr && used->is_socket);
}

Fault::Channel ChannelOf(const SystemCall& call, const OpenedFile* used) {
  if (IsLogCall(call, used)) return Fault::Channel::Log;
  const bool is_report = call.name == "write" && call.arguments.at(0) == "2";
  return is_report ? Fault::Channel::StandardError : Fault::Channel::None;
}

/// The services know a document, not the name that it is written under, and the kernel's entries as one.
std::string AsServicesName(std::string path) {
  constexpr std::string_view kKernelEntries = "/proc/sys/kernel/kelp_mac_address";
  if (path.starts_with(kKernelEntries)) path.resize(kKernelEntries.size());
  return IsTemporaryName(path) ? DocumentOf(path) : path;
}

/// The paths that a call is about: a rename's are two.
std::pair<std::string, std::string> PathsOf(const SystemCall& call, const OpenedFile* opened,
                                            const OpenedFile* used, const DescriptorTable& descriptors) {
  static const std::set<std::string_view> by_path{"access", "lstat", "mkdir", "readlink",
                                                  "rename", "rmdir", "stat",  "unlink"};
  static const std::set<std::string_view> by_path_in_folder{
      "faccessat2", "mkdirat", "newfstatat", "readlinkat", "renameat", "renameat2", "statx", "unlinkat"};
  if (opened != nullptr) return {opened->path, {}};
  if (used != nullptr) return {used->path, {}};
  if (call.name == "rename") {
    return {descriptors.PathAt(call, 0, std::nullopt), descriptors.PathAt(call, 1, std::nullopt)};
  }
  if (call.name.starts_with("rename"))
    return {descriptors.PathAt(call, 1, 0), descriptors.PathAt(call, 3, 2)};
  if (by_path.contains(call.name)) return {descriptors.PathAt(call, 0, std::nullopt), {}};
  if (by_path_in_folder.contains(call.name)) return {descriptors.PathAt(call, 1, 0), {}};
  return {};
}

CallSubject SubjectFor(std::string path, const OpenedFile* opened, const OpenedFile* used) {
  CallSubject subject;
  subject.path = std::move(path);
  subject.opens_new = opened != nullptr && opened->IsNew();
  subject.opens_folder = opened != nullptr && opened->IsDirectory();
  subject.uses_new = used != nullptr && used->IsNew();
  subject.uses_folder = used != nullptr && used->IsDirectory();
  return subject;
}

bool MovesBreak(const SystemCall& call) {
  return call.name == "brk" && call.arguments.at(0) != "NULL";
}

bool AsksForMemory(const SystemCall& call) {
  return MovesBreak(call) || call.name == "mmap" || call.name == "mremap";
}

/// What is the same in all faults of a call.
struct Target {
  const SystemCall& call;
  const CallSubject& subject;
  Fault fault;
};

void Add(const Target& target, std::vector<Fault>& faults) {
  const bool is_of_report = target.fault.channel != Fault::Channel::None;
  faults.push_back(target.fault);
  Fault& fault = faults.back();
  FaultRule rule = is_of_report ? FaultRule{} : RuleFor(target.call, target.subject, fault.error);
  fault.duty = rule.duty;
  fault.reason = std::move(rule.reason);
}

/// Each error once, and one of them, another at each call, from there on.
void AddErrors(Target target, bool creates, std::vector<Fault>& faults) {
  std::vector<std::string_view> errors = ErrorsOf(target.call.name);
  if (creates) errors.insert(errors.end(), ErrorsOfCreation().begin(), ErrorsOfCreation().end());
  for (const std::string_view error : errors) {
    target.fault.error = error;
    Add(target, faults);
  }
  // No kernel interrupts a program for ever.
  std::erase_if(errors, IsInterruption);
  if (errors.empty()) return;
  target.fault.error = errors[static_cast<std::size_t>(target.call.ordinal) % errors.size()];
  target.fault.lasting = true;
  Add(target, faults);
  if (faults.back().duty == Fault::Duty::SameResult) faults.back().duty = Fault::Duty::None;
}

/// A write that takes nothing may be tried again, but not for ever.
void AddNothing(Target target, std::vector<Fault>& faults) {
  if (target.call.name != "write" && target.call.name != "pwrite64") return;
  target.fault.kind = Fault::Kind::Nothing;
  Add(target, faults);
  if (faults.back().duty == Fault::Duty::Fail) faults.back().duty = Fault::Duty::None;
  target.fault.lasting = true;
  Add(target, faults);
}

void AddShortTransfers(Fault fault, std::int64_t whole, std::vector<Fault>& faults) {
  fault.kind = Fault::Kind::ShortTransfer;
  fault.duty = Fault::Duty::SameResult;
  for (const std::int64_t bytes : std::set<std::int64_t>{1, whole / 2}) {
    if (bytes < 1 || bytes >= whole) continue;
    fault.bytes = static_cast<std::size_t>(bytes);
    faults.push_back(fault);
  }
}

std::vector<Fault> FaultsOf(const SystemCall& call, const DescriptorTable& descriptors,
                            std::size_t steps_before) {
  const std::optional<OpenedFile> opened = descriptors.OpenedBy(call);
  const OpenedFile* const opens = opened ? &*opened : nullptr;
  const OpenedFile* const used = descriptors.UsedBy(call);
  const CallSubject subject = SubjectFor(PathsOf(call, opens, used, descriptors).first, opens, used);

  Fault fault;
  fault.call = call.name;
  fault.ordinal = call.ordinal;
  fault.subject = SubjectOf(call);
  fault.place = AsServicesName(subject.path);
  fault.channel = ChannelOf(call, used);
  fault.steps_before = steps_before;

  std::vector<Fault> faults;
  AddErrors({call, subject, fault}, opened && opened->IsCreated(), faults);
  AddNothing({call, subject, fault}, faults);
  if (IsTransfer(call.name)) AddShortTransfers(fault, call.result, faults);
  if (MovesBreak(call)) {  // a break that stays where it was is how the kernel refuses memory
    fault.kind = Fault::Kind::ShortTransfer;
    faults.push_back(fault);
  }
  return faults;
}

bool MakesStep(const SystemCall& call, const DescriptorTable& descriptors) {
  const bool may_be_one =
      call.name.starts_with("rename") || call.name.starts_with("mkdir") || call.name.starts_with("unlink");
  if (!may_be_one) return false;
  const auto [path, target] = PathsOf(call, nullptr, nullptr, descriptors);
  return StepMadeBy(call, path, target).has_value();
}

/// Every transfer moves a few bytes, from the first call on. (One by one, under a tracer, the boot
/// environment's 16 KiB would take the time that the program gives it.)
Fault Trickle(std::size_t first) {
  Fault fault;
  fault.kind = Fault::Kind::ShortTransfers;
  fault.call = "all";
  fault.ordinal = static_cast<int>(first) + 1;
  fault.bytes = 61;
  fault.duty = Fault::Duty::SameResult;
  return fault;
}

/// No more memory, from the call at `place` on.
Fault NoMemoryFrom(std::size_t place) {
  Fault fault;
  fault.kind = Fault::Kind::NoMemory;
  fault.call = "memory";
  fault.error = "refused";
  fault.ordinal = static_cast<int>(place) + 1;
  return fault;
}

}  // namespace

std::vector<Fault> PlanFaults(const std::vector<SystemCall>& calls, std::size_t first) {
  std::vector<Fault> faults;
  DescriptorTable descriptors;
  std::size_t steps = 0;
  for (std::size_t i = 0; i < calls.size(); ++i) {
    if (i >= first) {
      std::vector<Fault> more = FaultsOf(calls[i], descriptors, steps);
      faults.insert(faults.end(), more.begin(), more.end());
      if (AsksForMemory(calls[i])) faults.push_back(NoMemoryFrom(i));
    }
    if (MakesStep(calls[i], descriptors)) ++steps;
    descriptors.Follow(calls[i]);
  }
  faults.push_back(Trickle(first));
  return faults;
}

}  // namespace lab::sweeps
