#include "lab/text/json.h"

#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <sstream>

#include "lab/text/utf8.h"

namespace lab {
namespace {

std::unique_ptr<Json::CharReader> StrictReader() {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

std::unique_ptr<Json::StreamWriter> Writer(const char* indentation, bool as_utf8) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = indentation;
  builder["emitUTF8"] = as_utf8;
  return std::unique_ptr<Json::StreamWriter>(builder.newStreamWriter());
}

std::string Written(Json::StreamWriter& writer, const Json::Value& value) {
  std::ostringstream text;
  writer.write(value, &text);
  return std::move(text).str();
}

bool IsPlain(std::string_view text) {
  return std::ranges::all_of(
      text, [](char byte) { return byte >= ' ' && byte < 0x7F && byte != '"' && byte != '\\'; });
}

}  // namespace

// To set up readers and writers costs more than they take for a small text. A thread has its own.

std::optional<Json::Value> ParseJson(std::string_view text) {
  thread_local const std::unique_ptr<Json::CharReader> reader = StrictReader();
  Json::Value value;
  std::string errors;
  try {
    if (reader->parse(text.data(), text.data() + text.size(), &value, &errors)) return value;
  } catch (const Json::Exception&) {  // nested too deep
  }
  return std::nullopt;
}

std::string JsonLine(const Json::Value& value) {
  thread_local const std::unique_ptr<Json::StreamWriter> writer = Writer("", false);
  return Written(*writer, value);
}

std::string IndentedJson(const Json::Value& value) {
  thread_local const std::unique_ptr<Json::StreamWriter> writer = Writer("  ", false);
  return Written(*writer, value) + "\n";
}

std::string DocumentJson(const Json::Value& value) {
  thread_local const std::unique_ptr<Json::StreamWriter> writer = Writer("\t", true);
  return Written(*writer, value) + "\n";
}

std::string JsonString(std::string_view text) {
  std::string json = "\"";
  for (const char character : ValidUtf8(text)) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte == '"' || byte == '\\') {
      json.append("\\").append(1, character);
    } else if (byte == '\n') {
      json += "\\n";
    } else if (byte < 0x20 || byte == 0x7F) {
      std::array<char, 8> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "\\u%04x", byte);
      json += escaped.data();
    } else {
      json += character;
    }
  }
  return json += '"';
}

JsonWriter& JsonWriter::Add(std::string_view text) {
  Separate();
  AppendText(text);
  return *this;
}

void JsonWriter::AppendText(std::string_view text) {
  if (IsPlain(text)) {
    text_.append(1, '"').append(text).append(1, '"');
  } else {
    text_ += strings_ == Strings::Utf8 ? JsonString(text) : JsonLine(std::string(text));
  }
}

JsonWriter& JsonWriter::End() {
  text_ += closing_.back();
  closing_.pop_back();
  is_first_ = false;
  return *this;
}

JsonWriter& JsonWriter::Name(std::string_view name) {
  Separate();
  AppendText(name);
  text_ += ':';
  is_first_ = true;
  return *this;
}

JsonWriter& JsonWriter::AddJson(std::string_view json) {
  Separate();
  text_ += json;
  return *this;
}

JsonWriter& JsonWriter::Begin(char open, char close) {
  Separate();
  text_ += open;
  closing_ += close;
  is_first_ = true;
  return *this;
}

/// Between two elements stands a comma, and none after a name.
void JsonWriter::Separate() {
  if (!is_first_) text_ += ',';
  is_first_ = false;
}

}  // namespace lab
