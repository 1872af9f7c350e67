#include "base/unique_fd.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>
#include <thread>
#include <utility>

namespace KELP::Wifi {
namespace {

bool IsOpenDescriptor(int descriptor) {
  return ::fcntl(descriptor, F_GETFD) != -1;
}

int OpenNull() {
  return ::open("/dev/null", O_WRONLY | O_CLOEXEC);
}

TEST(UniqueFd, WithoutADescriptorIsNotOpen) {
  UniqueFd none;
  EXPECT_FALSE(none.IsOpen());
  EXPECT_EQ(none.Get(), -1);
  EXPECT_TRUE(none.Close());
}

TEST(UniqueFd, ClosesWhenItGoesOutOfScope) {
  int number = -1;
  {
    const UniqueFd file(OpenNull());
    number = file.Get();
    ASSERT_TRUE(file.IsOpen());
    ASSERT_TRUE(IsOpenDescriptor(number));
  }
  EXPECT_FALSE(IsOpenDescriptor(number));
}

TEST(UniqueFd, IsClosedOnlyOnce) {
  UniqueFd file(OpenNull());
  const int number = file.Get();
  EXPECT_TRUE(file.Close());
  EXPECT_FALSE(file.IsOpen());
  // The next file gets the freed number; a second Close must leave it alone.
  const UniqueFd next(OpenNull());
  EXPECT_EQ(next.Get(), number);
  EXPECT_TRUE(file.Close());
  EXPECT_TRUE(IsOpenDescriptor(next.Get()));
}

TEST(UniqueFd, MovesWithItsDescriptor) {
  UniqueFd file(OpenNull());
  const int number = file.Get();
  UniqueFd moved(std::move(file));
  EXPECT_EQ(moved.Get(), number);

  UniqueFd assigned;
  assigned = std::move(moved);
  EXPECT_EQ(assigned.Get(), number);
  EXPECT_TRUE(IsOpenDescriptor(number));
}

TEST(UniqueFd, ReportsAnErrorAtClosing) {
  const int number = OpenNull();
  UniqueFd file(number);
  ::close(number);
  EXPECT_FALSE(file.Close());
  EXPECT_EQ(errno, EBADF);
}

TEST(RetryInterrupted, CallsAgainAfterASignalOnly) {
  int calls = 0;
  const int result = RetryInterrupted([&] {
    ++calls;
    errno = EINTR;
    return calls < 3 ? -1 : 7;
  });
  EXPECT_EQ(result, 7);
  EXPECT_EQ(calls, 3);

  calls = 0;
  const int failed = RetryInterrupted([&] {
    ++calls;
    errno = EIO;
    return -1;
  });
  EXPECT_EQ(failed, -1);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(errno, EIO);
}

TEST(WriteAll, WritesMoreThanAPipeHolds) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
  UniqueFd in(ends[0]);
  UniqueFd out(ends[1]);
  const std::string bytes(1'000'000, 'b');
  std::string read_back;
  std::thread reader([&] {
    std::array<char, 4096> piece{};
    for (ssize_t got = 0; (got = ::read(in.Get(), piece.data(), piece.size())) > 0;) {
      read_back.append(piece.data(), static_cast<std::size_t>(got));
    }
  });
  EXPECT_TRUE(WriteAll(out.Get(), bytes.data(), bytes.size()));
  out.Close();
  reader.join();
  EXPECT_EQ(read_back, bytes);
}

TEST(WriteAll, OfNothingWritesNothing) {
  EXPECT_TRUE(WriteAll(-1, "", 0));
}

TEST(WriteAll, ReportsAFailedWrite) {
  EXPECT_FALSE(WriteAll(-1, "x", 1));
  EXPECT_EQ(errno, EBADF);

  const UniqueFd full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  ASSERT_TRUE(full.IsOpen());
  EXPECT_FALSE(WriteAll(full.Get(), "x", 1));
  EXPECT_EQ(errno, ENOSPC);
}

}  // namespace
}  // namespace KELP::Wifi
