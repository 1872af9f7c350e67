#include "lab/fleets/record.h"

#include "lab/text/json.h"

namespace lab::fleets {
namespace {

constexpr int kSchema = 1;

/// Quotation marks within a text have a backslash before them, so this is in no text.
constexpr std::string_view kHousehold = ",\"household\":";

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

}  // namespace

std::string RecordLine(const Record& record) {
  JsonWriter json;
  json.BeginObject()
      .Member("schema", kSchema)
      .Member("image", record.image)
      .Member("from", record.from)
      .Member("outcome", OutcomeName(record.outcome))
      .Member("status", record.status)
      .Member("signal", record.signal)
      .Member("error", record.error)
      .Name("log")
      .BeginArray();
  for (const NumberedLine& line : record.log) {
    json.BeginObject()
        .Member("number", line.number)
        .Member("severity", line.severity)
        .Member("text", line.text)
        .End();
  }
  json.End()
      .Texts("documents", record.documents)
      .Texts("archived", record.archived)
      .Texts("findings", record.findings)
      .Member("milliseconds", record.milliseconds);
  if (!record.household.empty()) json.Name("household").AddJson(record.household);
  return json.End().Text();
}

std::optional<Record> ParseRecord(std::string_view line) {
  // A household is most of a line and comes last. It is looked into by whoever shows it.
  const std::size_t end = line.ends_with("}}") ? line.find(kHousehold) : std::string_view::npos;
  const bool has_household = end != std::string_view::npos;
  const std::string head = std::string(line.substr(0, end)) + (has_household ? "}" : "");
  const Json::Value json = ParseJson(head).value_or(Json::Value());
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
  if (has_household) {
    record.household = line.substr(end + kHousehold.size(), line.size() - end - kHousehold.size() - 1);
  } else if (const Json::Value& household = json["household"]; !household.isNull()) {
    record.household = JsonLine(household);
  }
  if (!reader.IsGood() || !outcome) return std::nullopt;
  record.outcome = *outcome;
  return record;
}

}  // namespace lab::fleets
