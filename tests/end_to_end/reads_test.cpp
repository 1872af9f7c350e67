// How often a migration asks the file system for a file of the household: once, whether it is there or not.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "tests/end_to_end/updater_run.h"

namespace end_to_end {
namespace {

constexpr const char* kStrace = "/usr/bin/strace";
constexpr const char* kRecord = "/tmp/strace.record";

class Reads : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(kStrace)) GTEST_SKIP() << "needs strace";
    if (lab::kSanitizedBuild) GTEST_SKIP() << "the leak sanitizer cannot look at what strace holds";
  }

  lab::RunResult Update() {
    lab::RunOptions options;
    options.wrapper = {kStrace, "-qq", "-s", "4096", "-e", "trace=%file,%desc", "-o", kRecord};
    lab::RunResult run = UpdateFrom(device_, "8000", options);
    record_ = device_.Read(kRecord);
    return run;
  }

  /// How often the file was looked for, opened or not; its way into the archive does not count.
  int LookedFor(const std::string& path) const {
    int count = 0;
    std::istringstream lines(record_);
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("rename")) continue;
      if (line.find('"' + path + '"') != std::string::npos) ++count;
    }
    return count;
  }

  lab::PrivateRoot device_{Image("dual-band-standalone")};
  std::string record_;
};

TEST_F(Reads, EachSettingsFileIsAskedForOnce) {
  ExpectSuccess(Update());
  for (const char* name : {"wifi_ap_00:00:00:00:00:00", "wifi_ap_d8:47:32:9a:51:e4", "wifi_wps"}) {
    EXPECT_EQ(LookedFor(kWifi + name), 1) << name;
  }
  for (const char* name : {"mf.info", "mf_guest.info", "mf.setting"}) {
    EXPECT_EQ(LookedFor(kFilters + name), 1) << name;
  }
}

TEST_F(Reads, InformationStoreIsLookedAtOnceMoreBehindTheFirstDocument) {
  ExpectSuccess(Update());
  EXPECT_EQ(LookedFor(kInformation), 2);
}

TEST_F(Reads, MissingFilesAreLookedForOnce) {
  for (const char* name : {"wifi_ap_00:00:00:00:00:00", "wifi_wps"}) device_.Remove(kWifi + name);
  for (const char* name : {"mf.info", "mf_guest.info", "mf.setting"}) device_.Remove(kFilters + name);
  EXPECT_EQ(Update().status, 1);  // the archive misses them
  for (const char* name : {"wifi_ap_00:00:00:00:00:00", "wifi_wps"}) {
    EXPECT_EQ(LookedFor(kWifi + name), 1) << name;
  }
  for (const char* name : {"mf.info", "mf_guest.info", "mf.setting"}) {
    EXPECT_EQ(LookedFor(kFilters + name), 1) << name;
  }
}

}  // namespace
}  // namespace end_to_end
