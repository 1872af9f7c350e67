#include "tests/builders/failing_platform.h"

#include <cstddef>
#include <string_view>

#include "platform/section_files.h"

// The operations as the linker knows them. std::size_t has another code on 32-bit devices.
#define KELP_TEXT(text) #text
#define KELP_SYMBOL(prefix, name) #prefix KELP_TEXT(name)
#if __SIZEOF_SIZE_T__ == 8
#define KELP_LIST_ALLOC _Z16KLIBCSzListAllocm
#define KELP_HASH_ALLOC _Z16KLIBCSzHashAllocm
#else
#define KELP_LIST_ALLOC _Z16KLIBCSzListAllocj
#define KELP_HASH_ALLOC _Z16KLIBCSzHashAllocj
#endif

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

testing_support::FailingPlatform* Current() {
  return testing_support::FailingPlatform::Current();
}

}  // namespace

KLIBCSzList* RealListAlloc(std::size_t capacity) __asm__(KELP_SYMBOL(__real_, KELP_LIST_ALLOC));
KLIBCSzList* WrapListAlloc(std::size_t capacity) __asm__(KELP_SYMBOL(__wrap_, KELP_LIST_ALLOC));
KLIBCSzList* WrapListAlloc(std::size_t capacity) {
  if (Current() == nullptr) return RealListAlloc(capacity);
  Current()->list_capacity = capacity;
  if (Current()->list_allocation_fails) return nullptr;
  auto* const made = RealListAlloc(capacity);
  if (made != nullptr) ++Current()->lists;
  return made;
}

KLIBCSzHash* RealHashAlloc(std::size_t capacity) __asm__(KELP_SYMBOL(__real_, KELP_HASH_ALLOC));
KLIBCSzHash* WrapHashAlloc(std::size_t capacity) __asm__(KELP_SYMBOL(__wrap_, KELP_HASH_ALLOC));
KLIBCSzHash* WrapHashAlloc(std::size_t capacity) {
  if (Current() == nullptr) return RealHashAlloc(capacity);
  Current()->table_capacity = capacity;
  if (Current()->table_allocation_fails) return nullptr;
  auto* const made = RealHashAlloc(capacity);
  if (made != nullptr) ++Current()->tables;
  return made;
}

void RealListFree(KLIBCSzList* list) __asm__(KELP_SYMBOL(__real_, _Z15KLIBCSzListFreeP11KLIBCSzList));
void WrapListFree(KLIBCSzList* list) __asm__(KELP_SYMBOL(__wrap_, _Z15KLIBCSzListFreeP11KLIBCSzList));
void WrapListFree(KLIBCSzList* list) {
  if (Current() != nullptr && list != nullptr) --Current()->lists;
  RealListFree(list);
}

void RealHashFree(KLIBCSzHash* table) __asm__(KELP_SYMBOL(__real_, _Z15KLIBCSzHashFreeP11KLIBCSzHash));
void WrapHashFree(KLIBCSzHash* table) __asm__(KELP_SYMBOL(__wrap_, _Z15KLIBCSzHashFreeP11KLIBCSzHash));
void WrapHashFree(KLIBCSzHash* table) {
  if (Current() != nullptr && table != nullptr) --Current()->tables;
  RealHashFree(table);
}

int RealEnumSection(const char* path,
                    KLIBCSzList** list) __asm__(KELP_SYMBOL(__real_,
                                                            _Z20KLIBCFileEnumSectionPKcPP11KLIBCSzList));
int WrapEnumSection(const char* path,
                    KLIBCSzList** list) __asm__(KELP_SYMBOL(__wrap_,
                                                            _Z20KLIBCFileEnumSectionPKcPP11KLIBCSzList));
int WrapEnumSection(const char* path, KLIBCSzList** list) {
  if (Current() != nullptr && Current()->section_count) return *Current()->section_count;
  return RealEnumSection(path, list);
}

int RealGetSection(const char* path, const char* name,
                   KLIBCSzHash** table) __asm__(KELP_SYMBOL(__real_,
                                                            _Z19KLIBCFileGetSectionPKcS0_PP11KLIBCSzHash));
int WrapGetSection(const char* path, const char* name,
                   KLIBCSzHash** table) __asm__(KELP_SYMBOL(__wrap_,
                                                            _Z19KLIBCFileGetSectionPKcS0_PP11KLIBCSzHash));
int WrapGetSection(const char* path, const char* name, KLIBCSzHash** table) {
  const int result = RealGetSection(path, name, table);
  if (Current() != nullptr && Current()->sections_that_fail.contains(name)) return Current()->section_result;
  return result;
}

int RealUSB3Disabled() __asm__(KELP_SYMBOL(__real_, _Z29KELPUSBGetUSB3DisableUbootEnvv));
int WrapUSB3Disabled() __asm__(KELP_SYMBOL(__wrap_, _Z29KELPUSBGetUSB3DisableUbootEnvv));
int WrapUSB3Disabled() {
  if (Current() == nullptr) return RealUSB3Disabled();
  ++Current()->usb3_calls;
  return Current()->usb3_disabled ? *Current()->usb3_disabled : RealUSB3Disabled();
}

std::string
RealReadLegacyValue(const std::string& file, std::string_view key, std::string_view default_value) __asm__(
    KELP_SYMBOL(
        __real_,
        _ZN4KELP4Wifi7Updater15ReadLegacyValueERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEESt17basic_string_viewIcS5_ESB_));
std::string
WrapReadLegacyValue(const std::string& file, std::string_view key, std::string_view default_value) __asm__(
    KELP_SYMBOL(
        __wrap_,
        _ZN4KELP4Wifi7Updater15ReadLegacyValueERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEESt17basic_string_viewIcS5_ESB_));
std::string WrapReadLegacyValue(const std::string& file, std::string_view key,
                                std::string_view default_value) {
  if (Current() != nullptr && Current()->legacy_reads_throw) throw 1;
  return RealReadLegacyValue(file, key, default_value);
}
