#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "lab/household/legacy_words.h"
#include "lab/household/rules.h"
#include "lab/text/ascii.h"

namespace lab {
namespace {

constexpr std::string_view kMissing = "access-point-file-missing";
constexpr std::string_view kEmpty = "access-point-file-empty";
constexpr std::string_view kLineEnds = "crlf-lines";

/// An access-point file whose address differs in its letter case only; empty if there is none.
std::string SpelledOtherwise(const RunView& view, const std::string& file) {
  for (const auto& [path, entry] : view.Run().before) {
    if (path != file && ToLowerAscii(path) == ToLowerAscii(file)) return path;
  }
  return "";
}

void CheckAccessPoint(const RunView& view, const std::string& file, FindingCollector& findings) {
  if (!view.Had(file)) {
    std::string detail = BaseName(file) + " is missing";
    const std::string other = SpelledOtherwise(view, file);
    if (!other.empty()) detail += "; there is " + BaseName(other);
    findings.Add({kMissing, detail, {"", file}});
  } else if (!view.HadEntries(file)) {
    findings.Add({kEmpty, BaseName(file), {"", file}});
  }
}

bool IsAccessPoint(const std::string& file) {
  return file.starts_with(kAccessPointPrefix);
}

}  // namespace

Cause CauseInFile(const RunView& view, const std::string& file, bool has_carriage_return) {
  if (IsAccessPoint(file) && !view.Had(file)) return {kMissing, file};
  if (has_carriage_return) return {kLineEnds, file};
  if (IsAccessPoint(file) && !view.HadEntries(file)) return {kEmpty, file};
  return {};
}

void CheckFiles(const RunView& view, FindingCollector& findings) {
  std::set<std::string> access_points;
  if (view.IsWholeMigration()) {
    for (const NetworkView& network : view.Networks()) {
      for (const RadioView& radio : network.radios) {
        if (!radio.file.empty()) access_points.insert(radio.file);
      }
    }
  }
  for (const std::string& file : access_points) CheckAccessPoint(view, file, findings);
  // Line ends alone break nothing: they are found if something follows from them.
  std::vector<std::string> files(access_points.begin(), access_points.end());
  for (const char* file : {kInformationStore, kMeshRoleFile, kWPSFile, kPrimaryPolicyFile, kGuestPolicyFile,
                           kBroadcastFile, kDenyList, kAllowList}) {
    files.emplace_back(file);
  }
  for (const std::string& file : files) findings.AddCause({kLineEnds, file}, BaseName(file));
}

}  // namespace lab
