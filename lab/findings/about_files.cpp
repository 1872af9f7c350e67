#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "lab/findings/places.h"
#include "lab/findings/rules.h"
#include "lab/images/tree_lookup.h"
#include "lab/text/ascii.h"

namespace lab {
namespace {

/// An access-point file whose address differs in its letter case only; empty where there is none.
std::string SpelledOtherwise(const Rehearsal& rehearsal, const std::string& file) {
  for (const auto& [path, entry] : rehearsal.Run().before) {
    if (path != file && ToLowerAscii(path) == ToLowerAscii(file)) return path;
  }
  return "";
}

void FindMissing(const Rehearsal& rehearsal, const std::string& file, Findings& findings) {
  std::string told = NameOf(file) + " is missing";
  const std::string other = SpelledOtherwise(rehearsal, file);
  if (!other.empty()) told += "; there is " + NameOf(other);
  findings.Add("access-point-file-missing", told);
}

/// Whether a word of the file ends in a carriage return, or nothing else ends its lines.
bool HasOtherLineEnds(std::string_view text) {
  if (text.find('\r') == std::string_view::npos) return false;
  if (text.find('\n') == std::string_view::npos) return true;
  const std::vector<LegacyEntry> entries = ParseKeyValueText(text);
  return text.find("]\r\n") != std::string_view::npos ||
         std::ranges::any_of(entries, [](const LegacyEntry& entry) { return entry.value.ends_with('\r'); });
}

void FindLineEnds(const Rehearsal& rehearsal, const std::string& file, Findings& findings) {
  if (HasOtherLineEnds(rehearsal.TextOf(file))) findings.Add("crlf-lines", NameOf(file));
}

void FindAboutAccessPoints(const Rehearsal& rehearsal, Findings& findings) {
  std::set<std::string> access_points;
  for (const NetworkPart& network : rehearsal.Networks()) {
    for (const RadioPart& radio : network.radios) {
      if (!radio.file.empty()) access_points.insert(radio.file);
    }
  }
  for (const std::string& file : access_points) {
    if (!rehearsal.Had(file)) {
      FindMissing(rehearsal, file, findings);
    } else if (!rehearsal.HadEntries(file)) {
      findings.Add("access-point-file-empty", NameOf(file));
    } else {
      FindLineEnds(rehearsal, file, findings);
    }
  }
}

}  // namespace

void FindAboutFiles(const Rehearsal& rehearsal, Findings& findings) {
  const bool is_whole = rehearsal.IsWholeMigration();
  // It is read in every run; a model with a carriage return stops the update.
  if (is_whole || rehearsal.Failed()) FindLineEnds(rehearsal, kInformationStore, findings);
  if (rehearsal.IsOfGlobalFiles()) FindLineEnds(rehearsal, kMeshRoleFile, findings);
  if (!is_whole) return;
  FindAboutAccessPoints(rehearsal, findings);
  const std::string filters = kFilterFolder;
  for (const std::string& file :
       {std::string(kWPSFile), filters + "mf.info", filters + "mf_guest.info", filters + "mf.setting",
        filters + "mf_deny.conf", filters + "mf_allow.conf"}) {
    FindLineEnds(rehearsal, file, findings);
  }
}

}  // namespace lab
