#include "lab/sweeps/call_errors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace lab::sweeps {
namespace {

using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

TEST(ErrorsOf, NamesWhatFileSystemsAnswer) {
  EXPECT_THAT(ErrorsOf("write"),
              IsSupersetOf({"EDQUOT", "EFBIG", "ENOSPC", "EIO", "EPERM", "EAGAIN", "EINTR"}));
  EXPECT_THAT(ErrorsOf("fsync"), IsSupersetOf({"EINVAL", "EROFS", "EIO", "EDQUOT"}));
  EXPECT_THAT(ErrorsOf("renameat"), IsSupersetOf({"EISDIR", "ENOTEMPTY", "EXDEV", "EPERM"}));
  EXPECT_THAT(ErrorsOf("openat"), IsSupersetOf({"ELOOP", "ENOTDIR", "ENAMETOOLONG", "ESTALE", "EMFILE"}));
  EXPECT_THAT(ErrorsOfCreation(), IsSupersetOf({"EDQUOT", "ENOSPC", "EROFS"}));
}

TEST(ErrorsOf, GivesACallThatCannotFailNone) {
  EXPECT_THAT(ErrorsOf("getpid"), IsEmpty());
}

TEST(ErrorsOf, LeavesOutWhatARemovalIsNotToldInEarnest) {
  EXPECT_THAT(ErrorsOf("unlink"), Not(Contains("ENOENT")));
}

TEST(ErrorsOf, LeavesNoCallOutSilently) {
  EXPECT_THROW(ErrorsOf("io_uring_enter"), std::runtime_error);
}

TEST(TextOfError, IsTheLibrarys) {
  EXPECT_EQ(TextOfError("ENOSPC"), "No space left on device");
  EXPECT_EQ(TextOfError("EIO"), "Input/output error");
  EXPECT_EQ(TextOfError(""), "");
  EXPECT_EQ(TextOfError("short"), "");
}

}  // namespace
}  // namespace lab::sweeps
