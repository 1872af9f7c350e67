// The commands by which docs/integration.md migrates a device again, on a device as a first run left it.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tests/end_to_end/updater_run.h"
#include "tests/support/child_process.h"

namespace end_to_end {
namespace {

std::string ReplaceAll(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t place = text.find(what); place != std::string::npos;
       place = text.find(what, place + by.size())) {
    text.replace(place, what.size(), by);
  }
  return text;
}

/// The indented lines behind that heading, for a device whose files stand below `root`, but for the last one,
/// which runs the program.
std::string DocumentedCommands(const std::string& root) {
  std::ifstream file(KELP_INTEGRATION_GUIDE);
  std::string commands;
  std::string last;
  bool is_behind_heading = false;
  for (std::string line; std::getline(file, line);) {
    is_behind_heading = is_behind_heading || line == "### To migrate again";
    if (!is_behind_heading || !line.starts_with("    ")) {
      if (!last.empty()) break;
      continue;
    }
    commands += last;
    last = line + '\n';
  }
  EXPECT_EQ(last, "    kelpwifiupdater --update-config \"$old_build\"\n");
  for (const char* folder : {"/usr/kelp/", "/etc/hostapd/"})
    commands = ReplaceAll(commands, folder, root + folder);
  return commands;
}

class MigratingAgain : public ::testing::TestWithParam<const char*> {};

TEST_P(MigratingAgain, GivesWhatTheFirstRunGave) {
  lab::PrivateRoot device(Image(GetParam()));
  const lab::RunResult first = UpdateFrom(device, "8000");
  ExpectSuccess(first);

  const testing_support::ShellResult shell =
      testing_support::Shell("set -eu\n" + DocumentedCommands(device.Path().native()));
  ASSERT_EQ(shell.status, 0) << shell.output;
  const lab::RunResult second = UpdateFrom(device, "8000");

  ExpectSuccess(second);
  EXPECT_EQ(second.log.size(), first.log.size());
  EXPECT_EQ(second.after, first.after);
  // Nothing was left over but the empty archive.
  lab::Tree before = second.before;
  EXPECT_EQ(before.erase("/usr/kelp/etc/wifi/legacy"), 1U);
  EXPECT_EQ(before, first.before);
}

INSTANTIATE_TEST_SUITE_P(SampleDevices, MigratingAgain,
                         ::testing::Values("dual-band-standalone", "tri-band-mesh-router",
                                           "tri-band-repeater"));

}  // namespace
}  // namespace end_to_end
