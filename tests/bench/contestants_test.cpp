// What is measured side by side does the same.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "bench/contestant.h"
#include "bench/peer_check.h"
#include "bench/stopwatch.h"
#include "bench/system_calls.h"

namespace bench {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Gt;
using ::testing::IsEmpty;
using ::testing::Lt;

bool HasShellTools() {
  return std::ranges::all_of(std::initializer_list<const char*>{"/usr/bin/dash", "/usr/bin/jq"},
                             [](const char* tool) { return ::access(tool, X_OK) == 0; });
}

Device Sample(const std::string& name) {
  return {std::filesystem::path(KELP_DEVICES) / name, "8000"};
}

/// One of the samples fails on purpose, with all documents written.
lab::Tree Outcome(const Device& device, const Contestant& contestant) {
  lab::PrivateRoot root = MakeRoot(device.image, contestant);
  lab::RunOptions options;
  options.wrapper = kNoWrapper;
  return lab::RunProgram(root, contestant.program, contestant.arguments, options).after;
}

class ShellScript : public ::testing::TestWithParam<const char*> {};

TEST_P(ShellScript, WritesWhatTheProgramWrites) {
  if (!HasShellTools()) GTEST_SKIP() << "dash or jq is missing (scripts/setup bench installs them)";
  const Device device = Sample(GetParam());

  const lab::Tree program = Outcome(device, MakeProgram(device));
  const lab::Tree peer = Outcome(device, MakePeer());

  EXPECT_TRUE(program.contains("/usr/kelp/etc/wifi/wps.json"));
  EXPECT_THAT(DocumentDifferences(program, peer), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Samples, ShellScript,
                         ::testing::Values("dual-band-standalone", "tri-band-mesh-router",
                                           "tri-band-repeater", "dual-band-bridge", "failing-archive"),
                         [](const auto& device) {
                           std::string name = device.param;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

TEST(OtherDevices, GetTheSameDocumentsFromBoth) {
  if (!HasShellTools()) GTEST_SKIP() << "dash or jq is missing (scripts/setup bench installs them)";
  const Device device = Sample("tri-band-mesh-router");
  for (const auto variant : {OnSparseDevice, OnBareDevice}) {
    const lab::Tree program = Outcome(device, variant(device.image, MakeProgram(device)));
    const lab::Tree peer = Outcome(device, variant(device.image, MakePeer()));
    EXPECT_TRUE(program.contains("/usr/kelp/etc/wifi/wps.json"));
    EXPECT_THAT(DocumentDifferences(program, peer), IsEmpty());
  }
}

TEST(OtherDevices, HaveEmptyAccessPointFilesOrNone) {
  const Device device = Sample("tri-band-mesh-router");
  constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00";
  const Contestant program = MakeProgram(device);

  EXPECT_NE(MakeRoot(device.image, program).Read(kFile), "");
  EXPECT_EQ(MakeRoot(device.image, OnSparseDevice(device.image, program)).Read(kFile), "");
  const Contestant bare = OnBareDevice(device.image, program);
  lab::PrivateRoot root = MakeRoot(device.image, bare);
  EXPECT_FALSE(root.Snapshot().contains(kFile));
  EXPECT_EQ(RunContestant(root, bare, kNoWrapper).status, 1);
}

TEST(Floor, LeavesTheDeviceAsTheProgramDoes) {
  if (!CanCountSystemCalls()) GTEST_SKIP() << "strace is missing (scripts/setup bench installs it)";
  const Device device = Sample("tri-band-mesh-router");
  const Recording recording = Record(device.image, MakeProgram(device));

  const Contestant floor = MakeFloor(recording.inputs, recording.run);
  lab::PrivateRoot root = MakeRoot(device.image, floor);
  lab::Tree after = RunContestant(root, floor, kNoWrapper).after;

  lab::Tree expected = recording.run.after;
  for (lab::Tree* tree : {&after, &expected}) {
    std::erase_if(*tree, [](const auto& entry) { return !entry.first.starts_with("/usr/kelp/"); });
  }
  EXPECT_EQ(after, expected);
}

TEST(Floor, FlushesAsOftenAsTheProgram) {
  if (!CanCountSystemCalls()) GTEST_SKIP() << "strace is missing (scripts/setup bench installs it)";
  const Device device = Sample("tri-band-mesh-router");
  const Contestant program = MakeProgram(device);
  const Recording recording = Record(device.image, program);

  const int flushes = Flushes(CountSystemCalls(device.image, MakeFloor(recording.inputs, recording.run)));

  EXPECT_EQ(flushes, 6);
  EXPECT_EQ(flushes, Flushes(recording.from_main));
  EXPECT_EQ(flushes, Flushes(CountSystemCalls(device.image, program)));
}

TEST(Recording, NamesTheInputsInTheOrderOfTheirFirstOpens) {
  if (!CanCountSystemCalls()) GTEST_SKIP() << "strace is missing (scripts/setup bench installs it)";
  const Device device = Sample("tri-band-mesh-router");

  const Recording recording = Record(device.image, MakeProgram(device));

  EXPECT_EQ(recording.inputs.front(), "/usr/kelp/etc/info.conf");
  EXPECT_THAT(recording.inputs, Contains("/etc/hostapd/mac_filter/mf_deny.conf"));
  EXPECT_EQ(recording.opens.size(), recording.inputs.size());
  EXPECT_THAT(recording.libraries, Contains(::testing::HasSubstr("libjsoncpp.so")));
}

TEST(Stopwatch, TellsWhatARunCosts) {
  const Device device = Sample("tri-band-mesh-router");

  const Cost cost = Measure(device.image, MakeProgram(device));

  EXPECT_GT(cost.wall_nanoseconds, 0);
  EXPECT_GT(cost.cpu_microseconds, 0);
  EXPECT_THAT(cost.peak_kilobytes, AllOf(Gt(1024), Lt(1024 * 1024)));
}

TEST(RunContestant, TellsWhyAContestantFailed) {
  const Device device{Sample("failing-archive")};
  const Contestant program = MakeProgram(device);
  lab::PrivateRoot root = MakeRoot(device.image, program);

  EXPECT_THAT([&] { RunContestant(root, program, kNoWrapper); },
              ::testing::ThrowsMessage<std::runtime_error>(::testing::HasSubstr("lbd.guest.conf")));
}

}  // namespace
}  // namespace bench
