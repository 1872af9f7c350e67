#include "lab/experiments/effects.h"

#include <map>
#include <utility>

#include "lab/household/run_view.h"
#include "lab/images/private_root.h"
#include "lab/images/tree_lookup.h"
#include "lab/runs/pool.h"
#include "lab/runs/program_run.h"
#include "lab/text/base64.h"
#include "lab/text/json.h"

namespace lab {
namespace {

/// Stands for the network document, whose name ends in the topology.
const std::string kNetworks = "network.json";

/// What came out of a run, as it is compared.
struct Observed {
  int status = 0;
  std::string error;
  std::map<std::string, std::string> members;
  std::string network_document;
  std::set<std::string> moved;
  std::vector<std::string> log;
};

/// A list of devices moves as a whole: one that goes shifts all behind it.
bool IsList(const Json::Value& value, const std::string& path) {
  return !value.isArray() || value.empty() || !value[0].isObject() || path.ends_with(".devices");
}

void Flatten(const Json::Value& value, const std::string& path, std::map<std::string, std::string>& members) {
  if (value.isObject()) {
    for (const std::string& name : value.getMemberNames()) {
      Flatten(value[name], path + "." + name, members);
    }
  } else if (!IsList(value, path)) {
    for (Json::ArrayIndex place = 0; place < value.size(); ++place) {
      Flatten(value[place], path + "[" + std::to_string(place) + "]", members);
    }
  } else {
    members[path] = value.toStyledString();
  }
}

Observed Observe(const RunResult& run, const std::string& from) {
  const RunView view(run, from);
  Observed observed;
  observed.status = run.signal != 0 ? -run.signal : run.status;
  observed.error = run.err;
  for (const char* name : kDocuments) {
    if (const Json::Value* const document = view.Document(name)) Flatten(*document, name, observed.members);
  }
  if (const Json::Value* const networks = view.Document(view.NetworkDocument())) {
    Flatten(*networks, kNetworks, observed.members);
    observed.network_document = view.NetworkDocument();
  }
  for (const TreeDiff::Move& move : Diff(run.before, run.after).moved) observed.moved.insert(move.from);
  for (const LogLine& line : run.log) observed.log.push_back(line.message);
  return observed;
}

std::string WithoutLineEnd(std::string text) {
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

void Compare(const Observed& usual, const Observed& varied, Effect& effect) {
  if (varied.status != usual.status || varied.error != usual.error) {
    effect.otherwise.insert(varied.status == 0 ? "the update succeeds"
                                               : "the update ends with: " + WithoutLineEnd(varied.error));
    // What was not written because the run stopped before tells nothing.
    if (varied.members.size() < usual.members.size()) return;
  }
  const auto moved = [&](const std::string& member) {
    const bool is_network = member.starts_with(kNetworks);
    effect.members.insert(is_network ? usual.network_document + member.substr(kNetworks.size()) : member);
  };
  for (const auto& [member, value] : usual.members) {
    const auto other = varied.members.find(member);
    if (other == varied.members.end() || other->second != value) moved(member);
  }
  for (const auto& [member, value] : varied.members) {
    if (!usual.members.contains(member)) moved(member);
  }
  if (varied.network_document != usual.network_document) {
    effect.otherwise.insert("the network document's name");
  }
  if (varied.moved != usual.moved) effect.otherwise.insert("which files are archived");
  if (varied.log != usual.log) effect.otherwise.insert("the log");
}

/// What the input moves, against the run that is `usual`.
Effect EffectOf(const Input& input, const Observed& usual, const Tree& device,
                const std::filesystem::path& program, const std::string& from) {
  Effect effect;
  for (const Variation& variation : input.variations) {
    Tree varied = device;
    const std::string path = ResolvePath(varied, variation.path).value();
    if (variation.content) {
      varied.at(path).content = *variation.content;
    } else {
      varied.erase(path);
    }
    Compare(usual, Observe(RunOn(varied, program, from), from), effect);
  }
  return effect;
}

// Between processes, as texts that may hold any bytes.

Json::Value Encoded(const std::set<std::string>& texts) {
  Json::Value json(Json::arrayValue);
  for (const std::string& text : texts) json.append(ToBase64(text));
  return json;
}

std::set<std::string> Decoded(const Json::Value& json) {
  std::set<std::string> texts;
  for (const Json::Value& text : json) texts.insert(FromBase64(text.asString()).value());
  return texts;
}

}  // namespace

RunResult RunOn(const Tree& device, const std::filesystem::path& program, const std::string& from) {
  PrivateRoot root(device);
  return RunProgram(root, program, {"--update-config", from});
}

std::vector<Effect> FindEffects(const Tree& device, const std::vector<Input>& inputs,
                                const std::filesystem::path& program, const std::string& from,
                                unsigned workers) {
  const Observed usual = Observe(RunOn(device, program, from), from);
  const std::vector<std::string> found = ParallelMap(inputs.size(), workers, [&](std::size_t index) {
    const Effect effect = EffectOf(inputs[index], usual, device, program, from);
    Json::Value json;
    json["members"] = Encoded(effect.members);
    json["otherwise"] = Encoded(effect.otherwise);
    return JsonLine(json);
  });
  std::vector<Effect> effects;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const Json::Value json = ParseJson(found[i]).value();
    effects.push_back(
        {inputs[i].file, inputs[i].entry, Decoded(json["members"]), Decoded(json["otherwise"])});
  }
  return effects;
}

}  // namespace lab
