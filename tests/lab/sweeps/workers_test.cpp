#include "lab/sweeps/workers.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <set>
#include <stdexcept>

namespace lab::sweeps {
namespace {

TEST(DoInWorkers, GivesResultsInOrder) {
  const auto results = DoInWorkers(20, 3, [](std::size_t piece) { return std::string(piece * 10000, 'x'); });
  ASSERT_EQ(results.size(), 20U);
  for (std::size_t piece = 0; piece < results.size(); ++piece)
    EXPECT_EQ(results[piece].size(), piece * 10000);
}

TEST(DoInWorkers, WorksInOtherProcesses) {
  const auto results = DoInWorkers(8, 2, [](std::size_t) {
    ::usleep(20000);
    return std::to_string(::getpid());
  });
  const std::set<std::string> pids(results.begin(), results.end());
  EXPECT_EQ(pids.size(), 2U);
  EXPECT_FALSE(pids.contains(std::to_string(::getpid())));
}

TEST(DoInWorkers, HasNothingToDo) {
  EXPECT_TRUE(DoInWorkers(0, 2, [](std::size_t) { return std::string(); }).empty());
}

TEST(DoInWorkers, NoticesAWorkerThatEnded) {
  const auto work = [](std::size_t piece) {
    if (piece == 1) ::_exit(3);
    return std::string();
  };
  EXPECT_THROW(DoInWorkers(3, 1, work), std::runtime_error);
}

TEST(DoInWorkers, NoticesWorkThatThrows) {
  const auto work = [](std::size_t) -> std::string { throw std::runtime_error("on purpose"); };
  EXPECT_THROW(DoInWorkers(1, 1, work), std::runtime_error);
}

}  // namespace
}  // namespace lab::sweeps
