#include <string>
#include <string_view>
#include <vector>

#include "lab/household/rules.h"

namespace lab {
namespace {

constexpr int kDocumentsAreThere = 225;
constexpr int kUpdateFailed = 954;

constexpr std::string_view kCannotMove = "filesystem error: cannot rename: ";
constexpr std::string_view kMissing = "No such file or directory [";
constexpr std::string_view kNoFolder = "filesystem error: cannot create director";
constexpr std::string_view kOldFilesMissing = "some old config files are not existed.";

/// The names of the documents that are not there, the network document as "network.json".
std::string MissingDocuments(const RunView& view) {
  std::string missing;
  for (const char* name : {"global.json", "misc.json", "radio.json", "wps.json"}) {
    if (view.Document(name) == nullptr) missing.append(missing.empty() ? "" : ", ").append(name);
  }
  if (view.NetworkDocument().empty()) missing.append(missing.empty() ? "" : ", ").append("network.json");
  return missing;
}

/// Whether all documents are those of this run, so that only the archive is behind it.
bool IsWhole(const RunView& view, const std::string& reason) {
  if (!view.IsWholeMigration() || !MissingDocuments(view).empty()) return false;
  if (reason.starts_with(kCannotMove) || reason.starts_with(kNoFolder)) return true;
  // A reason of another kind may tell of a document that an earlier run has left in the place of its own.
  return !view.Had(kWifiFolder + view.NetworkDocument());
}

/// "/usr/kelp/etc/wifi/lbd.conf is missing", or the reason itself.
std::string WhyNotArchived(const std::string& reason) {
  std::string_view rest = reason;
  if (!rest.starts_with(kCannotMove)) return reason;
  rest.remove_prefix(kCannotMove.size());
  if (!rest.starts_with(kMissing)) return reason;
  rest.remove_prefix(kMissing.size());
  return std::string(rest.substr(0, rest.find(']'))) + " is missing";
}

void FindFailure(const RunView& view, const std::string& reason, FindingCollector& findings) {
  const bool is_of_13 = !view.IsWholeMigration() && reason.starts_with(kOldFilesMissing);
  if (IsWhole(view, reason)) {
    findings.Add("archive-stopped", WhyNotArchived(reason));
  } else if (is_of_13 && view.Document("global.json") != nullptr) {
    findings.Add("update-repeated", "global.json is there");
  } else {
    findings.Add("migration-stopped", reason);
  }
}

/// Why a run failed that does not tell so in the log.
std::string UntoldReason(const RunResult& run) {
  if (run.timed_out) return "did not end in time";
  if (run.signal != 0) return "killed by signal " + std::to_string(run.signal);
  const std::string first = run.err.substr(0, run.err.find('\n'));
  return first.empty() ? "exit status " + std::to_string(run.status) : first;
}

}  // namespace

void CheckRun(const RunView& view, FindingCollector& findings) {
  std::vector<std::string> reasons = view.LoggedArguments(kUpdateFailed);
  if (reasons.empty() && view.Failed()) reasons.push_back(UntoldReason(view.Run()));
  for (const std::string& reason : reasons) FindFailure(view, reason, findings);

  if (view.Logged(kDocumentsAreThere)) {
    const std::string missing = MissingDocuments(view);
    if (!missing.empty()) findings.Add("blocked-by-earlier-run", "missing: " + missing);
  }
}

}  // namespace lab
