#include "lab/sweeps/outcome_text.h"

#include "lab/text/base64.h"
#include "lab/text/json.h"

namespace lab::sweeps {
namespace {

std::string Decoded(const Json::Value& text) {
  return FromBase64(text.asString()).value();
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

}  // namespace

std::string ToText(const Outcome& outcome) {
  Json::Value json;
  json["status"] = outcome.status;
  json["signal"] = outcome.signal;
  json["timedOut"] = outcome.timed_out;
  json["out"] = ToBase64(outcome.out);
  json["err"] = ToBase64(outcome.err);
  for (const std::string& line : outcome.log) json["log"].append(ToBase64(line));
  for (const auto& [path, entry] : outcome.files) {
    Json::Value& file = json["files"][ToBase64(path)];
    file["kind"] = static_cast<int>(entry.kind);
    file["mode"] = entry.mode;
    file["content"] = ToBase64(entry.content);
  }
  return JsonLine(json);
}

Outcome FromText(std::string_view text) {
  const Json::Value json = ParseJson(text).value();
  Outcome outcome;
  outcome.status = json["status"].asInt();
  outcome.signal = json["signal"].asInt();
  outcome.timed_out = json["timedOut"].asBool();
  outcome.out = Decoded(json["out"]);
  outcome.err = Decoded(json["err"]);
  for (const Json::Value& line : json["log"]) outcome.log.push_back(Decoded(line));
  for (const std::string& path : json["files"].getMemberNames()) {
    const Json::Value& file = json["files"][path];
    outcome.files[FromBase64(path).value()] = {static_cast<Entry::Kind>(file["kind"].asInt()),
                                               file["mode"].asUInt(), Decoded(file["content"])};
  }
  return outcome;
}

std::string Difference(const Outcome& expected, const Outcome& other) {
  std::string text;
  const auto compare = [&](const char* what, const std::string& first, const std::string& second) {
    if (first != second)
      text.append(what).append(": ").append(second).append("\n   not: ").append(first) += '\n';
  };
  compare("status", std::to_string(expected.status), std::to_string(other.status));
  compare("signal", std::to_string(expected.signal), std::to_string(other.signal));
  compare("standard output", expected.out, other.out);
  compare("standard error", expected.err, other.err);
  compare("log", Joined(expected.log), Joined(other.log));
  for (const auto& [path, entry] : expected.files) {
    const auto found = other.files.find(path);
    if (found == other.files.end()) {
      text += "missing: " + path + "\n";
    } else if (!(found->second == entry)) {
      text += "different: " + path + "\n";
    }
  }
  for (const auto& [path, entry] : other.files) {
    if (!expected.files.contains(path)) text += "unexpected: " + path + "\n";
  }
  return text;
}

}  // namespace lab::sweeps
