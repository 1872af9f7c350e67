#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>

#include "base/file_content.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/support/failing_calls.h"

namespace KELP::Wifi {
namespace {

using testing_support::FailingCalls;

constexpr const char* kFile = "/etc/file";

int ErrorOfReading() {
  try {
    ReadRegularFile(kFile);
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.what(), std::string("cannot read /etc/file: ") + std::strerror(error.code().value()));
    return error.code().value();
  }
  return 0;
}

class FileContentFailures : public ::testing::Test {
 protected:
  FileContentFailures() { device_.Write(kFile, "key=value\n"); }

  lab::PrivateRoot device_;
};

TEST_F(FileContentFailures, FailedStatusThrows) {
  const lab::InRoot inside(device_);
  FailingCalls calls;
  calls.Fail("fstat", EOVERFLOW);
  EXPECT_EQ(ErrorOfReading(), EOVERFLOW);
}

TEST_F(FileContentFailures, FailedReadThrowsTheFirstAndALaterOne) {
  const lab::InRoot inside(device_);
  FailingCalls calls;
  calls.Fail("read", EIO);
  EXPECT_EQ(ErrorOfReading(), EIO);
  calls.Fail("read", EIO, 2);
  EXPECT_EQ(ErrorOfReading(), EIO);
}

TEST_F(FileContentFailures, ReadThatASignalInterruptsIsRepeated) {
  const lab::InRoot inside(device_);
  FailingCalls calls;
  calls.Fail("read", EINTR, 1, 5);
  EXPECT_EQ(ReadRegularFile(kFile), "key=value\n");
}

}  // namespace
}  // namespace KELP::Wifi
