#include "lab/images/tar_text.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace lab {
namespace {

constexpr std::size_t kBlock = 512;
constexpr std::size_t kLongestName = 100;

/// A header's fields, at their places.
constexpr std::size_t kMode = 100;
constexpr std::size_t kOwner = 108;
constexpr std::size_t kGroup = 116;
constexpr std::size_t kSize = 124;
constexpr std::size_t kTime = 136;
constexpr std::size_t kSum = 148;
constexpr std::size_t kType = 156;
constexpr std::size_t kTarget = 157;
constexpr std::size_t kMagic = 257;

void Put(std::string& header, std::size_t place, std::string_view text) {
  header.replace(place, text.size(), text);
}

void PutOctal(std::string& header, std::size_t place, int digits, std::uintmax_t number) {
  std::array<char, 24> text{};
  // cppcheck-suppress invalidPrintfArgType_uint  ; that is a uintmax_t
  std::snprintf(text.data(), text.size(), "%0*jo", digits, number);
  Put(header, place, text.data());
}

}  // namespace

std::string TarEntry(std::string_view name, char type, mode_t mode, std::string_view bytes,
                     std::string_view target) {
  if (name.size() > kLongestName || target.size() > kLongestName) {
    throw std::invalid_argument("a name too long for the archive: " + std::string(name));
  }
  std::string entry(kBlock, '\0');
  Put(entry, 0, name);
  PutOctal(entry, kMode, 7, mode & 07777U);
  PutOctal(entry, kOwner, 7, 0);
  PutOctal(entry, kGroup, 7, 0);
  PutOctal(entry, kSize, 11, bytes.size());
  PutOctal(entry, kTime, 11, 0);
  entry[kType] = type;
  Put(entry, kTarget, target);
  Put(entry, kMagic, std::string_view("ustar\00000", 8));
  Put(entry, kSum, "        ");
  unsigned sum = 0;
  for (const char byte : entry) sum += static_cast<unsigned char>(byte);
  PutOctal(entry, kSum, 6, sum);
  entry[kSum + 6] = '\0';

  entry.append(bytes);
  entry.resize((entry.size() + kBlock - 1) / kBlock * kBlock, '\0');
  return entry;
}

std::string TarEnd() {
  std::string end;
  end.resize(2 * kBlock, '\0');
  return end;
}

}  // namespace lab
