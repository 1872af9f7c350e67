#include "tests/legacy/failing_reads.h"

#include <json/value.h>

#include <string_view>

namespace testing_support {
namespace {

FailingReads* current = nullptr;

}  // namespace

FailingReads::FailingReads() {
  current = this;
}

FailingReads::~FailingReads() {
  current = nullptr;
}

FailingReads* FailingReads::Current() {
  return current;
}

}  // namespace testing_support

using testing_support::FailingReads;

// The operations as the linker knows them.

#define KELP_INFO_GET_KEY_VALUE \
  "_ZN4KELP4Wifi4Util8SDKUtils15InfoGetKeyValueB5cxx11ESt17basic_string_viewIcSt11char_traitsIcEE"
std::string RealInfoGetKeyValue(std::string_view key) __asm__("__real_" KELP_INFO_GET_KEY_VALUE);
std::string WrapInfoGetKeyValue(std::string_view key) __asm__("__wrap_" KELP_INFO_GET_KEY_VALUE);
std::string WrapInfoGetKeyValue(std::string_view key) {
  if (FailingReads::Current() != nullptr && key == FailingReads::Current()->key) throw 1;
  return RealInfoGetKeyValue(key);
}

#define KELP_FILE_GET_KEY_VALUE                                                                  \
  "_ZN4KELP4Wifi4Util8SDKUtils15FileGetKeyValueERKNSt7__cxx1112basic_stringIcSt11char_traitsIcE" \
  "SaIcEEESt17basic_string_viewIcS6_E"
std::string RealFileGetKeyValue(const std::string& path,
                                std::string_view key) __asm__("__real_" KELP_FILE_GET_KEY_VALUE);
std::string WrapFileGetKeyValue(const std::string& path,
                                std::string_view key) __asm__("__wrap_" KELP_FILE_GET_KEY_VALUE);
std::string WrapFileGetKeyValue(const std::string& path, std::string_view key) {
  if (FailingReads::Current() != nullptr && key == FailingReads::Current()->key) throw 1;
  return RealFileGetKeyValue(path, key);
}

#define KELP_LOAD_JSON_FROM_FILE                                                                  \
  "_ZN4KELP4Wifi4Util8JsonUtil16LoadJsonFromFileERKNSt7__cxx1112basic_stringIcSt11char_traitsIcE" \
  "SaIcEEE"
Json::Value RealLoadJsonFromFile(const std::string& path) __asm__("__real_" KELP_LOAD_JSON_FROM_FILE);
Json::Value WrapLoadJsonFromFile(const std::string& path) __asm__("__wrap_" KELP_LOAD_JSON_FROM_FILE);
Json::Value WrapLoadJsonFromFile(const std::string& path) {
  if (FailingReads::Current() != nullptr && path == FailingReads::Current()->document) throw 1;
  return RealLoadJsonFromFile(path);
}
