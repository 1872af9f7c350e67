#include "lab/runs/pool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/child_process.h"

namespace lab {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing_support::ExpectInChild;

/// Does tasks with one worker, whose work goes by the tasks' names.
class Pools : public ::testing::Test {
 protected:
  PoolStatus Run(const std::vector<std::string>& names) {
    std::size_t next = 0;
    const PoolTasks tasks{
        .look = [&] { return next < names.size() ? PoolTasks::State::Ready : PoolTasks::State::AtEnd; },
        .take = [&] { return names[next++]; },
        .socket = [] { return -1; },
    };
    const PoolCallbacks callbacks{
        .work = Work,
        .on_result =
            [this](const std::string& result) {
              results_.push_back(result);
              if (result == "dies later") std::this_thread::sleep_for(std::chrono::milliseconds(300));
              if (result == "interrupts") ::raise(SIGTERM);
            },
        .on_failure = [this](const std::string& task,
                             const std::string& reason) { failures_.push_back(task + ": " + reason); },
    };
    return RunPool(tasks, 1, callbacks);
  }

  /// Whether the pool comes to its end.
  bool Ends(const std::vector<std::string>& names) {
    try {
      return Run(names) == PoolStatus::AllDone;
    } catch (const std::runtime_error&) {
      return false;
    }
  }

  std::vector<std::string> results_;
  std::vector<std::string> failures_;

 private:
  static std::string Work(const std::string& name) {
    if (name == "fails") throw std::runtime_error("on purpose");
    if (name == "dies") ::_exit(1);
    if (name == "dies later") {
      std::thread([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        ::_exit(1);
      }).detach();
    }
    return name;
  }
};

// In a child each, since a pool blocks signals for good.

TEST_F(Pools, PassBytesOfAnyKind) {
  ExpectInChild([this] {
    const std::string odd("\0\n\xff", 3);
    EXPECT_EQ(Run({"", odd, std::string(1'000'000, 'x')}), PoolStatus::AllDone);
    EXPECT_THAT(results_, ElementsAre("", odd, std::string(1'000'000, 'x')));
    EXPECT_THAT(failures_, IsEmpty());
  });
}

TEST_F(Pools, GoOnWithAnotherWorker) {
  ExpectInChild([this] {
    EXPECT_EQ(Run({"fails", "a", "dies", "b", "dies later", "c"}), PoolStatus::AllDone);
    EXPECT_THAT(results_, ElementsAre("a", "b", "dies later", "c"));
    EXPECT_THAT(failures_, ElementsAre("fails: on purpose", "dies: a worker ended before its work was done"));
  });
}

TEST_F(Pools, StopAfterFiveFailuresInARow) {
  ExpectInChild([this] {
    EXPECT_TRUE(Ends({"fails", "fails", "fails", "fails", "a", "fails", "fails", "fails", "fails", "b"}));
    EXPECT_THAT(results_, ElementsAre("a", "b"));
    results_.clear();
    EXPECT_FALSE(Ends({"fails", "fails", "fails", "fails", "fails", "a"}));
    EXPECT_THAT(results_, IsEmpty());
  });
}

TEST_F(Pools, StopAtASignal) {
  ExpectInChild([this] {
    EXPECT_EQ(Run({"interrupts", "a", "b"}), PoolStatus::Interrupted);
    EXPECT_THAT(results_, ElementsAre("interrupts"));
  });
}

TEST(ParallelMap, ReturnsResultsInOrderFromOtherProcesses) {
  ExpectInChild([] {
    EXPECT_THAT(ParallelMap(4, 2,
                            [](std::size_t index) {
                              ::usleep(index == 0 ? 50'000 : 1'000);
                              return std::to_string(index * index);
                            }),
                ElementsAre("0", "1", "4", "9"));
    EXPECT_THAT(ParallelMap(0, 2, [](std::size_t) { return std::string(); }), IsEmpty());
    EXPECT_THROW(ParallelMap(3, 1,
                             [](std::size_t index) -> std::string {
                               if (index == 1) throw std::runtime_error("on purpose");
                               return "";
                             }),
                 std::runtime_error);
    const pid_t outside = ::getpid();
    EXPECT_THAT(ParallelMap(1, 1, [&](std::size_t) { return std::to_string(::getpid() == outside); }),
                ElementsAre("0"));
  });
}

}  // namespace
}  // namespace lab
