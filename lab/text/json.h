#pragma once

#include <json/value.h>

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

namespace lab {

/// The value that a text stands for, read as strictly as a device reads its files: an object or array,
/// without comments, members that come twice, or anything after the end. None for all else, and for what is
/// nested too deep.
std::optional<Json::Value> ParseJson(std::string_view text);

/// A value on one line, in ASCII.
std::string JsonLine(const Json::Value& value);

/// A value for people: indented by two spaces, in ASCII, with a line end.
std::string IndentedJson(const Json::Value& value);

/// A value as a device's documents have it: indented by tabs, bytes above 0x7F as they are, with a line end.
std::string DocumentJson(const Json::Value& value);

/// A text as a JSON string: ValidUtf8, with control characters other than the line feed as "\u000d".
std::string JsonString(std::string_view text);

/// Writes JSON on one line with members in the order in which they are added, which the library's objects do
/// not keep.
class JsonWriter {
 public:
  /// What texts become.
  enum class Strings {
    Utf8,   ///< As JsonString makes them.
    Ascii,  ///< As JsonLine makes them.
  };
  explicit JsonWriter(Strings strings = Strings::Utf8) : strings_(strings) {}

  JsonWriter& BeginObject() { return Begin('{', '}'); }
  JsonWriter& BeginArray() { return Begin('[', ']'); }
  JsonWriter& End();

  /// The next member's name.
  JsonWriter& Name(std::string_view name);

  JsonWriter& Add(std::string_view text);
  JsonWriter& Add(std::same_as<bool> auto flag) { return AddJson(flag ? "true" : "false"); }
  template <std::integral Number>
  requires(!std::same_as<Number, bool>) JsonWriter& Add(Number number) {
    return AddJson(std::to_string(number));
  }
  template <typename Value>
  JsonWriter& Add(const std::optional<Value>& value) {
    return value ? Add(*value) : AddJson("null");
  }
  /// What is JSON already.
  JsonWriter& AddJson(std::string_view json);

  template <typename Value>
  JsonWriter& Member(std::string_view name, const Value& value) {
    return Name(name).Add(value);
  }
  /// A list of texts.
  template <typename List>
  JsonWriter& Texts(std::string_view name, const List& texts) {
    Name(name).BeginArray();
    for (const auto& text : texts) Add(text);
    return End();
  }

  /// What was written.
  const std::string& Text() const { return text_; }

 private:
  JsonWriter& Begin(char open, char close);
  void Separate();
  void AppendText(std::string_view text);

  Strings strings_;
  std::string text_;
  std::string closing_;
  bool is_first_ = true;
};

}  // namespace lab
