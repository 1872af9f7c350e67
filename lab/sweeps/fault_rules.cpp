#include "lab/sweeps/fault_rules.h"

#include <algorithm>
#include <array>
#include <set>

#include "lab/sweeps/call_errors.h"
#include "lab/sweeps/documents.h"

namespace lab::sweeps {
namespace {

using Duty = Fault::Duty;

constexpr std::string_view kInformationStore = "/usr/kelp/etc/info.conf";
constexpr std::string_view kKernelEntries = "/proc/sys/kernel/kelp_mac_address";
constexpr std::string_view kDocumentFolder = "/usr/kelp/etc/wifi";

bool IsJsonOf13(const std::string& path) {
  static const std::set<std::string_view> files{
      "/usr/kelp/etc/wifi/model.json", "/usr/kelp/etc/wifi/country.json", "/usr/kelp/etc/wifi/backhaul.json"};
  return files.contains(path);
}

bool IsStatusCall(const SystemCall& call) {
  static const std::set<std::string_view> names{"access",     "faccessat2", "lstat",
                                                "newfstatat", "stat",       "statx"};
  const bool is_of_descriptor = std::any_of(
      call.arguments.begin(), call.arguments.end(),
      [](const std::string& argument) { return argument.find("AT_EMPTY_PATH") != std::string::npos; });
  return names.contains(call.name) && !is_of_descriptor;
}

/// Some file systems cannot flush a folder; there it has nothing to wait for.
bool IsNoFlushOfFolder(std::string_view error) {
  return error == "EINVAL" || error == "EOPNOTSUPP";
}

FaultRule Ends(std::vector<std::string> reason, std::string_view error) {
  if (const std::string cause = TextOfError(error); !cause.empty()) reason.push_back(cause);
  return {Duty::Fail, std::move(reason)};
}

FaultRule EndsAtDocument(const std::string& path, std::string_view error) {
  return Ends({"cannot ", IsTemporaryName(path) ? DocumentOf(path) : path}, error);
}

/// Of the tests whether something is there.
FaultRule RuleForStatus(const SystemCall& call, const std::string& path, std::string_view error) {
  if (path == kGlobalDocument || path == kMiscDocument) {
    if (MeansAbsent(error)) return {call.error.empty() ? Duty::None : Duty::SameResult};
    return Ends({"filesystem error: status", path}, error);
  }
  if (IsJsonOf13(path)) {
    if (MeansAbsent(error)) return {Duty::Fail, {"some old config files are not existed."}};
    return Ends({"filesystem error: status", path}, error);
  }
  if (path == kArchive || path == kDocumentFolder) {
    if (MeansAbsent(error)) return {};
    return Ends({"filesystem error: ", path}, error);
  }
  return {path == kInformationStore ? Duty::None : Duty::Forgive};
}

/// Of the calls that change what a device holds.
FaultRule RuleForChange(const SystemCall& call, const CallSubject& subject, std::string_view error) {
  const std::string& path = subject.path;
  if (IsDocument(path) || IsTemporaryName(path)) return EndsAtDocument(path, error);
  if (call.name.starts_with("rename")) return Ends({"filesystem error: cannot rename", path}, error);
  if (call.name.starts_with("mkdir")) {
    return Ends({"filesystem error: cannot create directories", path}, error);
  }
  return Ends({"filesystem error: cannot remove", path}, error);
}

FaultRule RuleForFlush(const CallSubject& subject, std::string_view error) {
  if (!subject.uses_folder) return EndsAtDocument(subject.path, error);
  if (IsNoFlushOfFolder(error)) return {Duty::SameResult};
  return Ends({"cannot ", subject.path}, error);
}

/// Of the calls that give what an old file holds.
FaultRule RuleForReading(const std::string& path, std::string_view error) {
  if (IsJsonOf13(path)) return Ends({"cannot read ", path}, error);
  if (path.starts_with(kKernelEntries)) return {Duty::Fail, {"Failed to get bssid from kelp_mac_address"}};
  return {path == kInformationStore ? Duty::Tell : Duty::Forgive};
}

bool IsFlush(const std::string& name) {
  return name == "fsync" || name == "fdatasync";
}

bool IsChange(const std::string& name) {
  static const std::set<std::string_view> names{"mkdir",     "mkdirat", "rename", "renameat",
                                                "renameat2", "rmdir",   "unlink", "unlinkat"};
  return names.contains(name);
}

bool GivesContent(const std::string& name) {
  static const std::set<std::string_view> names{"fstat",   "newfstatat", "open", "openat",
                                                "pread64", "read",       "statx"};
  return names.contains(name);
}

}  // namespace

FaultRule RuleFor(const SystemCall& call, const CallSubject& subject, std::string_view error) {
  const std::string& path = subject.path;
  if (IsInterruption(error)) return {Duty::SameResult};
  if (path.empty()) return {};
  if (IsStatusCall(call)) return RuleForStatus(call, path, error);
  if (IsChange(call.name)) return RuleForChange(call, subject, error);
  if (!call.error.empty()) return {};  // a look for what is not there
  if (IsFlush(call.name)) return RuleForFlush(subject, error);
  if (subject.opens_new || subject.uses_new) return EndsAtDocument(path, error);
  if (subject.opens_folder) return Ends({"cannot ", path}, error);
  if (call.name == "close") return {Duty::SameResult};
  if (GivesContent(call.name)) return RuleForReading(path, error);
  return {path == kInformationStore ? Duty::None : Duty::Forgive};
}

const std::vector<std::string>& ReasonOfUnreadableStore() {
  static const std::vector<std::string> reason{"cannot read ", std::string(kInformationStore)};
  return reason;
}

bool TellsFallbackOfStore(std::string_view log_line) {
  // Mesh role, topology, country, backhaul.
  constexpr std::array kNumbers{"kelpwifiupdater:140 ", "kelpwifiupdater:168 ", "kelpwifiupdater:280 ",
                                "kelpwifiupdater:300 "};
  return std::any_of(kNumbers.begin(), kNumbers.end(),
                     [&](const char* number) { return log_line.find(number) != std::string_view::npos; });
}

}  // namespace lab::sweeps
