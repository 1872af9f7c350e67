#include "lab/fleets/record.h"

#include <json/json.h>

#include <memory>

#include "lab/fleets/json_text.h"

namespace lab::fleets {
namespace {

constexpr int kSchema = 1;

std::string Number(const std::optional<int>& number) {
  return number ? std::to_string(*number) : "null";
}

std::string TextArray(const std::vector<std::string>& texts) {
  std::string json = "[";
  for (const std::string& text : texts) json += (json.size() > 1 ? "," : "") + JsonText(text);
  return json + "]";
}

std::string LogArray(const std::vector<NumberedLine>& log) {
  std::string json = "[";
  for (const NumberedLine& line : log) {
    if (json.size() > 1) json += ",";
    json += "{\"number\":" + std::to_string(line.number) + ",\"severity\":" + std::to_string(line.severity) +
            ",\"text\":" + JsonText(line.text) + "}";
  }
  return json + "]";
}

/// Reads the members of a line; what is missing or of another kind makes it none.
class Reader {
 public:
  explicit Reader(const Json::Value& line) : line_(line) {}

  bool IsGood() const { return is_good_; }

  std::string Text(const char* name) { return TextOf(line_[name]); }

  std::int64_t Integer(const char* name) { return IntegerOf(line_[name]); }

  std::optional<int> IntegerOrNull(const char* name) {
    const Json::Value& value = line_[name];
    if (value.isNull() && line_.isMember(name)) return std::nullopt;
    return static_cast<int>(IntegerOf(value));
  }

  std::vector<std::string> Texts(const char* name) {
    std::vector<std::string> texts;
    for (const Json::Value& value : Array(line_[name])) texts.push_back(TextOf(value));
    return texts;
  }

  std::vector<NumberedLine> Log() {
    std::vector<NumberedLine> log;
    for (const Json::Value& entry : Array(line_["log"])) {
      if (!entry.isObject()) {
        is_good_ = false;
        break;
      }
      log.push_back({static_cast<int>(IntegerOf(entry["number"])),
                     static_cast<int>(IntegerOf(entry["severity"])), TextOf(entry["text"])});
    }
    return log;
  }

 private:
  std::string TextOf(const Json::Value& value) {
    if (value.isString()) return value.asString();
    is_good_ = false;
    return "";
  }

  std::int64_t IntegerOf(const Json::Value& value) {
    if (value.isInt64()) return value.asInt64();
    is_good_ = false;
    return 0;
  }

  const Json::Value& Array(const Json::Value& value) {
    if (value.isArray()) return value;
    is_good_ = false;
    return Json::Value::nullSingleton();
  }

  const Json::Value& line_;
  bool is_good_ = true;
};

Json::Value Parse(std::string_view text) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  try {
    if (!reader->parse(text.data(), text.data() + text.size(), &value, nullptr)) return {};
  } catch (const Json::Exception&) {
    return {};  // nested too deep
  }
  return value;
}

}  // namespace

std::string RecordLine(const Record& record) {
  std::string line = "{\"schema\":" + std::to_string(kSchema);
  line += ",\"image\":" + JsonText(record.image);
  line += ",\"from\":" + JsonText(record.from);
  line += ",\"outcome\":" + JsonText(OutcomeName(record.outcome));
  line += ",\"status\":" + Number(record.status);
  line += ",\"signal\":" + Number(record.signal);
  line += ",\"error\":" + JsonText(record.error);
  line += ",\"log\":" + LogArray(record.log);
  line += ",\"documents\":" + TextArray(record.documents);
  line += ",\"archived\":" + TextArray(record.archived);
  line += ",\"findings\":" + TextArray(record.findings);
  line += ",\"milliseconds\":" + std::to_string(record.milliseconds);
  if (!record.household.empty()) line += ",\"household\":" + record.household;
  return line + "}";
}

std::optional<Record> ParseRecord(std::string_view line) {
  const Json::Value json = Parse(line);
  if (!json.isObject()) return std::nullopt;
  Reader reader(json);
  if (reader.Integer("schema") != kSchema) return std::nullopt;
  Record record;
  record.image = reader.Text("image");
  record.from = reader.Text("from");
  const auto outcome = OutcomeNamed(reader.Text("outcome"));
  record.status = reader.IntegerOrNull("status");
  record.signal = reader.IntegerOrNull("signal");
  record.error = reader.Text("error");
  record.log = reader.Log();
  record.documents = reader.Texts("documents");
  record.archived = reader.Texts("archived");
  record.findings = reader.Texts("findings");
  record.milliseconds = reader.Integer("milliseconds");
  if (const Json::Value& household = json["household"]; !household.isNull()) {
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    writer["emitUTF8"] = true;
    record.household = Json::writeString(writer, household);
  }
  if (!reader.IsGood() || !outcome) return std::nullopt;
  record.outcome = *outcome;
  return record;
}

}  // namespace lab::fleets
