#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "lab/household/legacy_words.h"
#include "lab/household/places.h"
#include "lab/household/rules.h"
#include "lab/images/tree_lookup.h"

namespace lab {
namespace {

/// An access-point file whose address differs in its letter case only; empty where there is none.
std::string SpelledOtherwise(const RunView& view, const std::string& file) {
  for (const auto& [path, entry] : view.Run().before) {
    if (path != file && ToLowerAscii(path) == ToLowerAscii(file)) return path;
  }
  return "";
}

void FindMissing(const RunView& view, const std::string& file, FindingCollector& findings) {
  std::string told = NameOf(file) + " is missing";
  const std::string other = SpelledOtherwise(view, file);
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

void FindLineEnds(const RunView& view, const std::string& file, FindingCollector& findings) {
  if (HasOtherLineEnds(view.TextOf(file))) findings.Add("crlf-lines", NameOf(file));
}

void FindAboutAccessPoints(const RunView& view, FindingCollector& findings) {
  std::set<std::string> access_points;
  for (const NetworkView& network : view.Networks()) {
    for (const RadioView& radio : network.radios) {
      if (!radio.file.empty()) access_points.insert(radio.file);
    }
  }
  for (const std::string& file : access_points) {
    if (!view.Had(file)) {
      FindMissing(view, file, findings);
    } else if (!view.HadEntries(file)) {
      findings.Add("access-point-file-empty", NameOf(file));
    } else {
      FindLineEnds(view, file, findings);
    }
  }
}

}  // namespace

void CheckFiles(const RunView& view, FindingCollector& findings) {
  const bool is_whole = view.IsWholeMigration();
  // It is read in every run; a model with a carriage return stops the update.
  if (is_whole || view.Failed()) FindLineEnds(view, kInformationStore, findings);
  if (view.IsOfGlobalFiles()) FindLineEnds(view, kMeshRoleFile, findings);
  if (!is_whole) return;
  FindAboutAccessPoints(view, findings);
  const std::string filters = kFilterFolder;
  for (const std::string& file :
       {std::string(kWPSFile), filters + "mf.info", filters + "mf_guest.info", filters + "mf.setting",
        filters + "mf_deny.conf", filters + "mf_allow.conf"}) {
    FindLineEnds(view, file, findings);
  }
}

}  // namespace lab
