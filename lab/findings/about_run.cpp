#include <string>
#include <string_view>
#include <vector>

#include "lab/findings/rules.h"

namespace lab {
namespace {

constexpr int kDocumentsAreThere = 225;
constexpr int kUpdateFailed = 954;

constexpr std::string_view kCannotArchive = "filesystem error: cannot rename: No such file or directory [";

/// The names of the documents that are not there, the network document as "network.json".
std::string MissingDocuments(const Rehearsal& rehearsal) {
  std::string missing;
  for (const char* name : {"global.json", "misc.json", "radio.json", "wps.json"}) {
    if (rehearsal.Document(name) == nullptr) missing.append(missing.empty() ? "" : ", ").append(name);
  }
  if (rehearsal.NetworkDocument().empty()) missing.append(missing.empty() ? "" : ", ").append("network.json");
  return missing;
}

void FindFailure(const Rehearsal& rehearsal, const std::string& reason, Findings& findings) {
  const bool is_complete = rehearsal.IsWholeMigration() && MissingDocuments(rehearsal).empty();
  if (is_complete && reason.starts_with(kCannotArchive)) {
    const std::string_view path = std::string_view(reason).substr(kCannotArchive.size());
    findings.Add("archive-stopped", std::string(path.substr(0, path.find(']'))) + " is missing");
  } else {
    findings.Add("migration-stopped", reason);
  }
}

}  // namespace

void FindAboutRun(const Rehearsal& rehearsal, Findings& findings) {
  for (const std::string& reason : rehearsal.ToldBy(kUpdateFailed)) FindFailure(rehearsal, reason, findings);

  if (rehearsal.Logged(kDocumentsAreThere)) {
    const std::string missing = MissingDocuments(rehearsal);
    if (!missing.empty()) findings.Add("blocked-by-earlier-run", "missing: " + missing);
  }
}

}  // namespace lab
