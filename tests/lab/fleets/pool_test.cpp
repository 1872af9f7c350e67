#include "lab/fleets/pool.h"

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

namespace lab::fleets {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing_support::ExpectInChild;

/// Works a queue off with one worker, whose work goes by the devices' names.
class Pools : public ::testing::Test {
 protected:
  PoolEnd WorkThrough(const std::vector<std::string>& images) {
    DeviceQueue queue(images, "8000", [](const std::string&) {});
    const PoolTasks tasks{
        .work = Work,
        .is_wanted = [](const DeviceSource& source) { return source.image != "unwanted"; },
        .deliver =
            [this](const DeviceSource& source, const Message& answer) {
              delivered_.push_back(source.image + " " + answer.at(0));
              if (source.image == "dies later") std::this_thread::sleep_for(std::chrono::milliseconds(300));
              if (source.image == "interrupts") ::raise(SIGTERM);
            },
        .give_up = [this](const DeviceSource& source,
                          const std::string& reason) { given_up_.push_back(source.image + ": " + reason); },
        .tick = [] {},
    };
    return WorkOff(queue, 1, tasks);
  }

  /// Whether the pool goes through them to the end.
  bool Ends(const std::vector<std::string>& images) {
    try {
      return WorkThrough(images) == PoolEnd::AllDone;
    } catch (const std::runtime_error&) {
      return false;
    }
  }

  std::vector<std::string> delivered_;
  std::vector<std::string> given_up_;

 private:
  static Message Work(const DeviceSource& source) {
    if (source.image == "fails") throw std::runtime_error("on purpose");
    if (source.image == "dies") ::_exit(1);
    if (source.image == "dies later") {
      std::thread([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        ::_exit(1);
      }).detach();
    }
    return {"done"};
  }
};

// In a child each, since a pool blocks signals for good.

TEST_F(Pools, DeliverWhatIsWanted) {
  ExpectInChild([this] {
    EXPECT_EQ(WorkThrough({"a", "unwanted", "b"}), PoolEnd::AllDone);
    EXPECT_THAT(delivered_, ElementsAre("a done", "b done"));
    EXPECT_THAT(given_up_, IsEmpty());
  });
}

TEST_F(Pools, GoOnWithAnotherWorker) {
  ExpectInChild([this] {
    EXPECT_EQ(WorkThrough({"fails", "a", "dies", "b", "dies later", "c"}), PoolEnd::AllDone);
    EXPECT_THAT(delivered_, ElementsAre("a done", "b done", "dies later done", "c done"));
    EXPECT_THAT(given_up_, ElementsAre("fails: on purpose", "dies: a worker ended before its work was done"));
  });
}

TEST_F(Pools, StopWhereTheHostFailsOneAfterAnother) {
  ExpectInChild([this] {
    EXPECT_TRUE(Ends({"fails", "fails", "fails", "fails", "a"}));
    delivered_.clear();
    EXPECT_FALSE(Ends({"fails", "fails", "fails", "fails", "fails", "a"}));
    EXPECT_THAT(delivered_, IsEmpty());
  });
}

TEST_F(Pools, StopAtASignal) {
  ExpectInChild([this] {
    EXPECT_EQ(WorkThrough({"interrupts", "a", "b"}), PoolEnd::Interrupted);
    EXPECT_THAT(delivered_, ElementsAre("interrupts done"));
  });
}

}  // namespace
}  // namespace lab::fleets
