#include "lab/fleets/compare.h"

#include <optional>
#include <ostream>
#include <set>

#include "lab/fleets/device_queue.h"
#include "lab/reports/discretion.h"
#include "lab/runs/pool.h"
#include "lab/text/json.h"
#include "lab/text/utf8.h"

namespace lab::fleets {
namespace {

/// How a result begins that is no line of JSON but the reason why there is none.
constexpr char kNotCompared = '!';

constexpr std::string_view kWifiFolder = "/usr/kelp/etc/wifi/";

class Comparison {
 public:
  Comparison(const RunResult& old_run, const RunResult& new_run) : old_run_(old_run), new_run_(new_run) {}

  std::vector<Difference> Take() { return std::move(differences_); }

  void Texts(const std::string& what, const std::string& was, const std::string& now) {
    if (was != now) differences_.push_back({what, was, now});
  }

  void Documents(const std::string& name, const std::string& was, const std::string& now) {
    const auto was_document = ParseJson(was);
    const auto now_document = ParseJson(now);
    if (was_document && now_document) {
      Values(name, "", *was_document, *now_document);
    } else if (was != now) {
      differences_.push_back({name, was_document ? "JSON" : "no JSON", now_document ? "JSON" : "no JSON"});
    }
  }

 private:
  /// Most devices have no difference at all.
  const Discretion& Masks() {
    if (!masks_) {
      masks_.emplace(Discretion::Choice{}, old_run_.after);
      masks_->Learn(new_run_.before);
      masks_->Learn(new_run_.after);
    }
    return *masks_;
  }

  std::string ValueText(const Json::Value& value, const std::string& member) {
    if (value.isObject() || value.isArray()) return value.isObject() ? "{...}" : "[...]";
    const Json::Value shown = Masks().Member(member, value);
    return shown.isString() ? JsonString(shown.asString()) : JsonLine(shown);
  }

  void Values(const std::string& path, const std::string& member, const Json::Value& was,
              const Json::Value& now) {
    if (was.isObject() && now.isObject()) {
      Members(path, was, now);
    } else if (was.isArray() && now.isArray()) {
      Elements(path, member, was, now);
    } else if (was != now) {
      differences_.push_back({path, ValueText(was, member), ValueText(now, member)});
    }
  }

  void Members(const std::string& path, const Json::Value& was, const Json::Value& now) {
    std::set<std::string> names;
    for (const Json::Value* value : {&was, &now}) {
      for (std::string& name : value->getMemberNames()) names.insert(std::move(name));
    }
    for (const std::string& name : names) {
      std::string inner = path;
      inner.append(".").append(name);
      if (was.isMember(name) && now.isMember(name)) {
        Values(inner, name, was[name], now[name]);
      } else {
        differences_.push_back({inner, was.isMember(name) ? ValueText(was[name], name) : "",
                                now.isMember(name) ? ValueText(now[name], name) : ""});
      }
    }
  }

  void Elements(const std::string& path, const std::string& member, const Json::Value& was,
                const Json::Value& now) {
    for (Json::ArrayIndex i = 0; i < std::max(was.size(), now.size()); ++i) {
      const std::string element_path = path + "[" + std::to_string(i) + "]";
      if (i < was.size() && i < now.size()) {
        Values(element_path, member, was[i], now[i]);
      } else {
        differences_.push_back({element_path, i < was.size() ? ValueText(was[i], member) : "",
                                i < now.size() ? ValueText(now[i], member) : ""});
      }
    }
  }

