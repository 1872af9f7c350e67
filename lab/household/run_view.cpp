#include "lab/household/run_view.h"

#include <json/reader.h>

#include <algorithm>
#include <array>
#include <memory>

#include "lab/household/access_point_file.h"
#include "lab/household/message_kinds.h"
#include "lab/images/tree_lookup.h"

namespace lab {
namespace {

constexpr int kMigrationBegun = 229;

/// Of longer words the log may hold the beginning only.
constexpr std::size_t kLongestWord = std::size_t{100} * 1024;

constexpr std::array<const char*, 4> kDocuments{"global.json", "misc.json", "radio.json", "wps.json"};
constexpr std::array<const char*, 3> kNetworkDocuments{"network.json.default", "network.json.bridge",
                                                       "network.json.repeater"};

}  // namespace

std::optional<Json::Value> ParseDocument(std::string_view text) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value document;
  std::string errors;
  try {
    if (reader->parse(text.data(), text.data() + text.size(), &document, &errors)) return document;
  } catch (const Json::Exception&) {  // nested too deep
  }
  return std::nullopt;
}

std::string NetworkView::Key(std::string_view key) const {
  return (is_guest && key != "pmf_mode" ? "guest_" : "") + std::string(key);
}

RunView::RunView(const RunResult& run) : run_(run) {
  for (const LogLine& line : run.log) log_.push_back(ParseNumberedLine(line));
  ReadDocuments();
  FindNetworks();
  FindRadios();
}

bool RunView::Logged(int number) const {
  return std::ranges::any_of(log_, [=](const NumberedLine& line) { return line.number == number; });
}

bool RunView::Logged(int number, std::string_view argument) const {
  argument = argument.substr(0, argument.find('\0'));
  return std::ranges::any_of(LoggedArguments(number), [&](const std::string& told) {
    return told == argument || (told.size() > kLongestWord && argument.starts_with(told));
  });
}

std::vector<std::string> RunView::LoggedArguments(int number) const {
  std::vector<std::string> told;
  const MessageKind* const kind = FindMessageKind(number);
  for (const NumberedLine& line : log_) {
    if (kind == nullptr || line.number != number) continue;
    std::string argument = MessageArgument(*kind, line.text);
    if (std::ranges::find(told, argument) == told.end()) told.push_back(std::move(argument));
  }
  return told;
}

bool RunView::IsWholeMigration() const {
  return Logged(kMigrationBegun);
}

bool RunView::IsOfGlobalFiles() const {
  const std::string path = std::string(kWifiFolder) + "global.json";
  const Entry* const written = FindFile(run_.after, path);
  const Entry* const former = FindFile(run_.before, path);
  return !IsWholeMigration() && written != nullptr && (former == nullptr || *former != *written);
}

bool RunView::Failed() const {
  return run_.status != 0;
}

bool RunView::Had(const std::string& path) const {
  return FindFile(run_.before, path) != nullptr;
}

std::string_view RunView::TextOf(const std::string& path) const {
  const Entry* const file = FindFile(run_.before, path);
  return file == nullptr ? std::string_view() : std::string_view(file->content);
}

bool RunView::HadEntries(const std::string& path) const {
  return !EntriesOf(path).empty();
}

const std::vector<LegacyEntry>& RunView::EntriesOf(const std::string& path) const {
  const auto [place, is_new] = entries_.try_emplace(path);
  if (is_new) place->second = ParseKeyValueText(TextOf(path));
  return place->second;
}

std::optional<std::string> RunView::Was(const std::string& path, std::string_view key) const {
  return FindValue(EntriesOf(path), key);
}

const Json::Value* RunView::Document(const std::string& name) const {
  const auto document = documents_.find(name);
  return document == documents_.end() ? nullptr : &document->second;
}

void RunView::ReadDocument(const std::string& name) {
  const Entry* const file = FindFile(run_.after, kWifiFolder + name);
  if (file == nullptr) return;
  if (auto document = ParseDocument(file->content)) documents_.emplace(name, std::move(*document));
}

void RunView::ReadDocuments() {
  for (const char* name : kDocuments) ReadDocument(name);
  const Json::Value* const misc = Document("misc.json");
  for (const char* name : kNetworkDocuments) {
    ReadDocument(name);
    if (!documents_.contains(name)) continue;
    // An earlier run may have left one of another topology beside it.
    const bool is_named = misc != nullptr && name == "network.json." + TextIn(*misc, "netTopology");
    if (network_document_.empty() || is_named) network_document_ = name;
  }
}

RadioView RunView::PartOf(const Json::Value& now) const {
  const Json::Value* const global = Document("global.json");
  const bool is_orchid = global != nullptr && TextIn(*global, "defaultModel") == "ORCHID";
  RadioView part;
  part.frequency = NumberIn(now, "frequency", 0);
  part.file = AccessPointFile(run_.before, is_orchid, part.frequency);
  part.now = &now;
  return part;
}

void RunView::FindNetworks() {
  const Json::Value* const document = Document(network_document_);
  if (document == nullptr || !document->isArray()) return;
  for (const Json::Value& now : *document) {
    if (!now.isObject()) continue;
    NetworkView network{NumberIn(now, "kind", 0) == 1, &now, {PartOf(now)}};
    const Json::Value& radios = now["featureSettings"];
    if (radios.isArray()) {
      for (const Json::Value& radio : radios) network.radios.push_back(PartOf(radio));
    }
    networks_.push_back(std::move(network));
  }
}

void RunView::FindRadios() {
  const Json::Value* const document = Document("radio.json");
  if (document == nullptr || !document->isArray()) return;
  for (const Json::Value& now : *document) radios_.push_back(PartOf(now));
}

std::string TextIn(const Json::Value& object, const char* member) {
  if (!object.isObject() || !object[member].isString()) return "";
  return object[member].asString();
}

int NumberIn(const Json::Value& object, const char* member, int otherwise) {
  if (!object.isObject() || !object[member].isInt()) return otherwise;
  return object[member].asInt();
}

bool FlagIn(const Json::Value& object, const char* member) {
  return object.isObject() && object[member].isBool() && object[member].asBool();
}

}  // namespace lab
