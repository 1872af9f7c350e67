#include "tests/migration/failing_device.h"

#include <json/value.h>

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

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

namespace {

void Note(const char* step, const std::string& path) {
  if (FailingDevice* const device = FailingDevice::Current()) {
    device->steps.push_back(std::string(step) + " " + path);
  }
}

}  // namespace

bool RealRemove(const std::filesystem::path& path) __asm__(
    "__real__ZNSt10filesystem6removeERKNS_7__cxx114pathE");
bool WrapRemove(const std::filesystem::path& path) __asm__(
    "__wrap__ZNSt10filesystem6removeERKNS_7__cxx114pathE");
bool WrapRemove(const std::filesystem::path& path) {
  Note("remove", path);
  if (FailingDevice::Current() != nullptr && path == FailingDevice::Current()->path_that_stays) {
    throw std::filesystem::filesystem_error("cannot remove", path,
                                            std::make_error_code(std::errc::device_or_resource_busy));
  }
  if (FailingDevice::Current() != nullptr && path == FailingDevice::Current()->path_that_goes_before) {
    RealRemove(path);
  }
  return RealRemove(path);
}

void RealRename(const std::filesystem::path& from, const std::filesystem::path& to) __asm__(
    "__real__ZNSt10filesystem6renameERKNS_7__cxx114pathES3_");
void WrapRename(const std::filesystem::path& from, const std::filesystem::path& to) __asm__(
    "__wrap__ZNSt10filesystem6renameERKNS_7__cxx114pathES3_");
void WrapRename(const std::filesystem::path& from, const std::filesystem::path& to) {
  Note("rename", from);
  RealRename(from, to);
}

#define KELP_FLUSH_DIRECTORY \
  "_ZN4KELP4Wifi14FlushDirectoryERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
void RealFlushDirectory(const std::string& path) __asm__("__real_" KELP_FLUSH_DIRECTORY);
void WrapFlushDirectory(const std::string& path) __asm__("__wrap_" KELP_FLUSH_DIRECTORY);
void WrapFlushDirectory(const std::string& path) {
  Note("flush", path);
  if (FailingDevice::Current() != nullptr && FailingDevice::Current()->flush_fails) {
    throw std::system_error(EIO, std::generic_category(), "cannot flush directory " + path);
  }
  RealFlushDirectory(path);
}

#define KELP_SAVE_JSON_TO_FILE                                                                   \
  "_ZN4KELP4Wifi4Util8JsonUtil14SaveJsonToFileERKNSt7__cxx1112basic_stringIcSt11char_traitsIcES" \
  "aIcEEERKN4Json5ValueE"
void RealSaveJsonToFile(const std::string& path,
                        const Json::Value& document) __asm__("__real_" KELP_SAVE_JSON_TO_FILE);
void WrapSaveJsonToFile(const std::string& path,
                        const Json::Value& document) __asm__("__wrap_" KELP_SAVE_JSON_TO_FILE);
void WrapSaveJsonToFile(const std::string& path, const Json::Value& document) {
  Note("save", path);
  RealSaveJsonToFile(path, document);
}

#define KELP_FILE_GET_KEY_VALUE                                                                       \
  "_ZN4KELP4Wifi4Util8SDKUtils15FileGetKeyValueERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcE" \
  "EESt17basic_string_viewIcS6_E"
std::string RealFileGetKeyValue(const std::string& path,
                                std::string_view key) __asm__("__real_" KELP_FILE_GET_KEY_VALUE);
std::string WrapFileGetKeyValue(const std::string& path,
                                std::string_view key) __asm__("__wrap_" KELP_FILE_GET_KEY_VALUE);
std::string WrapFileGetKeyValue(const std::string& path, std::string_view key) {
  if (FailingDevice* const device = FailingDevice::Current()) {
    device->questions.push_back(path + " " + std::string(key));
  }
  return RealFileGetKeyValue(path, key);
}

int RealUSB3Disabled() __asm__("__real__Z29KELPUSBGetUSB3DisableUbootEnvv");
int WrapUSB3Disabled() __asm__("__wrap__Z29KELPUSBGetUSB3DisableUbootEnvv");
int WrapUSB3Disabled() {
  if (FailingDevice* const device = FailingDevice::Current()) device->questions.emplace_back("usb3");
  return RealUSB3Disabled();
}

#define KELP_INFO_GET_KEY_VALUE \
  "_ZN4KELP4Wifi4Util8SDKUtils15InfoGetKeyValueB5cxx11ESt17basic_string_viewIcSt11char_traitsIcEE"
std::string RealInfoGetKeyValue(std::string_view key) __asm__("__real_" KELP_INFO_GET_KEY_VALUE);
std::string WrapInfoGetKeyValue(std::string_view key) __asm__("__wrap_" KELP_INFO_GET_KEY_VALUE);
std::string WrapInfoGetKeyValue(std::string_view key) {
  if (FailingDevice::Current() != nullptr && key == FailingDevice::Current()->information_that_throws)
    throw 1;
  return RealInfoGetKeyValue(key);
}
