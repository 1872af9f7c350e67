#include "lab/runs/program_start.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace lab {
namespace {

TEST(AwaitStart, EndsWhenTheProgramHasTakenOver) {
  StartReport report;
  report.starting.Close();
  EXPECT_TRUE(AwaitStart(report.waiting).empty());
}

TEST(AwaitStart, ThrowsWhatIsReported) {
  const StartReport report;
  const std::string text(10'000, 'x');
  ASSERT_EQ(::send(report.starting.Get(), text.data(), text.size(), 0), 10'000);
  try {
    AwaitStart(report.waiting);
    FAIL() << "nothing thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(), text);
  }
}

TEST(AboveStandardStreams, KeepsHighDescriptors) {
  Descriptor descriptor(::dup(STDERR_FILENO));
  const int number = descriptor.Get();
  ASSERT_GT(number, STDERR_FILENO);
  EXPECT_EQ(AboveStandardStreams(std::move(descriptor)).Get(), number);
}

TEST(AboveStandardStreams, MovesLowDescriptors) {
  const Descriptor kept(::dup(STDIN_FILENO));
  {
    const Descriptor moved = AboveStandardStreams(Descriptor(STDIN_FILENO));
    EXPECT_GT(moved.Get(), STDERR_FILENO);
  }
  EXPECT_EQ(::dup2(kept.Get(), STDIN_FILENO), STDIN_FILENO);
}

}  // namespace
}  // namespace lab
