#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "lab/household/message_kinds.h"
#include "lab/household/rules.h"
#include "lab/images/tree_lookup.h"

namespace lab {
namespace {

constexpr std::string_view kCannotMove = "filesystem error: cannot rename: ";
constexpr std::string_view kMissing = "No such file or directory [";
constexpr std::string_view kNoFolder = "filesystem error: cannot create director";
constexpr std::string_view kOldFilesMissing = "some old config files are not existed.";
constexpr std::string_view kInvalidModel = "Invalid kelpbios value: ";

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text.append(text.empty() ? "" : ", ").append(name);
  return text;
}

/// Whether all documents are those of this run, so that only the archive is not done.
bool IsWhole(const RunView& view, const std::string& reason) {
  if (!view.IsWholeMigration() || !view.MissingDocuments().empty()) return false;
  if (reason.starts_with(kCannotMove) || reason.starts_with(kNoFolder)) return true;
  // A reason of another kind may tell of a document that an earlier run has left in the place of its own.
  return !view.Had(kWifiFolder + view.NetworkDocument());
}

/// The file that the archive lacks; empty if it stopped for another reason.
std::string_view MissingFile(std::string_view reason) {
  if (!reason.starts_with(kCannotMove)) return "";
  reason.remove_prefix(kCannotMove.size());
  if (!reason.starts_with(kMissing)) return "";
  reason.remove_prefix(kMissing.size());
  return reason.substr(0, reason.find(']'));
}

void AddArchiveStopped(const RunView& view, const std::string& reason, FindingCollector& findings) {
  const std::string missing(MissingFile(reason));
  const bool is_radio = missing.starts_with(kAccessPointPrefix) && !view.Had(missing);
  findings.Add({"archive-stopped", missing.empty() ? reason : missing + " is missing",
                is_radio ? Cause{"access-point-file-missing", missing} : Cause{}});
}

/// Whether the run had nothing to write: because of the build, or because all was written before.
bool HadNothingToDo(const RunView& view) {
  const bool was_done = view.WasMigratedBefore() && view.MissingDocuments().empty();
  return view.Asked() == Request::Nothing || (view.Asked() == Request::Everything && was_done);
}

void AddFailure(const RunView& view, const std::string& reason, FindingCollector& findings) {
  const bool is_of_13 = view.Asked() == Request::GlobalFiles && reason.starts_with(kOldFilesMissing);
  if (view.Asked() == Request::Nothing) {
    findings.Add("failed-without-need", reason);
  } else if (HadNothingToDo(view)) {
    findings.Add("update-repeated", reason);
  } else if (IsWhole(view, reason)) {
    AddArchiveStopped(view, reason, findings);
  } else if (is_of_13 && view.Document("global.json") != nullptr) {
    findings.Add("update-repeated", "global.json is there");
  } else {
    const bool has_return = reason.starts_with(kInvalidModel) && reason.ends_with('\r');
    findings.Add({"migration-stopped", reason, CauseInFile(view, kInformationStore, has_return)});
  }
}

/// Why a run failed that does not tell so in the log.
std::string UntoldReason(const RunResult& run) {
  if (run.timed_out) return "did not end in time";
  if (run.signal != 0) return "killed by signal " + std::to_string(run.signal);
  const std::string first = run.err.substr(0, run.err.find('\n'));
  return first.empty() ? "exit status " + std::to_string(run.status) : first;
}

bool IsThere(const Tree& tree, const std::string& document) {
  return tree.contains(kWifiFolder + document);
}

/// The documents that are due and not there, though none of them was there before.
std::vector<std::string> UnwrittenDocuments(const RunView& view) {
  const Tree& before = view.Run().before;
  const bool had_global = IsThere(before, "global.json");
  const auto had = [&](const char* name) { return IsThere(before, name); };
  if (view.Asked() == Request::GlobalFiles) {
    if (had_global || IsThere(view.Run().after, "global.json")) return {};
    return {"global.json"};
  }
  if (view.Asked() != Request::Everything || std::ranges::any_of(kDocuments, had)) return {};
  std::vector<std::string> unwritten = view.MissingDocuments();
  const auto is_there = [&](const std::string& name) { return IsThere(view.Run().after, name); };
  const bool has_network = std::ranges::any_of(kNetworkDocuments, is_there);
  std::erase_if(unwritten, [&](const std::string& name) {
    return name == "network.json" ? has_network : is_there(name);
  });
  return unwritten;
}

/// Documents that this run wrote or changed, and that are not JSON.
void CheckDocuments(const RunView& view, FindingCollector& findings) {
  for (const auto& [path, entry] : view.Run().after) {
    const std::string name = BaseName(path);
    if (path != kWifiFolder + name || !IsDocumentName(name) || entry.kind != Entry::Kind::File) continue;
    const Entry* const former = FindFile(view.Run().before, path);
    const bool is_new = former == nullptr || former->content != entry.content;
    if (is_new && view.Document(name) == nullptr) findings.Add("document-unreadable", name + " is not JSON");
  }
}

/// Whether a run from 1.2.5 moves the file at `path` to the archive.
bool IsArchived(const std::string& path) {
  return path.starts_with(kAccessPointPrefix) ||
         std::ranges::any_of(kArchivedFiles, [&](const char* file) { return path == file; });
}

void CheckArchive(const RunView& view, FindingCollector& findings) {
  for (const auto& [path, entry] : view.Run().before) {
    if (entry.kind != Entry::Kind::File || !IsArchived(path) || view.Run().after.contains(path)) continue;
    const Entry* const archived = FindFile(view.Run().after, kArchiveFolder + BaseName(path));
    if (archived == nullptr || archived->content != entry.content) {
      findings.Add("legacy-file-lost", path + " is neither there nor in the archive");
    }
  }
}

/// What holds for any program.
void CheckWork(const RunView& view, FindingCollector& findings) {
  const std::vector<std::string> unwritten = UnwrittenDocuments(view);
  if (!view.Failed() && !unwritten.empty()) {
    findings.Add("documents-not-written", "missing: " + Joined(unwritten));
  }
  CheckDocuments(view, findings);
  CheckArchive(view, findings);
}

bool HasLegacySettings(const RunView& view) {
  const bool has_radio = std::ranges::any_of(view.Run().before, [](const auto& entry) {
    return entry.first.starts_with(kAccessPointPrefix) && entry.second.kind == Entry::Kind::File;
  });
  return has_radio || (view.Had(kModelFile) && view.Had(kCountryFile) && view.Had(kBackhaulFile));
}

bool HasDocuments(const Tree& tree) {
  return std::ranges::any_of(tree, [](const auto& entry) {
    const std::string name = BaseName(entry.first);
    return entry.first == kWifiFolder + name && IsDocumentName(name);
  });
}

}  // namespace

void CheckRun(const RunView& view, FindingCollector& findings) {
  std::vector<std::string> reasons = view.LoggedArguments(kUpdateFailed);
  if (reasons.empty() && view.Failed()) reasons.push_back(UntoldReason(view.Run()));
  for (const std::string& reason : reasons) AddFailure(view, reason, findings);
  CheckWork(view, findings);

  const bool is_skipped = view.Asked() == Request::Everything && view.WasMigratedBefore() && !view.Failed();
  if ((is_skipped || view.Logged(kDocumentsAreThere)) && !view.MissingDocuments().empty()) {
    findings.Add("blocked-by-earlier-run", "missing: " + Joined(view.MissingDocuments()));
  }
  if (view.Asked() == Request::Nothing && HasLegacySettings(view) && !HasDocuments(view.Run().after)) {
    findings.Add("build-number-too-high", "there are old settings and no documents");
  }
  const std::string global = std::string(kWifiFolder) + "global.json";
  if (view.IsOfGlobalFiles() && view.Had(global)) {
    findings.Add("global-replaced", "global.json was there before");
  }
}

}  // namespace lab
