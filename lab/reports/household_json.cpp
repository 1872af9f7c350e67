#include "lab/reports/household_json.h"

#include <json/writer.h>

#include "lab/household/message_kinds.h"
#include "lab/household/schemas.h"
#include "lab/reports/report.h"
#include "lab/reports/safe_text.h"

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

Json::Value ToJson(const Setting& setting) {
  Json::Value json;
  json["member"] = setting.member;
  json["title"] = setting.Title();
  if (!setting.key.empty()) {
    json["file"] = PrintableLine(setting.file);
    json["key"] = setting.key;
  }
  json["was"] = setting.was ? Json::Value(PrintableLine(*setting.was)) : Json::Value();
  json["now"] = Safe(setting.now);
  json["meaning"] = setting.Meaning();
  json["fellBack"] = setting.IsLost();
  json["decidedByAllBands"] = setting.decided_elsewhere;
  return json;
}

Json::Value ToJson(const std::vector<Setting>& settings) {
  Json::Value json(Json::arrayValue);
  for (const Setting& setting : settings) json.append(ToJson(setting));
  return json;
}

Json::Value ToJson(const std::vector<HouseholdReport::Part>& parts) {
  Json::Value json(Json::arrayValue);
  for (const HouseholdReport::Part& part : parts) {
    Json::Value& entry = json.append(Json::Value(Json::objectValue));
    entry["frequency"] = part.frequency;
    entry["name"] = RadioName(part.frequency);
    entry["file"] = PrintableLine(part.file);
    entry["settings"] = ToJson(part.settings);
  }
  return json;
}

Json::Value ToJson(const std::vector<HouseholdReport::Network>& networks) {
  Json::Value json(Json::arrayValue);
  for (const HouseholdReport::Network& network : networks) {
    Json::Value& entry = json.append(Json::Value(Json::objectValue));
    entry["name"] = PrintableLine(network.name);
    entry["guest"] = network.is_guest;
    entry["settings"] = ToJson(network.settings);
    entry["radios"] = ToJson(network.radios);
  }
  return json;
}

Json::Value ToJson(const std::vector<HouseholdReport::FilterProfile>& filters) {
  Json::Value json(Json::arrayValue);
  for (const HouseholdReport::FilterProfile& filter : filters) {
    Json::Value& entry = json.append(Json::Value(Json::objectValue));
    entry["id"] = filter.id;
    entry["name"] = PrintableLine(filter.name);
    entry["policy"] = filter.policy;
    entry["devices"] = Safe(filter.devices);
  }
  return json;
}

Json::Value ToJson(const std::vector<std::string>& texts) {
  Json::Value json(Json::arrayValue);
  for (const std::string& text : texts) json.append(PrintableLine(text));
  return json;
}

Json::Value ToJson(const std::vector<HouseholdReport::FindingGroup>& findings) {
  Json::Value json(Json::arrayValue);
  for (const auto& [kind, cause, places] : findings) {
    Json::Value& entry = json.append(Json::Value(Json::objectValue));
    entry["id"] = std::string(kind->id);
    entry["title"] = std::string(kind->title);
    entry["severity"] = std::string(SeverityName(kind->severity));
    entry["meaning"] = std::string(kind->meaning);
    entry["remedy"] = std::string(kind->remedy);
    entry["cause"] = cause == nullptr ? Json::Value() : Json::Value(std::string(cause->id));
    entry["places"] = ToJson(places);
  }
  return json;
}

Json::Value ToJson(const std::vector<HouseholdReport::Message>& log) {
  Json::Value json(Json::arrayValue);
  for (const HouseholdReport::Message& line : log) {
    Json::Value& entry = json.append(Json::Value(Json::objectValue));
    entry["number"] = line.number;
    entry["severity"] = std::string(SeverityName(line.severity));
    entry["text"] = PrintableLine(line.text);
    const MessageKind* const kind = FindMessageKind(line.number);
    if (kind == nullptr) continue;
    entry["cause"] = std::string(kind->cause);
    entry["effect"] = line.effect;
    entry["remedy"] = std::string(kind->remedy);
  }
  return json;
}

Json::Value ToJson(const TreeDiff& files) {
  Json::Value json;
  json["written"] = ToJson(files.written);
  json["changed"] = ToJson(files.changed);
  json["removed"] = ToJson(files.removed);
  json["moved"] = Json::Value(Json::arrayValue);
  for (const TreeDiff::Move& move : files.moved) {
    Json::Value& entry = json["moved"].append(Json::Value(Json::objectValue));
    entry["from"] = PrintableLine(move.from);
    entry["to"] = PrintableLine(move.to);
  }
  return json;
}

}  // namespace

Json::Value ToJson(const HouseholdReport& report) {
  Json::Value json;
  json["schema"] = 1;
  json["image"] = PrintableLine(report.image);
  json["from"] = PrintableLine(report.from);
  json["outcome"] = std::string(OutcomeName(report.outcome));
  json["status"] = report.status;
  json["signal"] = report.signal;
  json["error"] = Printable(report.error);
  json["standardOutput"] = Printable(report.out);
  json["standardError"] = Printable(report.err);
  json["device"] = ToJson(report.device);
  json["networks"] = ToJson(report.networks);
  json["radios"] = ToJson(report.radios);
  json["wps"] = ToJson(report.wps);
  json["macFilterProfiles"] = ToJson(report.filters);
  json["findings"] = ToJson(report.findings);
  json["log"] = ToJson(report.log);
  json["files"] = ToJson(report.files);
  return json;
}

std::string ToText(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "  ";
  return Json::writeString(builder, value) + "\n";
}

}  // namespace lab
