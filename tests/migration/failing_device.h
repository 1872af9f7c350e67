#pragma once

#include <string>
#include <vector>

namespace testing_support {

/// While this lives the device fails as it says; the linker puts this between the migrations and it. One at a
/// time.
class FailingDevice {
 public:
  FailingDevice();
  FailingDevice(const FailingDevice&) = delete;
  FailingDevice& operator=(const FailingDevice&) = delete;
  ~FailingDevice();

  static FailingDevice* Current();

  /// What was saved, flushed, moved and removed, in order: "save PATH", "flush PATH", "rename PATH",
  /// "remove PATH".
  std::vector<std::string> steps;

  /// What was asked, in order: "PATH KEY" of a legacy file, "usb3" of the boot environment.
  std::vector<std::string> questions;

  std::string path_that_stays;          // cannot be removed: std::filesystem::filesystem_error, EBUSY
  std::string path_that_goes_before;    // somebody else removes it before the program does
  bool flush_fails = false;             // of a directory: std::system_error, EIO
  std::string information_that_throws;  // a key; something that is no std::exception
};

}  // namespace testing_support
