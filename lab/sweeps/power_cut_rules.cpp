#include "lab/sweeps/power_cut_rules.h"

#include <array>
#include <utility>

#include "lab/sweeps/documents.h"
#include "lab/sweeps/outcome_text.h"

namespace lab::sweeps {
namespace {

constexpr std::array kOldFilesOf13{"/usr/kelp/etc/wifi/model.json", "/usr/kelp/etc/wifi/country.json",
                                   "/usr/kelp/etc/wifi/backhaul.json"};

/// A file that went to the archive; null when none has.
const std::string* FindArchived(const Tree& before, const Tree& state) {
  for (const auto& [path, entry] : before) {
    if (!state.contains(path) && state.contains(ArchivedPath(path))) return &path;
  }
  return nullptr;
}

/// The first path at which two devices differ.
std::optional<std::string> FindDifference(const Tree& expected, const Tree& found) {
  for (const auto& [path, entry] : expected) {
    const auto other = found.find(path);
    if (other == found.end()) return "missing: " + path;
    if (!(other->second == entry)) return "different: " + path;
  }
  for (const auto& [path, entry] : found) {
    if (!expected.contains(path)) return "unexpected: " + path;
  }
  return std::nullopt;
}

}  // namespace

PowerCutRules::PowerCutRules(Device device, Outcome undisturbed, const std::vector<FileOperation>& operations)
    : device_(std::move(device)), undisturbed_(std::move(undisturbed)) {
  for (const FileOperation& operation : operations) {
    const bool is_document = operation.kind == FileOperation::Kind::Rename && IsDocument(operation.target);
    if (is_document) documents_.push_back(operation.target);
  }
}

bool PowerCutRules::IsNew(const std::string& document, const Tree& state) const {
  const auto found = state.find(document);
  return found != state.end() && found->second == undisturbed_.files.at(document);
}

std::optional<std::string> PowerCutRules::FindWrongState(const Tree& state) const {
  if (auto breach = FindBreach(device_.files, state, {&undisturbed_.files}, true)) return breach;

  const std::string* const archived = FindArchived(device_.files, state);
  if (archived == nullptr) return std::nullopt;
  for (const std::string& document : documents_) {
    if (!IsNew(document, state)) return *archived + " was archived before " + document + " was durable";
  }
  return std::nullopt;
}

PowerCutRules::Expected PowerCutRules::ExpectedOn(const Tree& state) const {
  const Expected whole{undisturbed_.status, &undisturbed_.files, nullptr};
  if (device_.build_number < kFirstBuildOf13) {
    const bool is_skipped = state.contains(kGlobalDocument) || state.contains(kMiscDocument);
    return is_skipped ? Expected{0, &state, "New config is existed, so stop migrating."} : whole;
  }
  for (const char* const file : kOldFilesOf13) {
    if (!state.contains(file)) return {1, &state, "some old config files are not existed."};
  }
  return whole;
}

std::optional<std::string> PowerCutRules::FindWrongRun(const Tree& state, const Outcome& outcome) const {
  if (outcome.timed_out) return "did not end";
  if (outcome.signal != 0) return "ended by signal " + std::to_string(outcome.signal);
  const Expected expected = ExpectedOn(state);
  if (outcome.status != expected.status) {
    return "status " + std::to_string(outcome.status) + ", not " + std::to_string(expected.status) + ": " +
           outcome.err;
  }
  if (auto difference = FindDifference(WithoutLabFiles(*expected.files), outcome.files)) return difference;
  return FindWrongWords(expected, outcome);
}

std::optional<std::string> PowerCutRules::FindWrongWords(const Expected& expected,
                                                         const Outcome& outcome) const {
  if (expected.log == nullptr) {
    if (outcome.log == undisturbed_.log && outcome.err == undisturbed_.err) return std::nullopt;
    return "a whole migration said something else:\n" + Difference(undisturbed_, outcome);
  }
  if (outcome.log.empty() || outcome.log.back().find(expected.log) == std::string::npos) {
    return "not at the end of the log: " + std::string(expected.log);
  }
  const std::string reported = expected.status == 0 ? "" : std::string(kFailureReport) + expected.log + "\n";
  if (outcome.err != reported) return "on standard error: " + outcome.err;
  return std::nullopt;
}

}  // namespace lab::sweeps
