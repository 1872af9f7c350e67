// The power goes at each of the script's own steps: what it did since the last flush is there in part then.
// The next boot has to bring the household to where an undisturbed migration brings it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "tests/first_boot/booted_device.h"

namespace first_boot {
namespace {

using ::testing::IsEmpty;

const std::string kSteps = "/tmp/steps";

/// A step that changes names, or the flush of all.
struct Step {
  std::string tool;
  std::vector<std::string> paths;
};

/// Counts the script's steps, writes each one down, and cuts the power before the one that is named in "cut".
const std::string kCountSteps =
    "n=0\n"
    "step() { n=$((n + 1)); [ $n != \"$cut\" ] || kill -9 $$; echo \"$*\" >>/tmp/steps; }\n"
    "mv() { step mv \"$@\"; command mv \"$@\"; }\n"
    "rm() { step rm \"$@\"; command rm \"$@\"; }\n"
    "sync() { step sync; }\n"
    "program=run\n"
    "run() { [ \"$cut\" != program ] || { kill -9 $$; exit; }; /usr/sbin/kelpwifiupdater \"$@\"; }\n";

std::vector<Step> StepsIn(const std::string& text) {
  std::vector<Step> steps;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    Step step;
    words >> step.tool;
    for (std::string word; words >> word;) {
      if (word.starts_with("/")) step.paths.push_back(word);
    }
    steps.push_back(step);
  }
  return steps;
}

bool HoldsContent(const lab::Tree& tree, const std::string& content) {
  return std::any_of(tree.begin(), tree.end(), [&](const auto& file) {
    return file.first.starts_with(kState) && file.second.content == content;
  });
}

/// Lets a step reach the disk. A record whose bytes were not flushed before its name is an empty file then.
void Reach(lab::Tree& tree, const Step& step, const lab::Tree& flushed) {
  if (step.tool == "rm") {
    std::erase_if(tree, [&](const auto& file) {
      return std::any_of(step.paths.begin(), step.paths.end(), [&](const std::string& path) {
        return file.first == path || file.first.starts_with(path + "/");
      });
    });
    return;
  }
  const auto from = tree.find(step.paths.at(0));
  if (from == tree.end()) return;
  lab::Entry entry = from->second;
  tree.erase(from);
  if (step.paths[1].starts_with(kState) && !HoldsContent(flushed, entry.content)) entry.content.clear();
  tree[step.paths[1]] = entry;
}

class Boots {
 public:
  Boots(lab::Tree device, Shell shell) : device_(std::move(device)), shell_(shell) {}

  /// What a boot leaves that breaks off before the step.
  lab::Tree CutAt(const std::string& step) const {
    lab::PrivateRoot root = FromTree(device_);
    return Boot(root, shell_, "cut=" + step + "\n" + kCountSteps).after;
  }

  /// Every state that a power cut may leave, each once.
  std::vector<lab::Tree> States() const {
    const lab::Tree undisturbed = CutAt("never");
    const std::vector<Step> steps = StepsIn(undisturbed.at(kSteps).content);
    std::vector<lab::Tree> before;  // the device before each step
    for (std::size_t i = 1; i <= steps.size(); ++i) before.push_back(CutAt(std::to_string(i)));
    before.push_back(undisturbed);

    std::vector<lab::Tree> states{CutAt("program")};
    for (std::size_t done = 0; done <= steps.size(); ++done) {
      std::size_t open = done;  // the first step since the last flush
      while (open > 0 && steps[open - 1].tool != "sync") --open;
      const lab::Tree& flushed = open > 0 ? before[open - 1] : device_;
      const std::vector<Step> pending(steps.begin() + static_cast<std::ptrdiff_t>(open),
                                      steps.begin() + static_cast<std::ptrdiff_t>(done));
      AddStates(before[open], pending, flushed, states);
      states.push_back(before[done]);
    }
    for (lab::Tree& state : states) {
      std::erase_if(state, [](const auto& file) { return file.first.starts_with("/tmp"); });
    }
    std::vector<lab::Tree> different;
    for (const lab::Tree& state : states) {
      if (std::find(different.begin(), different.end(), state) == different.end()) different.push_back(state);
    }
    return different;
  }

