#include "lab/runs/outcome.h"

#include <syslog.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <utility>

namespace lab {
namespace {

// The numbers by which the program's messages are known.
constexpr int kNothingToDo = 120;
constexpr int kDocumentsAreThere = 225;

constexpr const char* kInformationStore = "/usr/kelp/etc/info.conf";
constexpr const char* kKernelEntry = "/proc/sys/kernel/kelp_mac_address";

constexpr std::array kNames{
    std::pair{Outcome::Migrated, std::string_view("migrated")},
    std::pair{Outcome::MigratedWithFallbacks, std::string_view("migrated-with-fallbacks")},
    std::pair{Outcome::Skipped, std::string_view("skipped")},
    std::pair{Outcome::NothingToDo, std::string_view("nothing-to-do")},
    std::pair{Outcome::Failed, std::string_view("failed")},
    std::pair{Outcome::Crashed, std::string_view("crashed")},
    std::pair{Outcome::TimedOut, std::string_view("timed-out")},
    std::pair{Outcome::IncompleteImage, std::string_view("incomplete-image")},
    std::pair{Outcome::UnusableImage, std::string_view("unusable-image")},
};

std::string WithoutLineEnd(std::string text) {
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

/// Whether a line of the information store tells that the device is of the model whose radios have other
/// kernel entries.
bool IsOrchid(const Tree& image) {
  const auto store = image.find(kInformationStore);
  if (store == image.end()) return false;
  const std::string text = "\n" + store->second.content + "\n";
  return text.find("\nkelpbios=orchid\n") != std::string::npos ||
         text.find("\nkelpbios=\"orchid\"\n") != std::string::npos;
}

/// The kernel entries that the device's radios need and the image lacks: "3, 5".
std::string MissingKernelEntries(const Tree& image) {
  std::string missing;
  for (int number = IsOrchid(image) ? 4 : 3; number <= 5; ++number) {
    if (image.contains(kKernelEntry + std::to_string(number))) continue;
    missing += (missing.empty() ? "" : ", ") + std::to_string(number);
  }
  return missing;
}

/// What the image lacks that the run failed for; empty where it failed for another reason.
std::string Lacking(const RunResult& result) {
  const bool is_store = result.err.find(kInformationStore) != std::string::npos;
  if (is_store && !result.before.contains(kInformationStore)) {
    return "the image has no information store (" + std::string(kInformationStore) + ")";
  }
  if (result.err.find("Failed to get bssid from kelp_mac_address") == std::string::npos) return "";
  const std::string missing = MissingKernelEntries(result.before);
  if (missing.empty()) return "";
  return "the image has no kernel entries for its radios (" + std::string(kKernelEntry) + missing + ")";
}

bool Has(const std::vector<NumberedLine>& log, int number) {
  return std::ranges::any_of(log, [=](const NumberedLine& line) { return line.number == number; });
}

Outcome OfSuccess(const std::vector<NumberedLine>& log) {
  if (Has(log, kNothingToDo)) return Outcome::NothingToDo;
  if (Has(log, kDocumentsAreThere)) return Outcome::Skipped;
  const bool complains =
      std::ranges::any_of(log, [](const NumberedLine& line) { return line.severity <= LOG_ERR; });
  return complains ? Outcome::MigratedWithFallbacks : Outcome::Migrated;
}

}  // namespace

const std::vector<Outcome>& AllOutcomes() {
  static const std::vector<Outcome> kAll = [] {
    std::vector<Outcome> all;
    all.reserve(kNames.size());
    for (const auto& [outcome, name] : kNames) all.push_back(outcome);
    return all;
  }();
  return kAll;
}

std::string_view OutcomeName(Outcome outcome) {
  return kNames.at(static_cast<std::size_t>(outcome)).second;
}

std::optional<Outcome> OutcomeNamed(std::string_view name) {
  const auto* const found = std::ranges::find(kNames, name, [](const auto& entry) { return entry.second; });
  if (found == kNames.end()) return std::nullopt;
  return found->first;
}

NumberedLine ParseNumberedLine(const LogLine& line) {
  NumberedLine parsed{0, line.severity, line.message};
  const std::string_view message = line.message;
  const std::size_t blank = message.find(' ');
  const std::size_t colon = message.substr(0, blank).rfind(':');
  if (blank == std::string_view::npos || colon == std::string_view::npos || colon == 0) return parsed;
  int number = 0;
  const char* const end = message.data() + blank;
  const auto [stop, error] = std::from_chars(message.data() + colon + 1, end, number);
  if (error != std::errc() || stop != end || number < 0) return parsed;
  return {number, line.severity, std::string(message.substr(blank + 1))};
}

Verdict Judge(const RunResult& result) {
  Verdict verdict;
  verdict.error = WithoutLineEnd(result.err);
  verdict.log.reserve(result.log.size());
  for (const LogLine& line : result.log) verdict.log.push_back(ParseNumberedLine(line));

  if (result.timed_out) {
    verdict.outcome = Outcome::TimedOut;
  } else if (result.signal != 0) {
    verdict.outcome = Outcome::Crashed;
  } else if (result.status == 0) {
    verdict.outcome = OfSuccess(verdict.log);
  } else if (const std::string lacking = Lacking(result); !lacking.empty()) {
    verdict.outcome = Outcome::IncompleteImage;
    verdict.error = lacking + ": " + verdict.error;
  } else {
    verdict.outcome = Outcome::Failed;
  }
  return verdict;
}

}  // namespace lab
