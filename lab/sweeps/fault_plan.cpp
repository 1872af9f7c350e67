#include "lab/sweeps/fault_plan.h"

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <string_view>

#include "lab/sweeps/descriptor_table.h"
#include "lab/sweeps/documents.h"

namespace lab::sweeps {
namespace {

using Errors = std::vector<const char*>;

constexpr std::string_view kInterrupted = "EINTR";

/// What the kernel can answer; none for calls that cannot fail.
const std::map<std::string_view, Errors>& ErrorsOfCalls() {
  static const std::map<std::string_view, Errors> errors{
      {"access", {"EACCES", "EIO", "ENOMEM"}},
      {"brk", {}},  // has no error: a refused growth leaves the break where it was
      {"clock_gettime", {}},
      {"close", {"EIO", "EINTR"}},
      {"connect", {"ECONNREFUSED", "EACCES", "ENOENT"}},
      {"exit_group", {}},
      {"faccessat2", {"EACCES", "EIO", "ENOMEM"}},
      {"fchmod", {"EIO", "EROFS", "EPERM"}},
      {"fcntl", {"ENOLCK", "EINTR"}},
      {"fdatasync", {"EIO", "ENOSPC", "EINTR"}},
      {"flock", {"ENOLCK", "EINTR"}},
      {"fstat", {"EIO", "ENOMEM"}},
      {"fsync", {"EIO", "ENOSPC", "EINTR"}},
      {"futex", {}},  // nobody is waiting: nothing is waited for
      {"getpid", {}},
      {"getrandom", {"ENOSYS", "EAGAIN", "EINTR"}},
      {"gettid", {}},
      {"ioctl", {"ENOTTY", "EIO"}},
      {"lseek", {"EINVAL", "EIO"}},
      {"lstat", {"EACCES", "EIO", "ENOMEM"}},
      {"madvise", {"ENOMEM"}},
      {"mkdir", {"EACCES", "EIO", "EROFS", "ENOSPC"}},
      {"mkdirat", {"EACCES", "EIO", "EROFS", "ENOSPC"}},
      {"mmap", {"ENOMEM"}},
      {"mprotect", {"ENOMEM"}},
      {"mremap", {"ENOMEM"}},
      {"munmap", {"ENOMEM"}},
      {"newfstatat", {"EACCES", "EIO", "ENOMEM"}},
      {"open", {"EACCES", "EMFILE", "ENFILE", "EIO", "ENOMEM", "EINTR"}},
      {"openat", {"EACCES", "EMFILE", "ENFILE", "EIO", "ENOMEM", "EINTR"}},
      {"poll", {"ENOMEM", "EINTR"}},
      {"ppoll", {"ENOMEM", "EINTR"}},
      {"pread64", {"EIO", "EINTR"}},
      {"pwrite64", {"ENOSPC", "EIO", "EINTR"}},
      {"read", {"EIO", "EINTR"}},
      {"readlink", {"EACCES", "EIO", "ENOMEM"}},
      {"readlinkat", {"EACCES", "EIO", "ENOMEM"}},
      {"rename", {"EXDEV", "EIO", "EROFS", "ENOSPC"}},
      {"renameat", {"EXDEV", "EIO", "EROFS", "ENOSPC"}},
      {"renameat2", {"EXDEV", "EIO", "EROFS", "ENOSPC"}},
      {"rmdir", {"EACCES", "EIO", "EROFS"}},
      {"rt_sigaction", {"EINVAL"}},
      {"rt_sigprocmask", {"EINVAL"}},
      {"sendto", {"ECONNREFUSED", "ENOBUFS", "EINTR"}},
      {"setsockopt", {"ENOBUFS", "ENOMEM"}},
      {"socket", {"EMFILE", "ENFILE", "ENOBUFS"}},
      {"stat", {"EACCES", "EIO", "ENOMEM"}},
      {"statx", {"EACCES", "EIO", "ENOMEM"}},
      {"sysinfo", {}},
      {"timer_create", {"EAGAIN", "ENOMEM"}},
      {"timer_delete", {"EINVAL"}},
      {"timer_settime", {"EINVAL"}},
      {"umask", {}},
      {"uname", {}},
      {"unlink", {"EACCES", "EIO", "EROFS"}},
      {"unlinkat", {"EACCES", "EIO", "EROFS"}},
      {"write", {"ENOSPC", "EIO", "EINTR"}},
  };
  return errors;
}

bool IsTransfer(const std::string& name) {
  static const std::set<std::string_view> transfers{"read", "write", "pread64", "pwrite64"};
  return transfers.contains(name);
}

bool ChangesStorage(const std::string& name) {
  static const std::set<std::string_view> names{"fsync",     "fdatasync", "fchmod",  "rename", "renameat",
                                                "renameat2", "mkdir",     "mkdirat", "unlink", "unlinkat"};
  return names.contains(name);
}

/// A file without whose content there can be no migration; all others are read forgivingly.
bool IsStrictInput(const std::string& path) {
  static const std::set<std::string_view> files{
      "/usr/kelp/etc/wifi/model.json", "/usr/kelp/etc/wifi/country.json", "/usr/kelp/etc/wifi/backhaul.json"};
  return files.contains(path) || path.starts_with("/proc/sys/kernel/kelp_mac_address");
}

/// Of a call that succeeded in the recorded run: may the migration be reported as done without it?
bool IsStepOfMigration(const SystemCall& call, const OpenedFile* opened, const OpenedFile* used) {
  if (!call.error.empty()) return false;  // a test for what is not there
  if (ChangesStorage(call.name)) return true;
  if (opened != nullptr) return opened->IsNew() || opened->IsDirectory() || IsStrictInput(opened->path);
  if (used == nullptr) return false;
  if (call.name == "read") return IsStrictInput(used->path);
  return (call.name == "write" || call.name == "pwrite64" || call.name == "close") && used->IsNew();
}

bool IsLogCall(const SystemCall& call, const OpenedFile* used) {
  return call.name == "socket" || call.name == "connect" || call.name == "sendto" ||
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

std::string PlaceOf(const SystemCall& call, const OpenedFile* opened, const OpenedFile* used,
                    const DescriptorTable& descriptors) {
  static const std::set<std::string_view> by_path{"access", "lstat", "mkdir", "readlink",
                                                  "rename", "rmdir", "stat",  "unlink"};
  static const std::set<std::string_view> by_path_in_folder{
      "faccessat2", "mkdirat", "newfstatat", "readlinkat", "renameat", "renameat2", "statx", "unlinkat"};
  if (opened != nullptr) return AsServicesName(opened->path);
  if (used != nullptr) return AsServicesName(used->path);
  if (by_path.contains(call.name)) return AsServicesName(descriptors.PathAt(call, 0, std::nullopt));
  if (by_path_in_folder.contains(call.name)) return AsServicesName(descriptors.PathAt(call, 1, 0));
  return {};
}

bool MovesBreak(const SystemCall& call) {
  return call.name == "brk" && call.arguments.at(0) != "NULL";
}

bool AsksForMemory(const SystemCall& call) {
  return MovesBreak(call) || call.name == "mmap" || call.name == "mremap";
}

std::vector<Fault> FaultsOf(const SystemCall& call, const DescriptorTable& descriptors) {
  const auto known = ErrorsOfCalls().find(call.name);
  if (known == ErrorsOfCalls().end()) {
    throw std::runtime_error("it is not known how " + call.name + " can fail: add it to the plan");
  }
  const std::optional<OpenedFile> opened = descriptors.OpenedBy(call);
  const OpenedFile* const used = descriptors.UsedBy(call);
  const OpenedFile* const opens = opened ? &*opened : nullptr;

  Fault fault;
  fault.call = call.name;
  fault.ordinal = call.ordinal;
  fault.subject = SubjectOf(call);
  fault.place = PlaceOf(call, opens, used, descriptors);
  fault.channel = ChannelOf(call, used);
  const Fault::Duty duty = IsStepOfMigration(call, opens, used) ? Fault::Duty::Fail : Fault::Duty::None;

  std::vector<Fault> faults;
  Errors errors = known->second;
  if (opened && opened->IsCreated()) errors.insert(errors.end(), {"ENOSPC", "EROFS"});
  for (const char* const error : errors) {
    fault.error = error;
    fault.duty = error == kInterrupted ? Fault::Duty::SameResult : duty;
    faults.push_back(fault);
  }

  fault.error.clear();
  fault.kind = Fault::Kind::ShortTransfer;
  fault.duty = Fault::Duty::SameResult;
  if (IsTransfer(call.name) && call.result > 1) {
    fault.bytes = 1;
    faults.push_back(fault);
    if (call.result > 3) {
      fault.bytes = static_cast<std::size_t>(call.result) / 2;
      faults.push_back(fault);
    }
  }
  if (MovesBreak(call)) {  // a break that stays where it was is how the kernel refuses memory
    fault.bytes = 0;
    fault.duty = Fault::Duty::None;
    faults.push_back(fault);
  }
  return faults;
}

}  // namespace

std::vector<Fault> PlanFaults(const std::vector<SystemCall>& calls, std::size_t first) {
  std::vector<Fault> faults;
  DescriptorTable descriptors;
  for (std::size_t i = 0; i < calls.size(); ++i) {
    if (i >= first) {
      std::vector<Fault> more = FaultsOf(calls[i], descriptors);
      faults.insert(faults.end(), more.begin(), more.end());
    }
    descriptors.Follow(calls[i]);
  }
  Fault trickle;
  trickle.kind = Fault::Kind::ShortTransfers;
  trickle.call = "all";
  trickle.ordinal = static_cast<int>(first) + 1;
  trickle.bytes = 1;
  trickle.duty = Fault::Duty::SameResult;
  faults.push_back(trickle);

  const auto begin = calls.begin() + static_cast<std::ptrdiff_t>(first);
  const auto request = std::find_if(begin, calls.end(), AsksForMemory);
  if (request != calls.end()) {
    Fault no_memory;
    no_memory.kind = Fault::Kind::NoMemory;
    no_memory.call = "memory";
    no_memory.error = "refused";
    no_memory.ordinal = static_cast<int>(request - calls.begin()) + 1;
    faults.push_back(no_memory);
  }
  return faults;
}

std::vector<Fault> Sample(const std::vector<Fault>& faults, std::size_t count, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::vector<std::size_t> order(faults.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  // Not std::shuffle: what it makes of a seed is not the same with every library.
  for (std::size_t i = order.size(); i > 1; --i) std::swap(order[i - 1], order[random() % i]);

  std::set<std::size_t> drawn;
  std::set<std::string> kinds;
  for (const std::size_t place : order) {
    if (kinds.insert(KindOf(faults[place])).second) drawn.insert(place);
  }
  for (const std::size_t place : order) {
    if (drawn.size() >= count) break;
    drawn.insert(place);
  }
  std::vector<Fault> sample;
  sample.reserve(drawn.size());
  for (const std::size_t place : drawn) sample.push_back(faults[place]);
  return sample;
}

}  // namespace lab::sweeps
