#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include "base/atomic_file.h"
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

  /// What a replacement that has to fail says; empty when it does not.
  static std::string ErrorOfReplacing() {
    try {
      WriteFileAtomically(kTarget, "new bytes");
    } catch (const std::system_error& error) {
      return error.what();
    }
    return "";
  }

  lab::PrivateRoot device_;
};

const std::vector<std::string> kCallsOfAReplacement{"open",  "unlink", "fchmod", "write",
                                                    "fsync", "close",  "rename", "fsync folder"};

TEST_F(DurableFileFailures, StepsStandInTheOrderThatAPowerCutSurvives) {
  const lab::InRoot inside(device_);
  const FailingCalls calls;
  WriteFileAtomically(kTarget, "new bytes");
  EXPECT_THAT(calls.Made(kCallsOfAReplacement),
              ElementsAre("open", "fchmod", "write", "fsync", "close", "rename"));
}

TEST_F(DurableFileFailures, LeftoverIsUnlinkedBeforeTheFileIsMade) {
  device_.Write(kTemporary, "leftover");
  const lab::InRoot inside(device_);
  const FailingCalls calls;
  WriteFileAtomically(kTarget, "new bytes");
  EXPECT_THAT(calls.Made(kCallsOfAReplacement),
              ElementsAre("open", "unlink", "open", "fchmod", "write", "fsync", "close", "rename"));
}

TEST_F(DurableFileFailures, FailedReplacementEndsWithTheRemovalOfWhatItMade) {
  const lab::InRoot inside(device_);
  FailingCalls calls;
  calls.Fail("write", ENOSPC);
  ErrorOfReplacing();
  EXPECT_THAT(calls.Made(kCallsOfAReplacement), ElementsAre("open", "fchmod", "write", "unlink", "close"));
}

struct Step {
  const char* call;
  int error;
  const char* text;
};

class FailingStep : public DurableFileFailures, public ::testing::WithParamInterface<Step> {};

TEST_P(FailingStep, LeavesTheTargetAsItWasAndNothingBesideIt) {
  {
    const lab::InRoot inside(device_);
    FailingCalls calls;
    calls.Fail(GetParam().call, GetParam().error);
    EXPECT_EQ(ErrorOfReplacing(), GetParam().text);
  }
  EXPECT_EQ(device_.Read(kTarget), "old");
  EXPECT_FALSE(device_.Exists(kTemporary));
}

TEST_P(FailingStep, DoesNotStopALaterReplacement) {
  {
    const lab::InRoot inside(device_);
    FailingCalls calls;
    calls.Fail(GetParam().call, GetParam().error);
    EXPECT_NE(ErrorOfReplacing(), "");
    EXPECT_EQ(ErrorOfReplacing(), "");
  }
  EXPECT_EQ(device_.Read(kTarget), "new bytes");
}

// A file system that cannot flush a file cannot keep the promise; only of directories is that put up with.
INSTANTIATE_TEST_SUITE_P(
    Steps, FailingStep,
    ::testing::Values(Step{"open", EMFILE, "cannot create /etc/document.json: Too many open files"},
                      Step{"open", EROFS, "cannot create /etc/document.json: Read-only file system"},
                      Step{"fchmod", EIO, "cannot set the mode of /etc/document.json: Input/output error"},
                      Step{"write", ENOSPC, "cannot write /etc/document.json: No space left on device"},
                      Step{"write", EIO, "cannot write /etc/document.json: Input/output error"},
                      Step{"fsync", EIO, "cannot flush /etc/document.json: Input/output error"},
                      Step{"fsync", EINVAL, "cannot flush /etc/document.json: Invalid argument"},
                      Step{"close", EIO, "cannot write /etc/document.json: Input/output error"},
                      Step{"rename", EIO, "cannot replace /etc/document.json: Input/output error"}),
    [](const auto& step) { return std::string(step.param.call) + "_" + std::to_string(step.param.error); });

TEST_F(DurableFileFailures, FailureOfALaterWriteIsNoticed) {
  {
    const lab::InRoot inside(device_);
    FailingCalls calls;
    calls.WriteAtMost(2);
    calls.Fail("write", ENOSPC, 3);
    EXPECT_EQ(ErrorOfReplacing(), "cannot write /etc/document.json: No space left on device");
  }
  EXPECT_EQ(device_.Read(kTarget), "old");
  EXPECT_FALSE(device_.Exists(kTemporary));
}

TEST_F(DurableFileFailures, LeftoverThatCannotBeRemovedFails) {
  device_.Write(kTemporary, "leftover");
  {
    const lab::InRoot inside(device_);
    FailingCalls calls;
    calls.Fail("unlink", EPERM);
    EXPECT_EQ(ErrorOfReplacing(),
              "cannot remove the leftover beside /etc/document.json: Operation not permitted");
  }
  EXPECT_EQ(device_.Read(kTarget), "old");
}

TEST_F(DurableFileFailures, WritesThatTakeAFewBytesAtATimeAreContinued) {
  {
    const lab::InRoot inside(device_);
    FailingCalls calls;
    calls.WriteAtMost(2);
    WriteFileAtomically(kTarget, "new bytes");
    EXPECT_EQ(calls.Made({"write"}).size(), 5U);
  }
  EXPECT_EQ(device_.Read(kTarget), "new bytes");
}

TEST_F(DurableFileFailures, CallsThatASignalInterruptsAreRepeated) {
  for (const auto* call : {"open", "write", "fsync"}) {
    device_.Write(kTarget, "old");
    {
      const lab::InRoot inside(device_);
      FailingCalls calls;
      calls.Fail(call, EINTR, 1, 3);
      EXPECT_EQ(ErrorOfReplacing(), "") << call;
    }
    EXPECT_EQ(device_.Read(kTarget), "new bytes") << call;
  }
}

std::string ErrorOfFlushing() {
  try {
    FlushDirectory("/etc/");
  } catch (const std::system_error& error) {
    return error.what();
  }
  return "";
}

TEST_F(DurableFileFailures, FlushDirectoryNamesPathAndCauseOfItsFailure) {
  const lab::InRoot inside(device_);
  FailingCalls calls;
  calls.Fail("fsync folder", EIO);
  EXPECT_EQ(ErrorOfFlushing(), "cannot flush directory /etc/: Input/output error");
  calls.Fail("fsync folder", EROFS);
  EXPECT_EQ(ErrorOfFlushing(), "cannot flush directory /etc/: Read-only file system");
  calls.Fail("open", EMFILE);
  EXPECT_EQ(ErrorOfFlushing(), "cannot open directory /etc/: Too many open files");
  EXPECT_EQ(ErrorOfFlushing(), "");
}

TEST_F(DurableFileFailures, DirectoryThatCannotBeFlushedCountsAsFlushed) {
  const lab::InRoot inside(device_);
  for (const int error : {EINVAL, EOPNOTSUPP, ENOTSUP}) {
    FailingCalls calls;
    calls.Fail("fsync folder", error);
    EXPECT_EQ(ErrorOfFlushing(), "") << error;
    EXPECT_THAT(calls.Made({"fsync folder"}), ElementsAre("fsync folder"));
  }
}

TEST_F(DurableFileFailures, FlushOfADirectoryThatASignalInterruptsIsRepeated) {
  const lab::InRoot inside(device_);
  FailingCalls calls;
  calls.Fail("fsync folder", EINTR, 1, 3);
  EXPECT_EQ(ErrorOfFlushing(), "");
  EXPECT_EQ(calls.Made({"fsync folder"}).size(), 4U);
}

}  // namespace
}  // namespace KELP::Wifi