 private:
  /// Nothing of what is pending, each step alone, all but each, and all.
  static void AddStates(const lab::Tree& base, const std::vector<Step>& pending, const lab::Tree& flushed,
                        std::vector<lab::Tree>& states) {
    for (std::size_t chosen = 0; chosen <= pending.size(); ++chosen) {
      lab::Tree alone = base;
      lab::Tree others = base;
      for (std::size_t i = 0; i < pending.size(); ++i)
        Reach(i == chosen ? alone : others, pending[i], flushed);
      states.push_back(alone);
      states.push_back(others);
    }
  }

  lab::Tree device_;
  Shell shell_;
};

class BrokenFirstBoot : public ::testing::TestWithParam<Shell> {
 protected:
  void SetUp() override {
    if (!IsThere(GetParam())) GTEST_SKIP() << "this machine has no busybox";
  }

  /// After every broken boot of the device the next one finishes.
  void ExpectEveryBrokenBootIsMended(const lab::Tree& device, const lab::Tree& whole, std::size_t least) {
    const std::vector<lab::Tree> states = Boots(device, GetParam()).States();
    EXPECT_GE(states.size(), least);
    for (const lab::Tree& state : states) {
      const auto result = state.find(kResult);
      SCOPED_TRACE(result == state.end() ? "no result" : result->second.content);
      lab::PrivateRoot root = FromTree(state);
      const lab::RunResult boot = Boot(root, GetParam());
      ExpectQuiet(boot);
      EXPECT_THAT(Differing(Household(boot.after), whole), IsEmpty());
      EXPECT_EQ(Result(root).substr(0, 9), "migrated ");
      if (HasFailure()) return;
    }
  }
};
INSTANTIATE_TEST_SUITE_P(Shells, BrokenFirstBoot, ::testing::Values(Shell::Dash, Shell::Busybox),
                         [](const auto& shell) { return shell.param == Shell::Dash ? "dash" : "busybox"; });

/// The power went when the program had done all, and before that was recorded.
lab::Tree CutBehindTheProgram(lab::PrivateRoot device, Shell shell) {
  return Boot(device, shell, "program=run\nrun() { /usr/sbin/kelpwifiupdater \"$@\"; kill -9 $$; exit; }\n")
      .after;
}

lab::Tree Whole(std::string_view name, const std::string& build) {
  lab::PrivateRoot device = Upgraded(name, build);
  return Household(Migrate(device, build).after);
}

TEST_P(BrokenFirstBoot, AtEachStepOfTheFirstAttempt) {
  for (const auto& [name, build] : {std::pair{"tri-band-mesh-router", "8000"}, {"release-13-mesh", "9000"}}) {
    SCOPED_TRACE(name);
    ExpectEveryBrokenBootIsMended(Upgraded(name, build).Snapshot(), Whole(name, build), 6);
  }
}

TEST_P(BrokenFirstBoot, AtEachStepOfPuttingBackWhatWasArchived) {
  const lab::Tree cut = CutBehindTheProgram(Upgraded("tri-band-mesh-router", "8000"), GetParam());
  ASSERT_EQ(cut.at(kResult).content, "running 1 8000\n");
  ExpectEveryBrokenBootIsMended(cut, Whole("tri-band-mesh-router", "8000"), 20);
}

TEST_P(BrokenFirstBoot, AtEachStepOfPuttingBackTheHalfOfIt) {
  lab::Tree cut = CutBehindTheProgram(Upgraded("tri-band-mesh-router", "8000"), GetParam());
  const std::string archive = kWifi + "legacy/";
  for (const char* name : {"wifi_wps", "wifi_nvram"}) {
    cut[kWifi + name] = cut.at(archive + name);
    cut.erase(archive + name);
  }
  cut.erase(kWifi + "wps.json");
  cut[kWifi + "wps.json.new"] = {lab::Entry::Kind::File, 0600, "{"};
  ExpectEveryBrokenBootIsMended(cut, Whole("tri-band-mesh-router", "8000"), 20);
}

TEST_P(BrokenFirstBoot, AtEachStepBehindTheRemovalsOfGeneration13) {
  const lab::Tree whole = Whole("release-13-mesh", "9000");
  const lab::Tree before = Upgraded("release-13-mesh", "9000").Snapshot();
  const lab::Tree cut = CutBehindTheProgram(Upgraded("release-13-mesh", "9000"), GetParam());
  for (const char* left : {"none", "model.json", "country.json"}) {
    SCOPED_TRACE(left);
    lab::Tree device = cut;
    const auto file = before.find(kWifi + left);
    if (file != before.end()) device.insert(*file);
    ExpectEveryBrokenBootIsMended(device, whole, 3);
  }
}

}  // namespace
}  // namespace first_boot
