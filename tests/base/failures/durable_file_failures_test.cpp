#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "base/durable_file.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/support/failing_calls.h"

namespace KELP::Wifi {
namespace {

using ::testing::ElementsAre;
using testing_support::FailingCalls;

constexpr const char* kTarget = "/etc/document.json";
constexpr const char* kTemporary = "/etc/document.json.new";

class DurableFileFailures : public ::testing::Test {
 protected:
  DurableFileFailures() { device_.Write(kTarget, "old"); }

  /// The error number of a replacement that has to fail; its text names path and cause.
  static int ErrorOfReplacing() {
    try {
      ReplaceFile(kTarget, "new bytes");
    } catch (const std::system_error& error) {
      const std::string text = error.what();
      EXPECT_NE(text.find(kTarget), std::string::npos) << text;
      EXPECT_NE(text.find(error.code().message()), std::string::npos) << text;
      return error.code().value();
    }
    return 0;
  }

  lab::PrivateRoot device_;
};

TEST_F(DurableFileFailures, StepsStandInTheOrderThatAPowerCutSurvives) {
  const lab::InRoot inside(device_);
  const FailingCalls calls;
  ReplaceFile(kTarget, "new bytes");
  EXPECT_THAT(calls.Made({"openat", "write", "fsync", "renameat", "fsync folder"}),
              ElementsAre("openat", "write", "fsync", "renameat", "fsync folder"));
}

struct Step {
  const char* call;
  int error;
};

class FailingStep : public DurableFileFailures, public ::testing::WithParamInterface<Step> {};

TEST_P(FailingStep, LeavesTheTargetAsItWasAndNothingBesideIt) {
  {
    const lab::InRoot inside(device_);
    FailingCalls calls;
    calls.Fail(GetParam().call, GetParam().error);
    EXPECT_EQ(ErrorOfReplacing(), GetParam().error);
  }
  EXPECT_EQ(device_.Read(kTarget), "old");
  EXPECT_FALSE(device_.Exists(kTemporary));
}

TEST_P(FailingStep, DoesNotStopALaterReplacement) {
  {
    const lab::InRoot inside(device_);
    FailingCalls calls;
    calls.Fail(GetParam().call, GetParam().error);
    EXPECT_NE(ErrorOfReplacing(), 0);
    EXPECT_EQ(ErrorOfReplacing(), 0);
  }
  EXPECT_EQ(device_.Read(kTarget), "new bytes");
}

INSTANTIATE_TEST_SUITE_P(Steps, FailingStep,
                         ::testing::Values(Step{"openat", EMFILE}, Step{"openat", EROFS}, Step{"fchmod", EIO},
                                           Step{"write", ENOSPC}, Step{"write", EIO}, Step{"fsync", EIO},
                                           Step{"close", EIO}, Step{"renameat", EIO}),
                         [](const auto& step) {
                           return std::string(step.param.call) + "_" + std::to_string(step.param.error);
                         });

TEST_F(DurableFileFailures, FailureOfALaterWriteIsNoticed) {
  {
    const lab::InRoot inside(device_);
    FailingCalls calls;
    calls.WriteAtMost(2);
    calls.Fail("write", ENOSPC, 3);
    EXPECT_EQ(ErrorOfReplacing(), ENOSPC);
  }
  EXPECT_EQ(device_.Read(kTarget), "old");
  EXPECT_FALSE(device_.Exists(kTemporary));
}

TEST_F(DurableFileFailures, FailedFlushOfTheDirectoryIsReportedAndTheNewFileStays) {
  {
    const lab::InRoot inside(device_);
    FailingCalls calls;
    calls.Fail("fsync folder", EIO);
    try {
      ReplaceFile(kTarget, "new bytes");
      FAIL() << "nothing was thrown";
    } catch (const std::system_error& error) {
      EXPECT_EQ(error.code().value(), EIO);
    }
  }
  EXPECT_EQ(device_.Read(kTarget), "new bytes");
  EXPECT_FALSE(device_.Exists(kTemporary));
}

TEST_F(DurableFileFailures, LeftoverThatCannotBeRemovedFails) {
  device_.Write(kTemporary, "leftover");
  {
    const lab::InRoot inside(device_);
    FailingCalls calls;
    calls.Fail("unlinkat", EPERM);
    EXPECT_EQ(ErrorOfReplacing(), EPERM);
  }
  EXPECT_EQ(device_.Read(kTarget), "old");
}

TEST_F(DurableFileFailures, WritesThatTakeAFewBytesAtATimeAreContinued) {
  {
    const lab::InRoot inside(device_);
    FailingCalls calls;
    calls.WriteAtMost(2);
    ReplaceFile(kTarget, "new bytes");
    EXPECT_EQ(calls.Made({"write"}).size(), 5U);
  }
  EXPECT_EQ(device_.Read(kTarget), "new bytes");
}

TEST_F(DurableFileFailures, CallsThatASignalInterruptsAreRepeated) {
  for (const auto* call : {"openat", "write", "fsync", "fsync folder"}) {
    device_.Write(kTarget, "old");
    {
      const lab::InRoot inside(device_);
      FailingCalls calls;
      calls.Fail(call, EINTR, 1, 3);
      EXPECT_EQ(ErrorOfReplacing(), 0) << call;
    }
    EXPECT_EQ(device_.Read(kTarget), "new bytes") << call;
  }
}

TEST_F(DurableFileFailures, FlushDirectoryReportsItsFailure) {
  const lab::InRoot inside(device_);
  FailingCalls calls;
  calls.Fail("fsync folder", EIO);
  EXPECT_THROW(FlushDirectory("/etc"), std::system_error);
  EXPECT_NO_THROW(FlushDirectory("/etc"));
}

}  // namespace
}  // namespace KELP::Wifi
