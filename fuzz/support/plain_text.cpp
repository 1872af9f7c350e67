#include "fuzz/support/plain_text.h"

#include <limits>

namespace fuzz {
namespace {

constexpr std::string_view kBase64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::vector<std::string> PlainLines(const std::string& text) {
  std::vector<std::string> lines(1);
  for (const char byte : text) {
    if (byte == '\n') {
      lines.emplace_back();
    } else {
      lines.back() += byte;
    }
  }
  return lines;
}

std::optional<std::pair<std::string, std::string>> PlainEntry(const std::string& line,
                                                              std::string_view comment_bytes) {
  if (line.empty() || comment_bytes.find(line[0]) != std::string_view::npos) return std::nullopt;
  std::string key;
  std::size_t place = 0;
  while (place < line.size() && line[place] != '=') key += line[place++];
  if (place == line.size()) return std::nullopt;
  std::string value;
  for (++place; place < line.size(); ++place) value += line[place];
  if (value.size() > 1 && value[0] == '"' && value[value.size() - 1] == '"') {
    value.erase(value.size() - 1);
    value.erase(0, 1);
  }
  return std::pair(key, value);
}

std::map<std::string, std::string> PlainEntries(const std::string& text) {
  std::map<std::string, std::string> entries;
  for (const std::string& line : PlainLines(text)) {
    if (const auto entry = PlainEntry(line, "#")) entries.insert(*entry);
  }
  return entries;
}

std::optional<std::int32_t> PlainNumber(const std::string& text) {
  std::size_t place = 0;
  const auto at = [&] { return place < text.size() ? text[place] : '\0'; };
  while (at() == ' ' || (at() >= '\t' && at() <= '\r')) ++place;
  const bool is_negative = at() == '-';
  if (at() == '-' || at() == '+') ++place;
  if (at() < '0' || at() > '9') return std::nullopt;

  std::int64_t number = 0;
  constexpr std::int64_t kBeyond = std::int64_t{1} << 40;  // stays out of range whatever digits follow
  for (; at() >= '0' && at() <= '9'; ++place) {
    number = number * 10 + (at() - '0');
    if (number > kBeyond) number = kBeyond;
  }
  if (is_negative) number = -number;
  using Limits = std::numeric_limits<std::int32_t>;
  if (number < Limits::min() || number > Limits::max()) return std::nullopt;
  return static_cast<std::int32_t>(number);
}

std::string UpToNul(const std::string& text) {
  return text.c_str();
}

std::string PlainEncodeBase64(const std::string& bytes) {
  std::string text;
  for (std::size_t place = 0; place < bytes.size(); place += 3) {
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      const bool is_there = place + i < bytes.size();
      group = group * 256 + (is_there ? static_cast<unsigned char>(bytes[place + i]) : 0U);
    }
    for (unsigned int i = 0; i < 4; ++i) {
      const bool is_padding = place + i > bytes.size();
      text += is_padding ? '=' : kBase64Digits[group >> (18 - 6 * i) & 63U];
    }
  }
  return text;
}

std::optional<std::string> PlainDecodeBase64(const std::string& text) {
  std::string bytes;
  std::uint32_t bits = 0;
  unsigned int count = 0;
  for (const char digit : text) {
    if (digit == '=') break;
    const std::size_t value = kBase64Digits.find(digit);
    if (value == std::string_view::npos) return std::nullopt;
    bits = bits << 6U | static_cast<std::uint32_t>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes += static_cast<char>(bits >> count & 255U);
    }
  }
  // There is one way only to write these bytes: padding and unused bits have no choice.
  if (PlainEncodeBase64(bytes) != text) return std::nullopt;
  return bytes;
}

}  // namespace fuzz
