// The real program on each sample device, from its files to the last byte of what is there afterwards.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <syslog.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <string>

#include "lab/images/descriptor.h"
#include "tests/end_to_end/expected_run.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/log_lines.h"

namespace end_to_end {
namespace {

struct Sample {
  std::string device;
  std::string build;
  std::string failure;  // empty for a run that succeeds
};

std::ostream& operator<<(std::ostream& out, const Sample& sample) {
  return out << sample.device;
}

class SampleDevices : public ::testing::TestWithParam<Sample> {};

TEST_P(SampleDevices, IsMigratedAsExpected) {
  const Sample& sample = GetParam();
  lab::PrivateRoot device(Image(sample.device));

  const lab::RunResult run = UpdateFrom(device, sample.build);

  if (sample.failure.empty()) {
    ExpectSuccess(run);
  } else {
    ExpectFailure(run, sample.build, sample.failure);
  }
  const ExpectedRun expected(sample.device);
  EXPECT_EQ(testing_support::PrintLog(run.log), expected.Log());
  expected.ExpectDocuments(run.after);
  expected.ExpectPaths(run);
}

TEST_P(SampleDevices, LogsUnderItsOwnNameAndTheDefaultFacility) {
  lab::PrivateRoot device(Image(GetParam().device));
  DropKey(device, kInformation, "mesh_network_role");  // which none of them passes over in silence

  const lab::RunResult run = UpdateFrom(device, GetParam().build);
  ASSERT_FALSE(run.log.empty());
  for (const lab::LogLine& line : run.log) {
    EXPECT_EQ(line.ident, "kelpwifiupdater") << line.message;
    EXPECT_EQ(line.facility, LOG_USER) << line.message;
  }
}

// Whatever the caller's umask is: what is open to nobody else, and what is not closed by it.
TEST_P(SampleDevices, DocumentsAreForTheDaemonAlone) {
  for (const mode_t umask : {0000U, 0077U, 0777U}) {
    lab::PrivateRoot device(Image(GetParam().device));
    lab::RunOptions options;
    options.umask = umask;

    const lab::RunResult run = UpdateFrom(device, GetParam().build, options);

    std::size_t documents = 0;
    for (const auto& [path, entry] : run.after) {
      const bool is_new_file = !run.before.contains(path) && entry.kind == lab::Entry::Kind::File;
      if (!is_new_file || !path.starts_with(kWifi) || path.starts_with(kArchive)) continue;
      ++documents;
      EXPECT_EQ(entry.mode, mode_t{0600}) << path;
    }
    EXPECT_EQ(documents, std::stoi(GetParam().build) < 8228 ? 5U : 1U);
  }
}

TEST_P(SampleDevices, RunsWithClosedStandardStreams) {
  lab::PrivateRoot device(Image(GetParam().device));
  lab::RunOptions options;
  options.console = lab::Console::Closed;
  options.timeout = std::chrono::seconds(20);

  const lab::RunResult run = UpdateFrom(device, GetParam().build, options);

  EXPECT_EQ(run.status, GetParam().failure.empty() ? 0 : 1);
  const ExpectedRun expected(GetParam().device);
  EXPECT_EQ(testing_support::PrintLog(run.log), expected.Log());
  expected.ExpectDocuments(run.after);
  expected.ExpectPaths(run);
}

TEST_P(SampleDevices, NoFileTakesTheNumberOfAClosedStandardStream) {
  lab::PrivateRoot device(Image(GetParam().device));
  device.MakeDirectory("/tmp");
  lab::RunOptions options;
  options.wrapper = {"strace",
                     "-o",
                     "/tmp/record",
                     "-e",
                     "trace=open,openat,socket",
                     "sh",
                     "-c",
                     R"(exec "$0" "$@" <&- >&- 2>&-)"};
  options.environment.emplace_back("ASAN_OPTIONS=detect_leaks=0");  // which cannot be had under strace

  const lab::RunResult run = UpdateFrom(device, GetParam().build, options);

  EXPECT_EQ(run.status, GetParam().failure.empty() ? 0 : 1);
  std::istringstream record(run.after.at("/tmp/record").content);
  int opened = 0;
  for (std::string call; std::getline(record, call);) {
    const bool is_of_the_run = call.find("\"/usr/kelp/etc") != std::string::npos ||
                               call.find("\"/etc/hostapd") != std::string::npos ||
                               call.find("AF_UNIX") != std::string::npos;
    if (!is_of_the_run || call.find("= -1") != std::string::npos) continue;
    ++opened;
    EXPECT_GT(std::stoi(call.substr(call.rfind("= ") + 2)), 2) << call;
  }
  EXPECT_GT(opened, 5);
}

TEST_P(SampleDevices, RunsWithoutALogDaemon) {
  lab::PrivateRoot device(Image(GetParam().device));
  lab::RunOptions options;
  options.collect_log = false;

  const lab::RunResult run = UpdateFrom(device, GetParam().build, options);

  EXPECT_EQ(run.status, GetParam().failure.empty() ? 0 : 1);
  const ExpectedRun expected(GetParam().device);
  expected.ExpectDocuments(run.after);
  expected.ExpectPaths(run);
}

/// Dates everything on the device; gives whether the file system has room for such a date. For a program of
/// 32 bits the boot environment keeps its date: libubootenv looks at it with the types that it was itself
/// built with, which in Debian are the narrow ones.
bool DateEverything(const lab::PrivateRoot& device, time_t date) {
  const std::array<timespec, 2> times{timespec{date, 0}, timespec{date, 0}};
  for (const auto& entry : std::filesystem::recursive_directory_iterator(device.Path())) {
    if (ProgramHas32Bits() && entry.path().parent_path().filename() == "boot") continue;
    const char* const path = entry.path().c_str();
    lab::Checked(::utimensat(AT_FDCWD, path, times.data(), AT_SYMLINK_NOFOLLOW), "date", path);
    struct stat status {};
    lab::Checked(::lstat(path, &status), "examine", path);
    if (status.st_mtim.tv_sec != date) return false;
  }
  return true;
}

// A device's clock may have gone wild before it was set.
TEST_P(SampleDevices, IsMigratedWhateverDatesItsFilesHave) {
  constexpr time_t kBefore1970 = -86'400;
  constexpr time_t kEndOf32Bits = 2'147'483'648;
  constexpr time_t kYear2046 = 2'398'377'600;
  constexpr time_t kYear2300 = 10'413'792'000;
  for (const time_t date : {kBefore1970, kEndOf32Bits, kYear2046, kYear2300}) {
    lab::PrivateRoot device(Image(GetParam().device));
    if (!DateEverything(device, date)) GTEST_SKIP() << "the file system in $TMPDIR has no such dates";

    const lab::RunResult run = UpdateFrom(device, GetParam().build);

    const ExpectedRun expected(GetParam().device);
    EXPECT_EQ(testing_support::PrintLog(run.log), expected.Log()) << date;
    expected.ExpectDocuments(run.after);
    expected.ExpectPaths(run);
  }
}

std::string TestName(const ::testing::TestParamInfo<Sample>& sample) {
  std::string name = sample.param.device;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(
    All, SampleDevices,
    ::testing::Values(Sample{"dual-band-standalone", "8000", ""}, Sample{"tri-band-mesh-router", "8227", ""},
                      Sample{"tri-band-repeater", "7915", ""}, Sample{"dual-band-bridge", "8017", ""},
                      Sample{"failing-archive", "8000",
                             "filesystem error: cannot rename: No such file or directory "
                             "[/usr/kelp/etc/wifi/lbd.guest.conf] "
                             "[/usr/kelp/etc/wifi/legacy/lbd.guest.conf]"},
                      Sample{"release-13-mesh", "9000", ""}),
    TestName);

}  // namespace
}  // namespace end_to_end
