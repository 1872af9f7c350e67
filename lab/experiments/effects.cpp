#include "lab/experiments/effects.h"

#include <json/reader.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>

#include "lab/household/run_view.h"
#include "lab/images/private_root.h"
#include "lab/images/tree_lookup.h"
#include "lab/runs/program_run.h"

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

class Experiment {
 public:
  Experiment(const Tree& device, const std::vector<Input>& inputs, const std::filesystem::path& program,
             std::string from)
      : device_(device), inputs_(inputs), program_(program), from_(std::move(from)), effects_(inputs.size()) {
    usual_ = Observe(RunOn(device_, program_, from_), from_);
  }

  std::vector<Effect> Run(unsigned workers) {
    {
      std::vector<std::jthread> threads;
      for (unsigned worker = 0; worker < std::max(workers, 1U); ++worker) {
        threads.emplace_back([this] { Work(); });
      }
    }
    if (failure_) std::rethrow_exception(failure_);
    return std::move(effects_);
  }

 private:
  void Work() {
    try {
      for (std::size_t number = next_++; number < inputs_.size(); number = next_++) Try(number);
    } catch (...) {
      next_ = inputs_.size();
      const std::lock_guard lock(mutex_);
      if (!failure_) failure_ = std::current_exception();
    }
  }

  void Try(std::size_t number) {
    const Input& input = inputs_[number];
    Effect& effect = effects_[number];
    effect.file = input.file;
    effect.entry = input.entry;
    for (const Variation& variation : input.variations) {
      Tree device = device_;
      const std::string path = ResolvePath(device, variation.path).value();
      if (variation.content) {
        device.at(path).content = *variation.content;
      } else {
        device.erase(path);
      }
      Compare(usual_, Observe(RunOn(device, program_, from_), from_), effect);
    }
  }

  const Tree& device_;
  const std::vector<Input>& inputs_;
  const std::filesystem::path& program_;
  std::string from_;
  Observed usual_;
  std::vector<Effect> effects_;
  std::atomic<std::size_t> next_ = 0;
  std::mutex mutex_;
  std::exception_ptr failure_;
};

}  // namespace

RunResult RunOn(const Tree& device, const std::filesystem::path& program, const std::string& from) {
  PrivateRoot root(device);
  return RunProgram(root, program, {"--update-config", from});
}

std::vector<Effect> FindEffects(const Tree& device, const std::vector<Input>& inputs,
                                const std::filesystem::path& program, const std::string& from,
                                unsigned workers) {
  return Experiment(device, inputs, program, from).Run(workers);
}

}  // namespace lab
