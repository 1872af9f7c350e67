// What the script and the program ask of the kernel is what the unit lets them: a call that is not ends them
// by a signal, on the device alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "tests/first_boot/booted_device.h"
#include "tests/support/child_process.h"

namespace first_boot {
namespace {

using ::testing::IsEmpty;

using Names = std::set<std::string>;

/// The calls of systemd's set, those of the sets in it too.
Names CallsOf(const std::string& set) {
  Names calls;
  std::istringstream lines(
      testing_support::Shell("systemd-analyze --no-pager syscall-filter '" + set + "'").output);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string name;
    if (!line.starts_with(" ") || !(words >> name) || name == "#") continue;
    if (name.starts_with("@")) {
      calls.merge(CallsOf(name));
    } else {
      calls.insert(name);
    }
  }
  return calls;
}

/// A first SystemCallFilter= names what is allowed, one with a tilde what of that is not.
Names AllowedByUnit() {
  Names allowed;
  std::ifstream unit(KELP_FIRST_BOOT ".service");
  const std::string key = "SystemCallFilter=";
  for (std::string line; std::getline(unit, line);) {
    if (!line.starts_with(key)) continue;
    std::string sets = line.substr(key.size());
    const bool is_denied = sets.starts_with("~");
    std::istringstream words(sets.substr(is_denied ? 1 : 0));
    for (std::string set; words >> set;) {
      for (const std::string& call : CallsOf(set)) {
        if (is_denied) {
          allowed.erase(call);
        } else {
          allowed.insert(call);
        }
      }
    }
  }
  return allowed;
}

/// The names of the calls in what strace recorded of several processes.
Names CallsIn(const std::string& record) {
  Names calls;
  std::istringstream lines(record);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t begin = line.find_first_not_of("0123456789 ");
    const std::size_t end = line.find('(');
    if (begin == std::string::npos || end == std::string::npos || end < begin) continue;
    const std::string name = line.substr(begin, end - begin);
    if (name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_") == std::string::npos)
      calls.insert(name);
  }
  return calls;
}

TEST(UnitOfTheFirstBoot, LetsEveryCallThroughThatAMigrationMakes) {
  if (testing_support::Shell("command -v systemd-analyze").status != 0)
    GTEST_SKIP() << "this machine has no systemd-analyze";
  const Names allowed = AllowedByUnit();
  ASSERT_TRUE(allowed.contains("rename"));
  ASSERT_FALSE(allowed.contains("mount"));
  for (const auto& [name, build] : {std::pair{"tri-band-mesh-router", "8000"}, {"release-13-mesh", "9000"}}) {
    lab::PrivateRoot device = Upgraded(name, build);
    device.ProvideFile("/dev/null");
    lab::RunOptions recorded;
    recorded.wrapper = {"/usr/bin/strace", "-f", "-o", "/tmp/record"};
    const lab::RunResult boot = Boot(device, Shell::Dash, "", recorded);
    ExpectQuiet(boot);
    EXPECT_EQ(Result(device), std::string("migrated 1 ") + build + "\n");
    Names calls = CallsIn(boot.after.at("/tmp/record").content);
    EXPECT_TRUE(calls.contains("rename") && calls.contains("fsync")) << calls.size();
    for (const std::string& call : allowed) calls.erase(call);
    EXPECT_THAT(calls, IsEmpty());
  }
}

}  // namespace
}  // namespace first_boot
