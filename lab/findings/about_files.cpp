#include <algorithm>
#include <cctype>
#include <set>
#include <string>

#include "lab/findings/places.h"
#include "lab/findings/rules.h"
#include "lab/images/tree_lookup.h"

namespace lab {
namespace {

std::string InLowerCase(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char byte) { return std::tolower(byte); });
  return text;
}

/// An access-point file whose address differs in its letter case only; empty where there is none.
std::string SpelledOtherwise(const Rehearsal& rehearsal, const std::string& file) {
  for (const auto& [path, entry] : rehearsal.Run().before) {
    if (path != file && InLowerCase(path) == InLowerCase(file)) return path;
  }
  return "";
}

void FindMissing(const Rehearsal& rehearsal, const std::string& file, Findings& findings) {
  std::string told = NameOf(file) + " is missing";
  const std::string other = SpelledOtherwise(rehearsal, file);
  if (!other.empty()) told += "; there is " + NameOf(other);
  findings.Add("access-point-file-missing", told);
}

void FindLineEnds(const Rehearsal& rehearsal, const std::string& file, Findings& findings) {
  if (rehearsal.TextOf(file).find("\r\n") != std::string_view::npos) findings.Add("crlf-lines", NameOf(file));
}

}  // namespace

void FindAboutFiles(const Rehearsal& rehearsal, Findings& findings) {
  std::set<std::string> access_points;
  for (const NetworkPart& network : rehearsal.Networks()) {
    for (const RadioPart& radio : network.radios) {
      if (!radio.file.empty()) access_points.insert(radio.file);
    }
  }
  for (const std::string& file : access_points) {
    if (rehearsal.Had(file)) {
      FindLineEnds(rehearsal, file, findings);
    } else {
      FindMissing(rehearsal, file, findings);
    }
  }
  const std::string filters = kFilterFolder;
  for (const std::string& file :
       {std::string(kInformationStore), std::string(kWPSFile), filters + "mf.info", filters + "mf_guest.info",
        filters + "mf.setting", filters + "mf_deny.conf", filters + "mf_allow.conf"}) {
    FindLineEnds(rehearsal, file, findings);
  }
}

}  // namespace lab
