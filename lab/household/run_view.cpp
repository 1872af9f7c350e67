#include "lab/household/run_view.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "lab/household/access_point_file.h"
#include "lab/household/legacy_words.h"
#include "lab/household/message_kinds.h"
#include "lab/images/tree_lookup.h"
#include "lab/text/ascii.h"
#include "lab/text/json.h"

namespace lab {
namespace {

/// Whether `written` is the key, with white space around it or in letters of another case.
bool IsSpelling(std::string_view written, std::string_view key) {
  return TrimBlanks(written).size() == key.size() && NormalizeValue(written) == ToLowerAscii(key);
}

/// A file in which carriage returns alone end the lines is a single line to the program.
bool HasOnlyCarriageReturns(std::string_view text) {
  return text.find('\r') != std::string_view::npos && text.find('\n') == std::string_view::npos;
}

}  // namespace

std::string NetworkView::Key(std::string_view key) const {
  return (is_guest && key != "pmf_mode" ? "guest_" : "") + std::string(key);
}

std::string StoredValue::Word() const {
  return std::string(TrimBlanks(value.value_or("")));
}

std::string StoredValue::Detail() const {
  return DetailWithoutValue() + (value ? "=" + *value : " is missing");
}

std::string StoredValue::DetailWithoutValue() const {
  return BaseName(file) + ": " + key;
}

RunView::RunView(const RunResult& run, std::string_view build) : run_(run), asked_(RequestOf(build)) {
  log_.reserve(run.log.size());
  for (const LogLine& line : run.log) log_.push_back(ParseNumberedLine(line));
  ReadDocuments();
  const bool has_documents = !network_document_.empty() || Document("misc.json") != nullptr;
  is_whole_ =
      Logged(kMigrationBegun) || (asked_ == Request::Everything && !WasMigratedBefore() && has_documents);
  FindNetworks();
  FindRadios();
}

bool RunView::Logged(int number) const {
  return std::ranges::any_of(log_, [=](const NumberedLine& line) { return line.number == number; });
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

bool RunView::WasMigratedBefore() const {
  const std::string folder = kWifiFolder;
  return run_.before.contains(folder + "global.json") || run_.before.contains(folder + "misc.json");
}

bool RunView::IsOfGlobalFiles() const {
  const std::string path = std::string(kWifiFolder) + "global.json";
  const Entry* const written = FindFile(run_.after, path);
  const Entry* const former = FindFile(run_.before, path);
  return asked_ == Request::GlobalFiles && written != nullptr && (former == nullptr || *former != *written);
}

bool RunView::Failed() const {
  return run_.status != 0;
}

const RunView::LegacyFile& RunView::FileAt(const std::string& path) const {
  const auto [place, is_new] = files_.try_emplace(path);
  LegacyFile& file = place->second;
  if (!is_new) return file;
  const Entry* const entry = FindFile(run_.before, path);
  file.is_there = entry != nullptr;
  if (!file.is_there) return file;
  file.text = entry->content;
  file.entries = ParseKeyValueText(file.text);
  for (const LegacyEntry& one : file.entries) file.first.try_emplace(one.key, &one);
  if (HasOnlyCarriageReturns(file.text)) {
    std::string text(file.text);
    std::ranges::replace(text, '\r', '\n');
    file.split = ParseKeyValueText(text);
  }
  return file;
}

bool RunView::Had(const std::string& path) const {
  return FileAt(path).is_there;
}

bool RunView::HadEntries(const std::string& path) const {
  return !FileAt(path).entries.empty();
}

std::string_view RunView::TextOf(const std::string& path) const {
  return FileAt(path).text;
}

std::optional<std::string> RunView::LegacyValue(const std::string& path, std::string_view key) const {
  const auto& first = FileAt(path).first;
  const auto found = first.find(key);
  if (found == first.end()) return std::nullopt;
  return found->second->value;
}

StoredValue RunView::Stored(const std::string& path, const std::string& key) const {
  const LegacyFile& file = FileAt(path);
  StoredValue stored;
  stored.file = path;
  stored.key = key;
  const bool is_split = !file.split.empty();
  if (!is_split) stored.value = LegacyValue(path, key);
  stored.has_carriage_return = is_split || (stored.value && stored.value->ends_with('\r'));
  if (stored.value) return stored;
  for (const LegacyEntry& entry : is_split ? file.split : file.entries) {
    if (!IsSpelling(entry.key, key)) continue;
    stored.key = entry.key;
    stored.value = entry.value;
    stored.is_key_exact = false;
    stored.has_carriage_return = is_split || entry.value.ends_with('\r');
    break;
  }
  return stored;
}

bool RunView::HasKeyWithPrefix(const std::string& path, std::string_view prefix) const {
  return std::ranges::any_of(FileAt(path).entries,
                             [=](const LegacyEntry& entry) { return entry.key.starts_with(prefix); });
}

const Json::Value* RunView::Document(const std::string& name) const {
  const auto document = documents_.find(name);
  return document == documents_.end() ? nullptr : &document->second;
}

void RunView::ReadDocument(const std::string& name) {
  const Entry* const file = FindFile(run_.after, kWifiFolder + name);
  if (file == nullptr) return;
  if (auto document = ParseJson(file->content)) documents_.emplace(name, std::move(*document));
}

void RunView::ReadDocuments() {
  for (const char* name : kDocuments) ReadDocument(name);
  const Json::Value* const misc = Document("misc.json");
  for (const char* name : kNetworkDocuments) {
    ReadDocument(name);
    if (!documents_.contains(name)) continue;
    // An earlier run may have left one of another topology beside it.
    const bool is_named = misc != nullptr && name == kNetworkDocumentPrefix + TextIn(*misc, "netTopology");
    if (network_document_.empty() || is_named) network_document_ = name;
  }
}

std::vector<std::string> RunView::MissingDocuments() const {
  std::vector<std::string> missing;
  for (const char* name : kDocuments) {
    if (Document(name) == nullptr) missing.emplace_back(name);
  }
  if (network_document_.empty()) missing.emplace_back("network.json");
  return missing;
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
