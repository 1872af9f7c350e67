#include "lab/sweeps/rules_oracle.h"

#include <json/reader.h>

#include <algorithm>
#include <array>
#include <memory>
#include <set>
#include <stdexcept>
#include <string_view>

#include "lab/sweeps/documents.h"
#include "lab/sweeps/outcome_text.h"
#include "lab/sweeps/workers.h"

namespace lab::sweeps {
namespace {

/// Behind each of these stands what went wrong, in the words of whoever noticed it.
constexpr std::array<std::string_view, 5> kCauseFollows{
    "Failed to get mesh role, error: ", "Failed to get network context: ",
    "use US to instead. error: ",       "Failed to get backhaul swap, default false: ",
    "Failed to update config, error: ",
};

void CutCause(std::string& line) {
  for (const std::string_view text : kCauseFollows) {
    const std::size_t place = line.find(text);
    if (place != std::string::npos) line.erase(place + text.size());
  }
}

bool Parses(const std::string& text) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  return reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
}

void RequireWholeDocuments(const Tree& files) {
  for (const auto& [path, entry] : files) {
    if (IsDocument(path) && !Parses(entry.content)) throw std::runtime_error("no JSON: " + path);
  }
}

MigrationRun AskOnce(const Device& device, const Programs& programs, long failing_call) {
  Manner manner;
  manner.environment = {"FAILING_CALL=" + std::to_string(failing_call)};
  return Migrate(device, programs.rules, programs.tamper, manner);
}

}  // namespace

Outcome WithoutCauses(Outcome outcome) {
  for (std::string& line : outcome.log) CutCause(line);
  CutCause(outcome.err);
  return outcome;
}

bool RulesOracle::Allows(const Outcome& outcome) const {
  if (outcome == undisturbed) return true;
  const Outcome bare = WithoutCauses(outcome);
  return std::any_of(with_failed_service.begin(), with_failed_service.end(),
                     [&](const Outcome& allowed) { return allowed == bare; });
}

std::vector<const Tree*> RulesOracle::Trees() const {
  std::vector<const Tree*> trees{&undisturbed.files};
  for (const Outcome& outcome : with_failed_service) trees.push_back(&outcome.files);
  return trees;
}

RulesOracle AskRules(const Device& device, const Programs& programs, unsigned workers) {
  RulesOracle oracle;
  oracle.undisturbed = Migrate(device, programs.migration, programs.tamper).outcome;

  RequireWholeDocuments(oracle.undisturbed.files);

  const MigrationRun all_pass = AskOnce(device, programs, 0);
  if (!(all_pass.outcome == oracle.undisturbed)) {
    throw std::runtime_error("the program whose services fail does not do what the program does:\n" +
                             Difference(oracle.undisturbed, all_pass.outcome));
  }
  const auto counted = all_pass.scratch.find("/tmp/service-calls");
  if (counted == all_pass.scratch.end()) throw std::runtime_error("no services were counted");

  const auto calls = static_cast<std::size_t>(std::stoul(counted->second.content));
  const std::vector<std::string> texts = DoInWorkers(calls, workers, [&](std::size_t call) {
    return ToText(WithoutCauses(AskOnce(device, programs, static_cast<long>(call) + 1).outcome));
  });
  for (const std::string& text : std::set(texts.begin(), texts.end())) {
    oracle.with_failed_service.push_back(FromText(text));
    RequireWholeDocuments(oracle.with_failed_service.back().files);
  }
  return oracle;
}

}  // namespace lab::sweeps
