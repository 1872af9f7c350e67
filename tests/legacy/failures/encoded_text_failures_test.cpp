#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include "legacy/encoded_text.h"

namespace {

constexpr const char* kSecret = "correct horse battery staple";

char* buffer = nullptr;       // into which the cipher wrote the secret
std::size_t wiped_first = 0;  // bytes of it that were wiped, from its beginning on
bool held_secret = false;     // when it was wiped

void NoteWipe(const void* memory, std::size_t size) {
  if (memory != buffer) return;
  held_secret = std::strcmp(buffer, kSecret) == 0;
  wiped_first = std::max(wiped_first, size);
}

}  // namespace

// The linker puts these between the text and the platform and the C library.
#if __SIZEOF_SIZE_T__ == 8
#define KELP_DECRYPT "__wrap__Z18KLIBCryptSzDecryptPKcPcm"
#else
#define KELP_DECRYPT "__wrap__Z18KLIBCryptSzDecryptPKcPcj"
#endif
int WrapDecrypt(const char* stored, char* plain, std::size_t capacity) __asm__(KELP_DECRYPT);
int WrapDecrypt(const char* /*stored*/, char* plain, std::size_t capacity) {
  buffer = plain;
  EXPECT_LT(std::strlen(kSecret), capacity);
  std::strcpy(plain, kSecret);
  return 1;
}

#pragma GCC diagnostic ignored "-Wpragmas"
#pragma GCC diagnostic ignored "-Wreserved-identifier"
extern "C" {
void __real_explicit_bzero(void* memory, std::size_t size);
void __wrap_explicit_bzero(void* memory, std::size_t size) {
  NoteWipe(memory, size);
  __real_explicit_bzero(memory, size);
}
void __real___explicit_bzero_chk(void* memory, std::size_t size, std::size_t room);
void __wrap___explicit_bzero_chk(void* memory, std::size_t size, std::size_t room) {
  NoteWipe(memory, size);
  __real___explicit_bzero_chk(memory, size, room);
}
}

namespace KELP::Wifi::Updater {
namespace {

TEST(DecryptSsidFailures, SecretIsWipedFromTheBufferThatHeldIt) {
  EXPECT_EQ(DecryptSsid("stored"), kSecret);
  EXPECT_TRUE(held_secret);
  EXPECT_GE(wiped_first, std::strlen(kSecret));
}

}  // namespace
}  // namespace KELP::Wifi::Updater
