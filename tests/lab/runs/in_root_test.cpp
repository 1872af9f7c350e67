#include "lab/runs/in_root.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <syslog.h>

#include <filesystem>
#include <thread>

#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> Messages(const std::vector<LogLine>& lines) {
  std::vector<std::string> messages;
  messages.reserve(lines.size());
  for (const LogLine& line : lines) messages.push_back(line.message);
  return messages;
}

TEST(InRoot, EntersAndLeaves) {
  PrivateRoot root;
  root.Write("/only-on-the-device", "1");
  const fs::path original = fs::current_path();
  const lab_test::TemporaryFolder folder;
  fs::current_path(folder.Path());
  {
    const InRoot inside(root);
    EXPECT_EQ(fs::current_path(), "/");
    EXPECT_EQ(lab_test::ReadFile("/only-on-the-device"), "1");
    EXPECT_FALSE(fs::exists("/../../../proc/self"));
  }
  EXPECT_EQ(fs::current_path(), folder.Path());
  std::error_code ignored;
  fs::current_path(original, ignored);  // an ordinary user may have no way back to it
  EXPECT_FALSE(fs::exists("/only-on-the-device"));
  EXPECT_TRUE(fs::exists("/proc/self"));
}

TEST(InRoot, CollectsTheLog) {
  PrivateRoot root;
  InRoot inside(root);
  EXPECT_THAT(inside.Log(), IsEmpty());
  ::syslog(LOG_ERR, "a %d", 1);
  ::syslog(LOG_DAEMON | LOG_WARNING, "b");
  EXPECT_THAT(inside.Log(), ElementsAre(LogLine{LOG_ERR, LOG_USER, "lab_tests", "a 1"},
                                        LogLine{LOG_WARNING, LOG_DAEMON, "lab_tests", "b"}));
  EXPECT_THAT(inside.Log(), IsEmpty());
}

TEST(InRoot, NeverLosesOrReordersALine) {
  PrivateRoot root;
  InRoot inside(root);
  for (int round = 0; round < 50; ++round) {
    std::vector<std::string> sent;
    for (int i = 0; i < round; ++i) {
      sent.push_back(std::to_string(i));
      ::syslog(LOG_ERR, "%d", i);
    }
    ASSERT_EQ(Messages(inside.Log()), sent);
  }
}

TEST(InRoot, CollectsFarMoreThanTheSocketHolds) {
  PrivateRoot root;
  InRoot inside(root);
  const std::string text(10'000, 'x');
  for (int i = 0; i < 200; ++i) ::syslog(LOG_ERR, "%s", text.c_str());
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 200U);
  EXPECT_EQ(lines.back().message, text);
}

TEST(InRoot, StartsALogForEachRoot) {
  PrivateRoot first;
  PrivateRoot second;
  {
    InRoot inside(first);
    ::syslog(LOG_ERR, "first");
    EXPECT_THAT(Messages(inside.Log()), ElementsAre("first"));
  }
  {
    InRoot inside(second);
    ::syslog(LOG_ERR, "second");
    EXPECT_THAT(Messages(inside.Log()), ElementsAre("second"));
  }
  InRoot inside(first);
  ::syslog(LOG_ERR, "first again");
  EXPECT_THAT(Messages(inside.Log()), ElementsAre("first again"));
}

TEST(InRoot, LeavesWhenAnExceptionPasses) {
  PrivateRoot root;
  try {
    const InRoot inside(root);
    throw 1;
  } catch (int) {
  }
  EXPECT_TRUE(fs::exists("/proc/self"));
}

TEST(InRoot, LeavesNoSocketBehind) {
  PrivateRoot root;
  { const InRoot inside(root); }
  EXPECT_FALSE(root.Exists("/dev/log"));
  EXPECT_EQ(root.Snapshot(), Tree{});
}

TEST(InRoot, StaysOutsideWhenTheRootCannotBeEntered) {
  PrivateRoot root;
  root.Remove("/dev");
  EXPECT_THROW(InRoot inside(root), std::system_error);
  EXPECT_TRUE(fs::exists("/proc/self"));
}

TEST(InRoot, WorksHoweverLongTheRootsPathIs) {
  const lab_test::TemporaryFolder temporary;
  PrivateRoot root = lab_test::RootWithLongPath(temporary);
  InRoot inside(root);
  ::syslog(LOG_ERR, "far away");
  EXPECT_THAT(Messages(inside.Log()), ElementsAre("far away"));
}

}  // namespace
}  // namespace lab
