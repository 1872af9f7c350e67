#include "lab/reports/household_json.h"

#include <json/value.h>

#include "lab/household/message_kinds.h"
#include "lab/household/schemas.h"
#include "lab/reports/report.h"
#include "lab/text/json.h"
#include "lab/text/utf8.h"

namespace lab {
namespace {

/// A document's value with texts that are safe and UTF-8.
Json::Value Safe(const Json::Value& value) {
  if (value.isString()) return PrintableLine(value.asString());
  Json::Value safe = value;
  if (value.isArray()) {
    for (Json::ArrayIndex place = 0; place < value.size(); ++place) safe[place] = Safe(value[place]);
  } else if (value.isObject()) {
    safe = Json::Value(Json::objectValue);
    for (const std::string& name : value.getMemberNames()) safe[PrintableLine(name)] = Safe(value[name]);
  }
  return safe;
}

void AddValue(JsonWriter& json, const Json::Value& value) {
  if (value.isString()) {
    json.Add(PrintableLine(value.asString()));
  } else if (value.isBool()) {
    json.Add(value.asBool());
  } else if (value.isInt()) {
    json.Add(value.asInt());
  } else {
    json.AddJson(JsonLine(Safe(value)));
  }
}

void AddSettings(JsonWriter& json, const char* name, const std::vector<Setting>& settings) {
  json.Name(name).BeginArray();
  for (const Setting& setting : settings) {
    json.BeginObject().Member("decidedByAllBands", setting.decided_elsewhere);
    json.Member("fellBack", setting.IsLost());
    if (!setting.key.empty()) json.Member("file", PrintableLine(setting.file)).Member("key", setting.key);
    json.Member("meaning", setting.Meaning()).Member("member", setting.member).Name("now");
    AddValue(json, setting.now);
    json.Member("title", setting.Title()).Name("was");
    setting.was ? json.Add(PrintableLine(*setting.was)) : json.AddJson("null");
    json.End();
  }
  json.End();
}

void AddParts(JsonWriter& json, const std::vector<HouseholdReport::Part>& parts) {
  json.Name("radios").BeginArray();
  for (const HouseholdReport::Part& part : parts) {
    json.BeginObject().Member("file", PrintableLine(part.file)).Member("frequency", part.frequency);
    json.Member("name", RadioName(part.frequency));
    AddSettings(json, "settings", part.settings);
    json.End();
  }
  json.End();
}

void AddNetworks(JsonWriter& json, const std::vector<HouseholdReport::Network>& networks) {
  json.Name("networks").BeginArray();
  for (const HouseholdReport::Network& network : networks) {
    json.BeginObject().Member("guest", network.is_guest).Member("name", PrintableLine(network.name));
    AddParts(json, network.radios);
    AddSettings(json, "settings", network.settings);
    json.End();
  }
  json.End();
}

void AddFilters(JsonWriter& json, const std::vector<HouseholdReport::FilterProfile>& filters) {
  json.Name("macFilterProfiles").BeginArray();
  for (const HouseholdReport::FilterProfile& filter : filters) {
    json.BeginObject().Name("devices").AddJson(JsonLine(Safe(filter.devices))).Member("id", filter.id);
    json.Member("name", PrintableLine(filter.name)).Member("policy", filter.policy).End();
  }
  json.End();
}

void AddTexts(JsonWriter& json, const char* name, const std::vector<std::string>& texts) {
  json.Name(name).BeginArray();
  for (const std::string& text : texts) json.Add(PrintableLine(text));
  json.End();
}

void AddFindings(JsonWriter& json, const std::vector<HouseholdReport::FindingGroup>& findings) {
  json.Name("findings").BeginArray();
  for (const auto& [kind, cause, places] : findings) {
    json.BeginObject().Name("cause");
    cause != nullptr ? json.Add(cause->id) : json.AddJson("null");
    json.Member("id", kind->id).Member("meaning", kind->meaning);
    AddTexts(json, "places", places);
    json.Member("remedy", kind->remedy).Member("severity", SeverityName(kind->severity));
    json.Member("title", kind->title).End();
  }
  json.End();
}

void AddLog(JsonWriter& json, const std::vector<HouseholdReport::Message>& log) {
  json.Name("log").BeginArray();
  for (const HouseholdReport::Message& line : log) {
    const MessageKind* const kind = FindMessageKind(line.number);
    json.BeginObject();
    if (kind != nullptr) json.Member("cause", kind->cause).Member("effect", line.effect);
    json.Member("number", line.number);
    if (kind != nullptr) json.Member("remedy", kind->remedy);
    json.Member("severity", SeverityName(line.severity)).Member("text", PrintableLine(line.text)).End();
  }
  json.End();
}

void AddFiles(JsonWriter& json, const TreeDiff& files) {
  json.Name("files").BeginObject();
  AddTexts(json, "changed", files.changed);
  json.Name("moved").BeginArray();
  for (const TreeDiff::Move& move : files.moved) {
    json.BeginObject().Member("from", PrintableLine(move.from)).Member("to", PrintableLine(move.to)).End();
  }
  json.End();
  AddTexts(json, "removed", files.removed);
  AddTexts(json, "written", files.written);
  json.End();
}

}  // namespace

// Written as it is told: a tree of values would cost as much as the rest of the report. Members are in the
// order of their names, as the library has them.
std::string ToJson(const HouseholdReport& report) {
  JsonWriter json(JsonWriter::Strings::Ascii);
  json.BeginObject();
  AddSettings(json, "device", report.device);
  json.Member("error", Printable(report.error));
  AddFiles(json, report.files);
  AddFindings(json, report.findings);
  json.Member("from", PrintableLine(report.from)).Member("image", PrintableLine(report.image));
  AddLog(json, report.log);
  AddFilters(json, report.filters);
  AddNetworks(json, report.networks);
  json.Member("outcome", OutcomeName(report.outcome));
  AddParts(json, report.radios);
  json.Member("schema", 1).Member("signal", report.signal);
  json.Member("standardError", Printable(report.err)).Member("standardOutput", Printable(report.out));
  json.Member("status", report.status);
  AddSettings(json, "wps", report.wps);
  return json.End().Text();
}

}  // namespace lab
