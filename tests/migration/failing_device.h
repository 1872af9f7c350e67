#pragma once

#include <string>

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

  std::string path_that_stays;            // cannot be removed: std::filesystem::filesystem_error, EBUSY
  bool information_store_throws = false;  // something that is no std::exception
};

}  // namespace testing_support
