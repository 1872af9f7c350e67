#include "tests/support/failing_platform.h"

#include <json/value.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "platform/records/supported_model.h"
#include "platform/section_files.h"

// An operation by its name in object files, and the one that the linker calls instead of it (--wrap); the
// build reads the names from here. std::size_t has another code on 32-bit devices.
// clang-format off
#if __SIZEOF_SIZE_T__ == 8
#define LIST_ALLOC "_Z16KLIBCSzListAllocm"
#define HASH_ALLOC "_Z16KLIBCSzHashAllocm"
#define DECRYPT "_Z18KLIBCryptSzDecryptPKcPcm"
#else
#define LIST_ALLOC "_Z16KLIBCSzListAllocj"
#define HASH_ALLOC "_Z16KLIBCSzHashAllocj"
#define DECRYPT "_Z18KLIBCryptSzDecryptPKcPcj"
#endif
#define LIST_FREE "_Z15KLIBCSzListFreeP11KLIBCSzList"
#define HASH_FREE "_Z15KLIBCSzHashFreeP11KLIBCSzHash"
#define ENUM_SECTION "_Z20KLIBCFileEnumSectionPKcPP11KLIBCSzList"
#define GET_SECTION "_Z19KLIBCFileGetSectionPKcS0_PP11KLIBCSzHash"
#define USB3_DISABLED "_Z29KELPUSBGetUSB3DisableUbootEnvv"
#define INFO_GET_KEY_VALUE "_ZN4KELP4Wifi4Util8SDKUtils15InfoGetKeyValueB5cxx11ESt17basic_string_viewIcSt11char_traitsIcEE"
#define FILE_GET_KEY_VALUE "_ZN4KELP4Wifi4Util8SDKUtils15FileGetKeyValueERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEESt17basic_string_viewIcS6_E"
#define LOAD_JSON "_ZN4KELP4Wifi4Util8JsonUtil16LoadJsonFromFileERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
#define SAVE_JSON "_ZN4KELP4Wifi4Util8JsonUtil14SaveJsonToFileERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERKN4Json5ValueE"
#define READ_LEGACY_VALUE "_ZN4KELP4Wifi7Updater15ReadLegacyValueERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEESt17basic_string_viewIcS5_ESB_"
#define GET_SUPPORTED_MODEL "_ZN4KELP4Wifi7Updater17GetSupportedModelEv"
#define FLUSH_DIRECTORY "_ZN4KELP4Wifi14FlushDirectoryERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
#define REMOVE "_ZNSt10filesystem6removeERKNS_7__cxx114pathE"
#define RENAME "_ZNSt10filesystem6renameERKNS_7__cxx114pathES3_"
// clang-format on

// NAMED(LIST_ALLOC, KLIBCSzList*, ListAlloc, (std::size_t capacity)) begins the definition of
// WrappedListAlloc, beside RealListAlloc.
#define NAMED(symbol, result, name, arguments)              \
  result Real##name arguments __asm__("__real_" symbol);    \
  result Wrapped##name arguments __asm__("__wrap_" symbol); \
  result Wrapped##name arguments

namespace fs = std::filesystem;
using KELP::Wifi::Util::SupportedModel;
using testing_support::FailingPlatform;

namespace testing_support {
namespace {

FailingPlatform* current = nullptr;

}  // namespace

FailingPlatform::FailingPlatform() {
  current = this;
}

FailingPlatform::~FailingPlatform() {
  current = nullptr;
}

FailingPlatform* FailingPlatform::Current() {
  return current;
}

}  // namespace testing_support

namespace {

FailingPlatform* Current() {
  return FailingPlatform::Current();
}

void Note(const char* step, const std::string& path) {
  if (Current() != nullptr) Current()->steps.push_back(std::string(step) + " " + path);
}

char* secret_buffer = nullptr;  // to which the cipher's answer was written

void NoteWipe(const void* memory, std::size_t size) {
  if (Current() == nullptr || Current()->decrypted == nullptr || memory != secret_buffer) return;
  if (std::strcmp(secret_buffer, Current()->decrypted) != 0) return;
  Current()->wiped = std::max(Current()->wiped, size);
}

}  // namespace

NAMED(LIST_ALLOC, KLIBCSzList*, ListAlloc, (std::size_t capacity)) {
  if (Current() == nullptr) return RealListAlloc(capacity);
  Current()->list_capacity = capacity;
  if (Current()->list_allocation_fails) return nullptr;
  auto* const made = RealListAlloc(capacity);
  if (made != nullptr) ++Current()->lists;
  return made;
}

