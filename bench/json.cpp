#include <json/value.h>
#include <json/writer.h>

#include "bench/report.h"

namespace bench {
namespace {

Json::Value Counts(const std::map<std::string, int>& counts) {
  Json::Value json(Json::objectValue);
  for (const auto& [name, count] : counts) json[name] = count;
  return json;
}

template <typename T>
Json::Value OrNull(const std::optional<T>& value) {
  return value ? Json::Value(*value) : Json::Value();
}

Json::Value OrNull(const std::optional<std::int64_t>& value) {
  return value ? Json::Value(Json::Int64{*value}) : Json::Value();
}

Json::Value OrNull(const std::optional<Times>& times) {
  Json::Value json;
  if (!times) return json;
  json["cpu_milliseconds"] = times->cpu_milliseconds;
  json["wall_milliseconds"] = times->wall_milliseconds;
  return json;
}

Json::Value ToValue(const Figures& figures) {
  Json::Value json;
  json["in_memory"] = OrNull(figures.in_memory);
  json["on_disk"] = OrNull(figures.on_disk);
  json["peak_kilobytes"] = Json::Int64{figures.peak_kilobytes};
  json["instructions"] = OrNull(figures.instructions);
  json["stripped_bytes"] = OrNull(figures.stripped_bytes);
  json["bytes_with_libraries"] = OrNull(figures.bytes_with_libraries);
  if (figures.calls) {
    json["system_calls"] = Counts(*figures.calls);
    json["flushes"] = Flushes(*figures.calls);
  }
  return json;
}

}  // namespace

std::string ToJson(const Comparison& comparison) {
  Json::Value json;
  json["device"] = comparison.device;
  json["runs"] = comparison.runs;
  json["program"] = ToValue(comparison.program);
  json["program"]["system_calls_from_main"] = Counts(comparison.calls_from_main);
  json["program"]["opens"] = Counts(comparison.opens);
  json["shell_script"] = ToValue(comparison.peer);
  json["floor"] = ToValue(comparison.floor);
  json["empty"] = ToValue(comparison.empty);
  for (const OtherDevice& device : comparison.others) {
    Json::Value other;
    other["device"] = device.name;
    other["instructions"] = OrNull(device.instructions);
    if (device.calls) other["system_calls"] = Counts(*device.calls);
    json["other_devices"].append(other);
  }
  for (const GrowthStep& step : comparison.growth) {
    Json::Value growth;
    growth["stations"] = step.stations;
    growth["instructions"] = Json::Int64{step.instructions};
    growth["peak_kilobytes"] = Json::Int64{step.peak_kilobytes};
    growth["ratio"] = OrNull(step.ratio);
    json["growth"].append(growth);
  }
  for (const Target& target : Targets(comparison)) {
    Json::Value value;
    value["text"] = target.text;
    value["value"] = OrNull(target.value);
    value[target.is_least ? "at_least" : "at_most"] = target.bound;
    value["met"] = target.IsMet();
    json["targets"].append(value);
  }
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "  ";
  builder["precision"] = 6;
  return Json::writeString(builder, json) + '\n';
}

}  // namespace bench