  const RunResult& old_run_;
  const RunResult& new_run_;
  std::optional<Discretion> masks_;
  std::vector<Difference> differences_;
};

std::string LogText(const Record& record) {
  JsonWriter json;
  json.BeginArray();
  for (const NumberedLine& line : record.log) {
    json.Add(std::to_string(line.number) + " <" + std::to_string(line.severity) + "> " + line.text);
  }
  return json.End().Text();
}

std::string EndText(const Record& record) {
  std::string text(OutcomeName(record.outcome));
  if (record.status) text += ", status " + std::to_string(*record.status);
  if (record.signal) text += ", signal " + std::to_string(*record.signal);
  return JsonString(text);
}

/// How an entry that is no document looks from outside.
std::string EntryText(const Entry* entry) {
  if (entry == nullptr) return "";
  static constexpr std::string_view kKinds[] = {"file", "folder", "link", "other"};
  return JsonString(std::string(kKinds[static_cast<std::size_t>(entry->kind)]) + " of " +
                    std::to_string(entry->content.size()) + " bytes, mode " + std::to_string(entry->mode));
}

const Entry* Find(const Tree& tree, const std::string& path) {
  const auto found = tree.find(path);
  return found == tree.end() ? nullptr : &found->second;
}

bool IsDocument(const std::string& path) {
  return path.starts_with(kWifiFolder) && path.find(".json") != std::string::npos;
}

void CompareFiles(Comparison& comparison, const Tree& was, const Tree& now) {
  std::set<std::string> paths;
  for (const Tree* tree : {&was, &now}) {
    for (const auto& [path, entry] : *tree) paths.insert(path);
  }
  for (const std::string& path : paths) {
    const Entry* const old_entry = Find(was, path);
    const Entry* const new_entry = Find(now, path);
    if (old_entry != nullptr && new_entry != nullptr && *old_entry == *new_entry) continue;
    const bool are_both = old_entry != nullptr && new_entry != nullptr;
    if (are_both && IsDocument(path)) {
      comparison.Documents(path.substr(kWifiFolder.size()), old_entry->content, new_entry->content);
      if (old_entry->mode == new_entry->mode && old_entry->kind == new_entry->kind) continue;
    }
    std::string old_text = EntryText(old_entry);
    std::string new_text = EntryText(new_entry);
    if (are_both && old_text == new_text) new_text.insert(new_text.size() - 1, ", other content");
    comparison.Texts(path, old_text, new_text);
  }
}

ComparedDevice ParseComparedLine(const std::string& line) {
  const Json::Value json = ParseJson(line).value();
  ComparedDevice device{json["image"].asString(), json["from"].asString(), {}};
  for (const Json::Value& difference : json["differences"]) {
    device.differences.push_back(
        {difference["what"].asString(), difference["old"].asString(), difference["new"].asString()});
  }
  return device;
}

}  // namespace

std::vector<Difference> Compare(const Record& old_record, const RunResult& old_run, const Record& new_record,
                                const RunResult& new_run) {
  Comparison comparison(old_run, new_run);
  comparison.Texts("outcome", EndText(old_record), EndText(new_record));
  comparison.Texts("error", JsonString(old_record.error), JsonString(new_record.error));
  comparison.Texts("log", LogText(old_record), LogText(new_record));
  CompareFiles(comparison, old_run.after, new_run.after);
  return comparison.Take();
}

bool CompareFleet(const FleetOptions& options, const std::filesystem::path& old_program,
                  const std::filesystem::path& new_program,
                  const std::function<void(const ComparedDevice&)>& tell, std::ostream& messages) {
  bool is_whole = true;
  const auto complain = [&](const std::string& text) {
    is_whole = false;
    messages << "devicelab: " << PrintableLine(text) << std::endl;
  };
  RequireOverlays(options.rehearsal);
  DeviceQueue queue(options.images, options.from, complain);
  RehearsalOptions old_options = options.rehearsal;
  old_options.program = old_program;
  RehearsalOptions new_options = options.rehearsal;
  new_options.program = new_program;
  const PoolCallbacks callbacks{
      .work = [&](const std::string& task) -> std::string {
        const DeviceSource source = FromMessage(task);
        // One after the other in the same place, so that nothing but the program differs.
        RunResult old_run;
        RunResult new_run;
        const Record old_record = DeviceRehearsal(old_options).Rehearse(source, old_run);
        const Record new_record = DeviceRehearsal(new_options).Rehearse(source, new_run);
        if (old_record.outcome == Outcome::UnusableImage && new_record.outcome == Outcome::UnusableImage) {
          return kNotCompared + new_record.error;
        }
        return ComparedLine(
            {old_record.image, old_record.from, Compare(old_record, old_run, new_record, new_run)});
      },
      .on_result =
          [&](const std::string& result) {
            // Nothing was found out about a device that neither program could be tried on.
            result.front() == kNotCompared ? complain(result.substr(1)) : tell(ParseComparedLine(result));
          },
      .on_failure = [&](const std::string& task,
                        const std::string& reason) { complain(FromMessage(task).image + ": " + reason); },
  };
  const PoolTasks tasks = ToPoolTasks(queue, [](const DeviceSource&) { return true; });
  if (RunPool(tasks, options.jobs, callbacks) == PoolStatus::Interrupted) complain("interrupted");
  return is_whole;
}

std::string ComparedLine(const ComparedDevice& device) {
  JsonWriter json;
  json.BeginObject().Member("schema", 1).Member("image", device.image).Member("from", device.from);
  json.Name("differences").BeginArray();
  for (const Difference& difference : device.differences) {
    json.BeginObject()
        .Member("what", difference.what)
        .Member("old", difference.was)
        .Member("new", difference.now)
        .End();
  }
  return json.End().End().Text();
}

}  // namespace lab::fleets
