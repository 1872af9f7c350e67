#include "tests/migration/failing_device.h"

#include <filesystem>
#include <string_view>

namespace testing_support {
namespace {

FailingDevice* current = nullptr;

}  // namespace

FailingDevice::FailingDevice() {
  current = this;
}

FailingDevice::~FailingDevice() {
  current = nullptr;
}

FailingDevice* FailingDevice::Current() {
  return current;
}

}  // namespace testing_support

// The operations as the linker knows them.

using testing_support::FailingDevice;

bool RealRemove(const std::filesystem::path& path) __asm__(
    "__real__ZNSt10filesystem6removeERKNS_7__cxx114pathE");
bool WrapRemove(const std::filesystem::path& path) __asm__(
    "__wrap__ZNSt10filesystem6removeERKNS_7__cxx114pathE");
bool WrapRemove(const std::filesystem::path& path) {
  if (FailingDevice::Current() != nullptr && path == FailingDevice::Current()->path_that_stays) {
    throw std::filesystem::filesystem_error("cannot remove", path,
                                            std::make_error_code(std::errc::device_or_resource_busy));
  }
  return RealRemove(path);
}

#define KELP_INFO_GET_KEY_VALUE \
  "_ZN4KELP4Wifi4Util8SDKUtils15InfoGetKeyValueB5cxx11ESt17basic_string_viewIcSt11char_traitsIcEE"
std::string RealInfoGetKeyValue(std::string_view key) __asm__("__real_" KELP_INFO_GET_KEY_VALUE);
std::string WrapInfoGetKeyValue(std::string_view key) __asm__("__wrap_" KELP_INFO_GET_KEY_VALUE);
std::string WrapInfoGetKeyValue(std::string_view key) {
  if (FailingDevice::Current() != nullptr && FailingDevice::Current()->information_store_throws) throw 1;
  return RealInfoGetKeyValue(key);
}