NAMED(HASH_ALLOC, KLIBCSzHash*, HashAlloc, (std::size_t capacity)) {
  if (Current() == nullptr) return RealHashAlloc(capacity);
  Current()->table_capacity = capacity;
  if (Current()->table_allocation_fails) return nullptr;
  auto* const made = RealHashAlloc(capacity);
  if (made != nullptr) ++Current()->tables;
  return made;
}

NAMED(LIST_FREE, void, ListFree, (KLIBCSzList * list)) {
  if (Current() != nullptr && list != nullptr) --Current()->lists;
  RealListFree(list);
}

NAMED(HASH_FREE, void, HashFree, (KLIBCSzHash * table)) {
  if (Current() != nullptr && table != nullptr) --Current()->tables;
  RealHashFree(table);
}

NAMED(ENUM_SECTION, int, EnumSection, (const char* path, KLIBCSzList** list)) {
  if (Current() != nullptr && Current()->section_count) return *Current()->section_count;
  return RealEnumSection(path, list);
}

NAMED(GET_SECTION, int, GetSection, (const char* path, const char* name, KLIBCSzHash** table)) {
  const int result = RealGetSection(path, name, table);
  if (Current() != nullptr && Current()->sections_that_fail.contains(name)) return Current()->section_result;
  return result;
}

NAMED(USB3_DISABLED, int, USB3Disabled, ()) {
  if (Current() != nullptr) Current()->questions.emplace_back("usb3");
  return Current() != nullptr && Current()->usb3_disabled ? *Current()->usb3_disabled : RealUSB3Disabled();
}

NAMED(INFO_GET_KEY_VALUE, std::string, InfoGetKeyValue, (std::string_view key)) {
  if (Current() != nullptr && key == Current()->key_that_throws) throw 1;
  return RealInfoGetKeyValue(key);
}

NAMED(FILE_GET_KEY_VALUE, std::string, FileGetKeyValue, (const std::string& path, std::string_view key)) {
  if (Current() != nullptr) {
    Current()->questions.push_back(path + " " + std::string(key));
    if (key == Current()->key_that_throws) throw 1;
  }
  return RealFileGetKeyValue(path, key);
}

NAMED(LOAD_JSON, Json::Value, LoadJson, (const std::string& path)) {
  if (Current() != nullptr && path == Current()->document_that_throws) throw 1;
  return RealLoadJson(path);
}

NAMED(SAVE_JSON, void, SaveJson, (const std::string& path, const Json::Value& document)) {
  Note("save", path);
  RealSaveJson(path, document);
}

NAMED(READ_LEGACY_VALUE, std::string, ReadLegacyValue,
      (const std::string& file, std::string_view key, std::string_view default_value)) {
  if (Current() != nullptr && Current()->legacy_reads_throw) throw 1;
  return RealReadLegacyValue(file, key, default_value);
}

NAMED(GET_SUPPORTED_MODEL, SupportedModel, GetSupportedModel, ()) {
  if (Current() != nullptr && Current()->model_throws) throw 1;
  return RealGetSupportedModel();
}

NAMED(FLUSH_DIRECTORY, void, FlushDirectory, (const std::string& path)) {
  Note("flush", path);
  if (Current() != nullptr && Current()->flush_fails) {
    throw std::system_error(EIO, std::generic_category(), "cannot flush directory " + path);
  }
  RealFlushDirectory(path);
}

NAMED(REMOVE, bool, Remove, (const fs::path& path)) {
  Note("remove", path);
  if (Current() != nullptr && path == Current()->path_that_stays) {
    throw fs::filesystem_error("cannot remove", path,
                               std::make_error_code(std::errc::device_or_resource_busy));
  }
  if (Current() != nullptr && path == Current()->path_that_goes_before) RealRemove(path);
  return RealRemove(path);
}

NAMED(RENAME, void, Rename, (const fs::path& from, const fs::path& to)) {
  Note("rename", from);
  RealRename(from, to);
}

NAMED(DECRYPT, int, Decrypt, (const char* stored, char* plain, std::size_t capacity)) {
  if (Current() == nullptr || Current()->decrypted == nullptr) return RealDecrypt(stored, plain, capacity);
  if (std::strlen(Current()->decrypted) >= capacity) return 0;
  std::strcpy(plain, Current()->decrypted);
  secret_buffer = plain;
  return 1;
}

#pragma GCC diagnostic ignored "-Wpragmas"
#pragma GCC diagnostic ignored "-Wreserved-identifier"
extern "C" {

NAMED("explicit_bzero", void, ExplicitBzero, (void* memory, std::size_t size)) {
  NoteWipe(memory, size);
  RealExplicitBzero(memory, size);
}

NAMED("__explicit_bzero_chk", void, ExplicitBzeroChk, (void* memory, std::size_t size, std::size_t room)) {
  NoteWipe(memory, size);
  RealExplicitBzeroChk(memory, size, room);
}

}  // extern "C"
