#include "lab/sweeps/fault_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/lab/sweeps/recorded_calls.h"

namespace lab::sweeps {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

std::vector<std::string> NamesOf(const std::vector<Fault>& faults) {
  std::vector<std::string> names;
  for (const Fault& fault : faults) names.push_back(NameOf(fault));
  return names;
}

Fault Planned(const std::vector<std::string>& lines, const std::string& name) {
  for (const Fault& fault : PlanFaults(Calls(lines), 0)) {
    if (NameOf(fault) == name) return fault;
  }
  ADD_FAILURE() << "not planned: " << name;
  return {};
}

const std::vector<std::string> kWritingRun{
    "openat(AT_FDCWD, '/usr/kelp/etc/wifi/', O_RDONLY|O_CLOEXEC|O_DIRECTORY) = 3",
    "openat(3, 'misc.json.new', O_WRONLY|O_CREAT|O_EXCL|O_NOFOLLOW|O_CLOEXEC, 0600) = 4",
    "write(4, '{}', 2) = 2",
    "fsync(4) = 0",
    "close(4) = 0",
    "renameat(3, 'misc.json.new', 3, 'misc.json') = 0",
    "close(3) = 0",
};

TEST(PlanFaults, TriesEachErrorOfACall) {
  EXPECT_THAT(NamesOf(PlanFaults(Calls({"flock(3, LOCK_EX) = 0"}), 0)),
              UnorderedElementsAre("flock:1:EAGAIN", "flock:1:EINTR", "flock:1:ENOLCK", "flock:1+:ENOLCK",
                                   "all:1:short=61"));
}

TEST(PlanFaults, LetsEachCallFailFromThereOnWithAnotherError) {
  const auto names = NamesOf(
      PlanFaults(Calls({"flock(3, LOCK_EX) = 0", "flock(3, LOCK_UN) = 0", "flock(3, LOCK_EX) = 0"}), 0));
  EXPECT_THAT(names, IsSupersetOf({"flock:1+:ENOLCK", "flock:2+:EAGAIN", "flock:3+:ENOLCK"}));
  EXPECT_THAT(names, Not(Contains("flock:2+:EINTR")));  // it would wait for ever, and no kernel does so
}

TEST(PlanFaults, LetsWritesTakeNothingOnceAndForGood) {
  EXPECT_EQ(Planned(kWritingRun, "write:1:nothing").duty, Fault::Duty::None);
  EXPECT_EQ(Planned(kWritingRun, "write:1+:nothing").duty, Fault::Duty::Fail);
  EXPECT_THAT(NamesOf(PlanFaults(Calls({"read(3, 'text', 9) = 4"}), 0)), Not(Contains("read:1:nothing")));
}

TEST(PlanFaults, CountsTheStepsThatTheRunHadMade) {
  std::vector<std::string> run = kWritingRun;
  run.emplace_back("mkdir('/usr/kelp/etc/wifi/legacy', 0755) = 0");
  run.emplace_back("rename('/usr/kelp/etc/wifi/wifi_wps', '/usr/kelp/etc/wifi/legacy/wifi_wps') = 0");
  EXPECT_EQ(Planned(run, "write:1:EIO").steps_before, 0U);
  EXPECT_EQ(Planned(run, "renameat:1:EIO").steps_before, 0U);
  EXPECT_EQ(Planned(run, "mkdir:1:EIO").steps_before, 1U);
  EXPECT_EQ(Planned(run, "rename:1:EIO").steps_before, 2U);
}

TEST(PlanFaults, ShortensTransfersToOneByteAndToTheirHalf) {
  const auto names = NamesOf(PlanFaults(Calls({"read(3, 'nine byte', 512) = 9", "read(3, '', 503) = 0"}), 0));
  EXPECT_THAT(names, Contains("read:1:short=1"));
  EXPECT_THAT(names, Contains("read:1:short=4"));
  EXPECT_THAT(names, Not(Contains("read:2:short=1")));
}

TEST(PlanFaults, LeavesTheLoaderAlone) {
  const auto calls = Calls({"mmap(NULL, 1, PROT_READ, MAP_PRIVATE, -1, 0) = 0x7000", "poll([], 0, 0) = 0"});
  EXPECT_THAT(NamesOf(PlanFaults(calls, 1)), ElementsAre("poll:1:EINTR", "poll:1:EINVAL", "poll:1:ENOMEM",
                                                         "poll:1+:ENOMEM", "all:2:short=61"));
}

TEST(PlanFaults, LeavesNoCallOutSilently) {
  EXPECT_THROW(PlanFaults(Calls({"io_uring_enter(3, 1) = 0"}), 0), std::runtime_error);
}

TEST(PlanFaults, RefusesMemoryAsTheKernelDoes) {
  const auto names = NamesOf(PlanFaults(Calls({"brk(NULL) = 0x4000", "brk(0x5000) = 0x5000"}), 0));
  EXPECT_THAT(names, UnorderedElementsAre("brk:2:short=0", "all:1:short=61", "memory:2:refused"));
}

TEST(PlanFaults, RefusesAllMemoryFromEachRequestOn) {
  const auto calls =
      Calls({"brk(0x5000) = 0x5000", "poll([], 0, 0) = 0",
             "mmap(NULL, 4096, PROT_READ|PROT_WRITE, MAP_PRIVATE|MAP_ANONYMOUS, -1, 0) = 0x7000",
             "brk(0x6000) = 0x6000"});
  EXPECT_THAT(NamesOf(PlanFaults(calls, 1)), IsSupersetOf({"memory:3:refused", "memory:4:refused"}));
  EXPECT_THAT(NamesOf(PlanFaults(calls, 1)), Not(Contains("memory:1:refused")));
  EXPECT_THAT(NamesOf(PlanFaults(Calls({"poll([], 0, 0) = 0"}), 0)), Not(Contains(HasSubstr("memory"))));
}

TEST(PlanFaults, FilesThatAreMadeMeetAFullAndAReadOnlyDisk) {
  EXPECT_EQ(Planned(kWritingRun, "openat:2:ENOSPC").call, "openat");
  EXPECT_THAT(NamesOf(PlanFaults(Calls(kWritingRun), 0)), Not(Contains("openat:1:ENOSPC")));
}

TEST(PlanFaults, AStepOfTheMigrationMayNotFailUnnoticed) {
  for (const char* const step :
       {"openat:1:EIO", "openat:2:EIO", "write:1:ENOSPC", "fsync:1:EIO", "close:1:EIO", "renameat:1:EXDEV"}) {
    EXPECT_EQ(Planned(kWritingRun, step).duty, Fault::Duty::Fail) << step;
  }
  EXPECT_EQ(Planned(kWritingRun, "close:2:EIO").duty, Fault::Duty::SameResult);  // of the folder, all is done
}

TEST(PlanFaults, AnInterruptionOrAShortTransferChangesNothing) {
  for (const char* const repeatable :
       {"write:1:EINTR", "write:1:short=1", "fsync:1:EINTR", "close:1:EINTR"}) {
    EXPECT_EQ(Planned(kWritingRun, repeatable).duty, Fault::Duty::SameResult) << repeatable;
  }
}

TEST(PlanFaults, ForgivesReadsThatTheRulesForgive) {
  const std::vector<std::string> run{"openat(AT_FDCWD, '/etc/hostapd/mac_filter/mf.info', O_RDONLY) = 3",
                                     "read(3, 'policy=deny', 512) = 11"};
  EXPECT_EQ(Planned(run, "openat:1:EACCES").duty, Fault::Duty::Forgive);
  EXPECT_EQ(Planned(run, "read:1:EIO").duty, Fault::Duty::Forgive);
}

TEST(PlanFaults, ForgivesNoOtherReads) {
  const std::vector<std::string> run{"openat(AT_FDCWD, '/usr/kelp/etc/wifi/model.json', O_RDONLY) = 3",
                                     "read(3, '{}', 512) = 2"};
  EXPECT_EQ(Planned(run, "openat:1:EACCES").duty, Fault::Duty::Fail);
  EXPECT_EQ(Planned(run, "read:1:EIO").duty, Fault::Duty::Fail);
}

TEST(PlanFaults, KnowsWhatACallIsAboutAsTheServicesNameIt) {
  const std::vector<std::string> run{
      "openat(AT_FDCWD, '/usr/kelp/etc/info.conf', O_RDONLY) = 3",
      "fstat(3, {st_mode=S_IFREG}) = 0",
      "close(3) = 0",
      "newfstatat(AT_FDCWD, '/usr/kelp/etc/wifi/legacy/', 0x1, 0) = 0",
      "rename('/usr/kelp/etc/wifi/wifi_wps', '/usr/kelp/etc/wifi/legacy/wifi_wps') = 0",
      "openat(AT_FDCWD, '/proc/sys/kernel/kelp_mac_address4', O_RDONLY) = 3",
      "clock_gettime(CLOCK_REALTIME_COARSE, {}) = 0",
      "poll([], 0, 0) = 0"};
  EXPECT_EQ(Planned(run, "openat:1:EIO").place, "/usr/kelp/etc/info.conf");
  EXPECT_EQ(Planned(run, "fstat:1:EIO").place, "/usr/kelp/etc/info.conf");
  EXPECT_EQ(Planned(run, "newfstatat:1:EIO").place, "/usr/kelp/etc/wifi/legacy");
  EXPECT_EQ(Planned(run, "rename:1:EIO").place, "/usr/kelp/etc/wifi/wifi_wps");
  EXPECT_EQ(Planned(run, "openat:2:EIO").place, "/proc/sys/kernel/kelp_mac_address");
  EXPECT_EQ(Planned(run, "poll:1:ENOMEM").place, "");
  EXPECT_EQ(Planned(kWritingRun, "write:1:EIO").place, "/usr/kelp/etc/wifi/misc.json");
  EXPECT_EQ(Planned(kWritingRun, "renameat:1:EIO").place, "/usr/kelp/etc/wifi/misc.json");
  EXPECT_EQ(Planned(kWritingRun, "close:2:EIO").place, "/usr/kelp/etc/wifi");
}

TEST(PlanFaults, KnowsTheChannelsOfAReport) {
  const std::vector<std::string> run{"socket(AF_UNIX, SOCK_DGRAM|SOCK_CLOEXEC, 0) = 3",
                                     "connect(3, {sa_family=AF_UNIX, sun_path='/dev/log'}, 110) = 0",
                                     "sendto(3, '<11>text', 8, MSG_NOSIGNAL, NULL, 0) = 8",
                                     "write(2, 'Failed', 6) = 6", "close(3) = 0"};
  for (const char* const call :
       {"socket:1:EMFILE", "connect:1:ECONNREFUSED", "sendto:1:ENOBUFS", "close:1:EIO"}) {
    EXPECT_EQ(Planned(run, call).channel, Fault::Channel::Log) << call;
  }
  EXPECT_EQ(Planned(run, "write:1:EIO").channel, Fault::Channel::StandardError);
  EXPECT_EQ(Planned(run, "write:1:EIO").duty, Fault::Duty::None);
}

TEST(PlanFaults, CountsTheStepsBeforeTheFirstCallToo) {
  std::vector<std::string> run = kWritingRun;
  run.emplace_back("mkdir('/usr/kelp/etc/wifi/legacy', 0755) = 0");
  const std::vector<Fault> faults = PlanFaults(Calls(run), run.size() - 1);
  EXPECT_EQ(faults.front().call, "mkdir");
  EXPECT_EQ(faults.front().steps_before, 1U);
}

}  // namespace
}  // namespace lab::sweeps
