#include "platform/base64.h"

#include <sodium.h>

#include <algorithm>

namespace {

// The library of some releases takes bytes above 0x7F for digits, so it is only asked about the alphabet's
// own.
bool IsOfAlphabet(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') ||
         byte == '+' || byte == '/' || byte == '=';
}

}  // namespace

int KELPEncodingBase64Decode(const char* source, std::size_t source_length, unsigned char* buffer,
                             std::size_t* length) {
  if (!std::all_of(source, source + source_length, IsOfAlphabet)) return 0;
  const char* end = source;
  const int result = sodium_base642bin(buffer, *length, source, source_length, nullptr, length, &end,
                                       sodium_base64_VARIANT_ORIGINAL);
  return result == 0 && end == source + source_length ? 1 : 0;
}
