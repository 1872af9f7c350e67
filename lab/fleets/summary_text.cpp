#include <algorithm>
#include <array>
#include <cstdio>
#include <ostream>

#include "lab/fleets/counted.h"
#include "lab/fleets/summary.h"
#include "lab/household/findings.h"
#include "lab/household/message_kinds.h"
#include "lab/text/json.h"
#include "lab/text/utf8.h"

namespace lab::fleets {
namespace {

std::string Padded(std::size_t number, int width) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%*zu", width, number);
  return text.data();
}

std::string Share(std::size_t part, std::size_t whole) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%5.1f %%",
                whole == 0 ? 0.0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole));
  return text.data();
}

/// The pairs of a map, those with most devices first.
template <typename Map>
std::vector<typename Map::const_iterator> ByDevices(const Map& map) {
  std::vector<typename Map::const_iterator> entries;
  for (auto entry = map.begin(); entry != map.end(); ++entry) entries.push_back(entry);
  std::ranges::stable_sort(
      entries, [](auto left, auto right) { return left->second.devices > right->second.devices; });
  return entries;
}

/// What breaks comes before what merely changes, however many have that; last what this release does not
/// know.
int Rank(const std::string& id) {
  const FindingKind* const kind = FindFindingKind(id);
  return kind == nullptr ? static_cast<int>(Severity::Notes) + 1 : static_cast<int>(kind->severity);
}

auto BySeverity(const std::map<std::string, DeviceGroup>& findings) {
  auto entries = ByDevices(findings);
  std::ranges::stable_sort(entries,
                           [](auto left, auto right) { return Rank(left->first) < Rank(right->first); });
  return entries;
}

std::vector<std::pair<std::string, std::size_t>> ByCount(const std::map<std::string, std::size_t>& words) {
  std::vector<std::pair<std::string, std::size_t>> entries(words.begin(), words.end());
  std::ranges::stable_sort(entries,
                           [](const auto& left, const auto& right) { return left.second > right.second; });
  return entries;
}

void PrintExamples(std::ostream& out, const DeviceGroup& group) {
  out << "            " << (group.devices > group.examples.size() ? "for example " : "");
  for (std::size_t i = 0; i < group.examples.size(); ++i) {
    out << (i > 0 ? ", " : "") << PrintableLine(group.examples[i]);
  }
  out << '\n';
}

void PrintFindings(std::ostream& out, const Summary& summary) {
  if (summary.findings.empty()) return;
  out << "\nFindings\n";
  for (const auto& entry : BySeverity(summary.findings)) {
    const auto& [id, group] = *entry;
    const FindingKind* const kind = FindFindingKind(id);
    out << Padded(group.devices, 8) << "  " << Share(group.devices, summary.devices) << "  "
        << PrintableLine(id);
    if (kind == nullptr) {
      out << '\n';
    } else {
      out << " (" << SeverityName(kind->severity) << "): " << kind->title << "\n            " << kind->meaning
          << '\n';
    }
    PrintExamples(out, group);
  }
}

void PrintFailures(std::ostream& out, const Summary& summary) {
  if (summary.failures.empty()) return;
  out << "\nNot migrated\n";
  for (const auto& entry : ByDevices(summary.failures)) {
    const auto& [cause, group] = *entry;
    out << Padded(group.devices, 8) << "  " << OutcomeName(cause.first) << ": " << PrintableLine(cause.second)
        << '\n';
    PrintExamples(out, group);
  }
}

void PrintLog(std::ostream& out, const Summary& summary) {
  constexpr std::size_t kWordsShown = 10;
  if (summary.log.empty()) return;
  out << "\nLog lines\n";
  for (const auto& [number, group] : summary.log) {
    const MessageKind* const kind = FindMessageKind(number);
    out << Padded(group.lines, 8) << "  " << number << " on " << Counted(group.devices, "device")
        << (kind != nullptr ? ": " + std::string(kind->format) : "") << '\n';
    if (group.words.empty()) continue;
    out << "            ";
    const auto words = ByCount(group.words);
    for (std::size_t i = 0; i < std::min(words.size(), kWordsShown); ++i) {
      out << (i > 0 ? ", " : "") << Counted(words[i].second, "time") << " \"" << PrintableLine(words[i].first)
          << '"';
    }
    if (words.size() > kWordsShown) out << ", and " << words.size() - kWordsShown << " other words";
    out << '\n';
  }
}

void AddGroup(JsonWriter& json, const DeviceGroup& group) {
  json.Member("devices", group.devices).Texts("examples", group.examples);
}

void AddFinding(JsonWriter& json, const std::string& id, const DeviceGroup& group) {
  json.BeginObject().Member("id", id);
  if (const FindingKind* const kind = FindFindingKind(id)) {
    json.Member("title", kind->title)
        .Member("severity", SeverityName(kind->severity))
        .Member("meaning", kind->meaning)
        .Member("remedy", kind->remedy);
  }
  AddGroup(json, group);
  json.End();
}

void AddLog(JsonWriter& json, int number, const LogGroup& group) {
  json.BeginObject().Member("number", number);
  if (const MessageKind* const kind = FindMessageKind(number)) json.Member("format", kind->format);
  json.Member("lines", group.lines).Member("devices", group.devices).Name("words").BeginArray();
  for (const auto& [word, count] : ByCount(group.words)) {
    json.BeginObject().Member("word", word).Member("lines", count).End();
  }
  json.End().End();
}

}  // namespace

void PrintSummary(std::ostream& out, const Summary& summary) {
  out << Counted(summary.devices, "device") << '\n';
  if (summary.devices > 0) out << "\nOutcomes\n";
  for (const auto& [outcome, count] : summary.outcomes) {
    out << Padded(count, 8) << "  " << Share(count, summary.devices) << "  " << OutcomeName(outcome) << '\n';
  }
  PrintFailures(out, summary);
  PrintFindings(out, summary);
  PrintLog(out, summary);
}

std::string SummaryJson(const Summary& summary) {
  JsonWriter json;
  json.BeginObject().Member("schema", 1).Member("devices", summary.devices).Name("outcomes").BeginObject();
  for (const auto& [outcome, count] : summary.outcomes) json.Member(OutcomeName(outcome), count);
  json.End().Name("failures").BeginArray();
  for (const auto& entry : ByDevices(summary.failures)) {
    const auto& [cause, group] = *entry;
    json.BeginObject().Member("outcome", OutcomeName(cause.first)).Member("cause", cause.second);
    AddGroup(json, group);
    json.End();
  }
  json.End().Name("findings").BeginArray();
  for (const auto& entry : BySeverity(summary.findings)) AddFinding(json, entry->first, entry->second);
  json.End().Name("log").BeginArray();
  for (const auto& [number, group] : summary.log) AddLog(json, number, group);
  return json.End().End().Text() + "\n";
}

}  // namespace lab::fleets
