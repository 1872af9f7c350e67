#include "lab/fleets/json_text.h"

#include <array>
#include <cstdio>

namespace lab::fleets {
namespace {

bool IsContinuation(std::string_view text, std::size_t place) {
  return place < text.size() && (static_cast<unsigned char>(text[place]) & 0xC0U) == 0x80;
}

/// The length of the UTF-8 sequence that starts at `place`; 0 where none does. Overlong forms, surrogates and
/// what lies beyond the last character are none.
std::size_t SequenceLength(std::string_view text, std::size_t place) {
  const auto first = static_cast<unsigned char>(text[place]);
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xC2 && first < 0xE0 ? 2 : first >= 0xE0 && first < 0xF0 ? 3 : 4;
  if (first < 0xC2 || first > 0xF4) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(text, place + i)) return 0;
  }
  const auto second = static_cast<unsigned char>(text[place + 1]);
  const bool is_wrong = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                        (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
  return is_wrong ? 0 : length;
}

void AppendFormatted(std::string& json, const char* format, unsigned byte) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), format, byte);
  json += text.data();
}

}  // namespace

std::string Utf8Text(std::string_view text) {
  std::string valid;
  valid.reserve(text.size());
  for (std::size_t place = 0; place < text.size();) {
    const std::size_t length = SequenceLength(text, place);
    if (length == 0) {
      AppendFormatted(valid, "\\x%02x", static_cast<unsigned char>(text[place]));
    } else {
      valid.append(text, place, length);
    }
    place += length == 0 ? 1 : length;
  }
  return valid;
}

std::string JsonText(std::string_view text) {
  std::string json = "\"";
  for (const char character : Utf8Text(text)) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte == '"' || byte == '\\') {
      json.append("\\").append(1, character);
    } else if (byte == '\n') {
      json += "\\n";
    } else if (byte < 0x20 || byte == 0x7F) {
      AppendFormatted(json, "\\u%04x", byte);
    } else {
      json += character;
    }
  }
  json += '"';
  return json;
}

}  // namespace lab::fleets
