#include "platform/stand_in/json/json_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <limits>
#include <string_view>

namespace KELP::Wifi {
namespace {

constexpr std::size_t kRightMargin = 74;
constexpr std::size_t kBytesOfShortestElement = 3;

constexpr std::array<bool, 256> kNeedsEscape = [] {
  std::array<bool, 256> table{};
  std::fill_n(table.begin(), ' ', true);
  table['"'] = true;
  table['\\'] = true;
  return table;
}();

bool NeedsEscape(char byte) {
  return kNeedsEscape[static_cast<unsigned char>(byte)];
}

bool IsFilledContainer(const Json::Value& value) {
  return (value.isObject() || value.isArray()) && !value.empty();
}

class TextWriter {
 public:
  std::string text;

  /// `behind_name` tells that a member's name stands on the line already: a filled object then starts on a
  /// line of its own, and so does an array that does not fit on one.
  void Write(const Json::Value& value, bool behind_name = false) {
    switch (value.type()) {
      case Json::objectValue:
        return WriteObject(value, behind_name);
      case Json::arrayValue:
        return WriteArray(value, behind_name);
      case Json::stringValue:
        return WriteString(value);
      case Json::nullValue:
        text += "null";
        return;
      case Json::booleanValue:
        text += value.asBool() ? "true" : "false";
        return;
      case Json::intValue:
        return WriteNumber(value.asLargestInt());
      default:
        text += value.asString();
    }
  }

 private:
  void WriteObject(const Json::Value& object, bool behind_name) {
    if (object.empty()) {
      text += "{}";
      return;
    }
    if (behind_name) StartLine();
    Open('{');
    const auto begin = object.begin();
    const auto end = object.end();
    for (auto member = begin; member != end; ++member) {
      StartElement(member == begin);
      const char* name_end = nullptr;
      const char* const name = member.memberName(&name_end);
      WriteQuoted({name, name_end}, "\" : ");
      Write(*member, true);
    }
    Close('}');
  }

  void WriteArray(const Json::Value& array, bool behind_name) {
    if (array.empty()) {
      text += "[]";
      return;
    }
    if (WriteOnOneLine(array)) return;
    if (behind_name) StartLine();
    Open('[');
    const auto begin = array.begin();
    const auto end = array.end();
    for (auto element = begin; element != end; ++element) {
      StartElement(element == begin);
      Write(*element);
    }
    Close(']');
  }

  /// Leaves the text as it was, and gives false, where the array is not to stand on one line.
  bool WriteOnOneLine(const Json::Value& array) {
    const auto end = array.end();
    if (array.size() * kBytesOfShortestElement >= kRightMargin) return false;
    if (std::any_of(array.begin(), end, IsFilledContainer)) return false;

    const std::size_t start = text.size();
    text += "[ ";
    for (auto element = array.begin(); element != end; ++element) {
      if (element != array.begin()) text += ", ";
      Write(*element);
    }
    text += " ]";
    if (text.size() - start < kRightMargin) return true;
    text.resize(start);
    return false;
  }

  void WriteString(const Json::Value& string) {
    const char* begin = nullptr;
    const char* end = nullptr;
    string.getString(&begin, &end);
    WriteQuoted({begin, end});
  }

  void WriteNumber(Json::LargestInt number) {
    std::array<char, std::numeric_limits<Json::LargestInt>::digits10 + 2> digits;  // and a sign
    text.append(digits.data(), std::to_chars(digits.begin(), digits.end(), number).ptr);
  }

  /// `end` is the closing quote, and what follows it.
  void WriteQuoted(std::string_view bytes, std::string_view end = "\"") {
    text += '"';
    while (!bytes.empty()) {
      const auto plain = static_cast<std::size_t>(
          std::distance(bytes.begin(), std::find_if(bytes.begin(), bytes.end(), NeedsEscape)));
      text += bytes.substr(0, plain);
      bytes.remove_prefix(plain);
      if (bytes.empty()) break;
      WriteEscaped(bytes.front());
      bytes.remove_prefix(1);
    }
    text += end;
  }

  void WriteEscaped(char byte) {
    constexpr std::string_view kShort = "\"\\\b\f\n\r\t";
    constexpr std::string_view kShortNames = "\"\\bfnrt";
    constexpr std::string_view kDigits = "0123456789abcdef";
    text += '\\';
    if (const std::size_t place = kShort.find(byte); place != std::string_view::npos) {
      text += kShortNames[place];
      return;
    }
    const auto code = static_cast<unsigned char>(byte);
    text += "u00";
    text += kDigits[code >> 4U];
    text += kDigits[code & 0xFU];
  }

  void Open(char bracket) {
    text += bracket;
    line_start_ += '\t';
  }

  void Close(char bracket) {
    line_start_.pop_back();
    StartLine();
    text += bracket;
  }

  void StartElement(bool is_first) { text += std::string_view(line_start_).substr(is_first ? 1 : 0); }

  void StartLine() { StartElement(true); }

  std::string line_start_ = ",\n";  // and a tab for each level; the comma behind an element only
};

}  // namespace

std::string ToIndentedText(const Json::Value& value) {
  TextWriter writer;
  writer.Write(value);
  return std::move(writer.text);
}

}  // namespace KELP::Wifi
