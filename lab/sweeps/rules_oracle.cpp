#include "lab/sweeps/rules_oracle.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "lab/runs/pool.h"
#include "lab/sweeps/documents.h"
#include "lab/sweeps/outcome_text.h"
#include "lab/text/json.h"

namespace lab::sweeps {
namespace {

/// Behind each of these stands what went wrong, in the words of whoever noticed it.
constexpr std::array<std::string_view, 5> kCauseFollows{
    "Failed to get mesh role, error: ",
    "Failed to get network context: ",
    "use US to instead. error: ",
    "Failed to get backhaul swap, default false: ",
    kFailureReport,
};

/// How the services name the boot environment: by no path.
const std::string kBootEnvironment;

void CutCause(std::string& line) {
  for (const std::string_view text : kCauseFollows) {
    const std::size_t place = line.find(text);
    if (place != std::string::npos) line.erase(place + text.size());
  }
}

void RequireWholeDocuments(const Tree& files) {
  for (const auto& [path, entry] : files) {
    if (IsDocument(path) && !ParseJson(entry.content)) throw std::runtime_error("no JSON: " + path);
  }
}

/// What each call of a service was about: a line for a call, its places apart from each other by tabs.
std::vector<std::set<std::string>> ParseServices(const std::string& text) {
  std::vector<std::set<std::string>> services;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line + '\t');
    std::set<std::string> places;
    for (std::string place; std::getline(fields, place, '\t');) places.insert(place);
    services.push_back(std::move(places));
  }
  return services;
}

MigrationRun AskOnce(const Device& device, const Programs& programs, long failing_call) {
  Manner manner;
  manner.environment = {"FAILING_CALL=" + std::to_string(failing_call)};
  return Migrate(device, programs.rules, manner);
}

/// The files that a run may look for in vain.
std::vector<std::string> FilesOf(const Device& device) {
  std::vector<std::string> files;
  for (const auto& [path, entry] : device.files) {
    const bool is_input = entry.kind == Entry::Kind::File && !IsDocument(path) && !IsTemporaryName(path);
    if (is_input && !path.starts_with(kArchive)) files.push_back(path);
  }
  return files;
}

std::vector<Tree> RunWithoutEachFile(const Device& device, const Programs& programs, unsigned workers) {
  const std::vector<std::string> files = FilesOf(device);
  const std::vector<std::string> texts = ParallelMap(files.size(), workers, [&](std::size_t place) {
    Device lacking = device;
    lacking.files.erase(files[place]);
    return ToText(Migrate(lacking, programs.migration).outcome);
  });
  std::vector<Tree> trees;
  std::transform(texts.begin(), texts.end(), std::back_inserter(trees),
                 [](const std::string& text) { return FromText(text).files; });
  return trees;
}

}  // namespace

Outcome AsRulesSeeIt(Outcome outcome) {
  for (std::string& line : outcome.log) CutCause(line);
  CutCause(outcome.err);
  std::erase_if(outcome.files, [](const auto& file) { return IsTemporaryName(file.first); });
  return outcome;
}

bool RulesOracle::Allows(const Outcome& outcome, const std::string& place) const {
  if (outcome == undisturbed) return true;
  const auto is_about = [](const FailedService& service, const std::string& about) {
    return service.places.contains(about);
  };
  const bool is_known = std::any_of(with_failed_service.begin(), with_failed_service.end(),
                                    [&](const FailedService& service) { return is_about(service, place); });
  const std::string about = is_known ? place : kBootEnvironment;
  const Outcome bare = AsRulesSeeIt(outcome);
  return std::any_of(
      with_failed_service.begin(), with_failed_service.end(),
      [&](const FailedService& service) { return is_about(service, about) && service.outcome == bare; });
}

std::vector<const Tree*> RulesOracle::Trees() const {
  std::vector<const Tree*> trees{&undisturbed.files};
  for (const FailedService& service : with_failed_service) trees.push_back(&service.outcome.files);
  return trees;
}

RulesOracle AskRules(const Device& device, const Programs& programs, unsigned workers) {
  RulesOracle oracle;
  oracle.undisturbed = Migrate(device, programs.migration).outcome;

  RequireWholeDocuments(oracle.undisturbed.files);

  const MigrationRun all_pass = AskOnce(device, programs, 0);
  if (!(all_pass.outcome == oracle.undisturbed)) {
    throw std::runtime_error("the program whose services fail does not do what the program does:\n" +
                             Difference(oracle.undisturbed, all_pass.outcome));
  }
  const auto counted = all_pass.scratch.find("/tmp/service-calls");
  if (counted == all_pass.scratch.end()) throw std::runtime_error("no services were counted");

  const std::vector<std::set<std::string>> services = ParseServices(counted->second.content);
  const std::vector<std::string> texts = ParallelMap(services.size(), workers, [&](std::size_t call) {
    return ToText(AsRulesSeeIt(AskOnce(device, programs, static_cast<long>(call) + 1).outcome));
  });
  std::map<std::string, std::set<std::string>> places;
  for (std::size_t i = 0; i < texts.size(); ++i)
    places[texts[i]].insert(services[i].begin(), services[i].end());
  for (const auto& [text, about] : places) {
    oracle.with_failed_service.push_back({about, FromText(text)});
    RequireWholeDocuments(oracle.with_failed_service.back().outcome.files);
  }
  oracle.without_a_file = RunWithoutEachFile(device, programs, workers);
  return oracle;
}

}  // namespace lab::sweeps
