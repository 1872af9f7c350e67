#include "cli/command_line.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

#include "base/unique_fd.h"
#include "tests/support/captured_streams.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::ConsoleResult;
using testing_support::Error;
using testing_support::LogLines;
using testing_support::Warning;

constexpr const char* kUsage =
    "Usage: kelpwifiupdater option\n"
    "  Options: \n"
    "    --update-config oldBuildNumber     update config from old build number to current.\n"
    "\n";

class CommandLineTest : public ::testing::Test {
 protected:
  CommandLineTest() { device_.WriteInfo({{"kelpbios", "orchid"}, {"mesh_network_role", "re"}}); }

  ConsoleResult Run(std::vector<const char*> arguments) {
    const int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    return device_.Run([&] {
      return testing_support::RunOnConsole([&] { return RunCommandLine(count, arguments.data()); });
    });
  }
  void ExpectUsageError(const std::vector<const char*>& arguments, const std::string& diagnosis) {
    const lab::Tree before = device_.Files().Snapshot();
    const ConsoleResult result = Run(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, kUsage);
    EXPECT_EQ(result.err, diagnosis);
    EXPECT_EQ(device_.Log(), LogLines{});
    EXPECT_EQ(device_.Files().Snapshot(), before);
  }
  void ExpectNothingToUpdate(const std::vector<const char*>& arguments, const std::string& number) {
    const ConsoleResult result = Run(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(device_.Log(), LogLines{Warning(120, "update nothing from " + number + ".")});
  }
  void ExpectHandlersFailure(const std::vector<const char*>& arguments, const std::string& build_number) {
    const ConsoleResult result = Run(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "Failed to update config, error: stoi\n");
    EXPECT_EQ(device_.Log(),
              LogLines{Error(954, "Failed to update config, error: stoi, buildNumber: " + build_number)});
  }

  testing_support::TestDevice device_;
};

TEST_F(CommandLineTest, WithoutArgumentsOnlyTheUsageIsPrinted) {
  ExpectUsageError({"kelpwifiupdater"}, "");
}

// A socket keeps apart what is written apart.
TEST_F(CommandLineTest, UsageIsWrittenLineByLine) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
  const UniqueFd receiving(ends[0]);
  UniqueFd sending(ends[1]);
  {
    const testing_support::CapturedStream out(STDOUT_FILENO);
    ::dup2(sending.Get(), STDOUT_FILENO);
    RunCommandLine(0, nullptr);
  }
  sending.Close();
  std::vector<std::string> writes;
  std::array<char, 4096> piece{};
  for (ssize_t size = 0; (size = ::recv(receiving.Get(), piece.data(), piece.size(), 0)) > 0;) {
    writes.emplace_back(piece.data(), static_cast<std::size_t>(size));
  }
  EXPECT_EQ(
      writes,
      (std::vector<std::string>{
          "Usage: kelpwifiupdater option\n", "  Options: \n",
          "    --update-config oldBuildNumber     update config from old build number to current.\n", "\n"}));
}

TEST_F(CommandLineTest, WithoutEvenAProgramNameOnlyTheUsageIsPrinted) {
  ExpectUsageError({}, "");
}

TEST_F(CommandLineTest, UsageNamesTheProgramWhateverItWasCalledAs) {
  ExpectUsageError({"/usr/sbin/other"}, "");
}

TEST_F(CommandLineTest, AnyOtherWordIsAnInvalidOption) {
  for (const char* word : {"--Update-Config", "--UPDATE-CONFIG", "-update-config", "update-config",
                           "--update-confi", "--update-configs", "--update-config=9000", "--update-config ",
                           " --update-config", "--help", "-h", "--", "9000", ""}) {
    ExpectUsageError({"kelpwifiupdater", word, "9300"}, std::string("Invalid option: ") + word + "\n\n");
  }
}

TEST_F(CommandLineTest, InvalidOptionNeedsNoValue) {
  ExpectUsageError({"kelpwifiupdater", "--help"}, "Invalid option: --help\n\n");
}

TEST_F(CommandLineTest, InvalidOptionIsPrintedAsItIs) {
  ExpectUsageError({"kelpwifiupdater", "%s%n\n\xff"}, "Invalid option: %s%n\n\xff\n\n");
}

TEST_F(CommandLineTest, OptionIsTheFirstArgument) {
  ExpectUsageError({"kelpwifiupdater", "9300", "--update-config"}, "Invalid option: 9300\n\n");
  ExpectUsageError({"kelpwifiupdater", "-v", "--update-config", "9300"}, "Invalid option: -v\n\n");
}

TEST_F(CommandLineTest, OptionWithoutAValueNeedsOne) {
  ExpectUsageError({"kelpwifiupdater", "--update-config"}, "Need to provide build number.\n\n");
}

TEST_F(CommandLineTest, HandlerTakesTheValue) {
  ExpectNothingToUpdate({"kelpwifiupdater", "--update-config", "9300"}, "9300");
}

TEST_F(CommandLineTest, ArgumentsBehindTheValueAreIgnored) {
  ExpectNothingToUpdate({"kelpwifiupdater", "--update-config", "9300", "extra"}, "9300");
  ExpectNothingToUpdate({"kelpwifiupdater", "--update-config", "9300", "--update-config", "abc", "--help"},
                        "9300");
}

TEST_F(CommandLineTest, HandlersFailureIsTheExitStatusWithoutAUsage) {
  ExpectHandlersFailure({"kelpwifiupdater", "--update-config", "abc"}, "abc");
  ExpectHandlersFailure({"kelpwifiupdater", "--update-config", "--update-config"}, "--update-config");
}

TEST_F(CommandLineTest, EmptyValueIsAValue) {
  ExpectHandlersFailure({"kelpwifiupdater", "--update-config", ""}, "");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
