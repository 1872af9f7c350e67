// What a person at the console sees of a wrong call, byte for byte. Nothing of it reaches the log or the
// device.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/updater_run.h"

namespace end_to_end {
namespace {

constexpr const char* kUsage =
    "Usage: kelpwifiupdater option\n"
    "  Options: \n"
    "    --update-config oldBuildNumber     update config from old build number to current.\n"
    "\n";

void ExpectUsageError(const std::vector<std::string>& arguments, const std::string& diagnosis) {
  lab::PrivateRoot device(Image("dual-band-standalone"));

  const lab::RunResult run = RunUpdater(device, arguments);

  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, kUsage);
  EXPECT_EQ(run.err, diagnosis);
  EXPECT_TRUE(run.log.empty());
  ExpectUntouched(run);
}

TEST(Console, NoArgumentsPrintTheUsageAndNoDiagnosis) {
  ExpectUsageError({}, "");
}

TEST(Console, OptionWordIsMatchedExactly) {
  for (const std::string word :
       {"--Update-Config", "--UPDATE-CONFIG", "-update-config", "update-config", "--update-config ",
        " --update-config", "--update-confi", "--update-config=9000", "--help", "-h", "8000", "--"}) {
    ExpectUsageError({word}, "Invalid option: " + word + "\n\n");
    ExpectUsageError({word, "9000"}, "Invalid option: " + word + "\n\n");
  }
}

TEST(Console, OptionIsTheFirstArgumentAnEmptyOneToo) {
  ExpectUsageError({""}, "Invalid option: \n\n");
  ExpectUsageError({"", "--update-config", "9000"}, "Invalid option: \n\n");
  ExpectUsageError({"9300", "--update-config"}, "Invalid option: 9300\n\n");
}

TEST(Console, UnknownOptionIsShownAsItWasTyped) {
  const std::string word = "--\xFF %s%n \"x\" \\";
  ExpectUsageError({word}, "Invalid option: " + word + "\n\n");
  const std::string long_word(100'000, 'u');
  ExpectUsageError({long_word}, "Invalid option: " + long_word + "\n\n");
}

TEST(Console, MissingBuildNumberIsNamed) {
  ExpectUsageError({"--update-config"}, "Need to provide build number.\n\n");
}

TEST(Console, ArgumentsBehindTheBuildNumberAreIgnored) {
  lab::PrivateRoot device(Image("release-13-mesh"));

  const lab::RunResult run = RunUpdater(device, {"--update-config", "9000", "extra", "--help"});

  ExpectSuccess(run);
  EXPECT_TRUE(device.Exists(kWifi + "global.json"));
}

TEST(Console, EmptyBuildNumberIsAFailureOfTheUpdateAndNoUsageError) {
  lab::PrivateRoot device(Image("dual-band-standalone"));

  const lab::RunResult run = RunUpdater(device, {"--update-config", ""});

  ExpectFailure(run, "", "stoi");
  ExpectUntouched(run);
}

}  // namespace
}  // namespace end_to_end
