#include "platform/stand_in/json/plain_json.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace KELP::Wifi {
namespace {

using namespace std::string_literals;

/// Why the text is refused; empty when it is not.
std::string Refusal(const std::string& text) {
  try {
    RequirePlainJson(text);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

std::string Nested(std::size_t depth, const std::string& open, const std::string& close) {
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += open;
  for (std::size_t i = 0; i < depth; ++i) text += close;
  return text;
}

std::vector<std::string> Accepted() {
  return {
      "{}",
      "[]",
      " \t\r\n[ \t\r\n] \t\r\n",
      "{ }",
      "[[], {}, [{}], {\"a\": []}]",
      "[true, false, null]",
      "[true,false,null]",
      "{\"a\": 1, \"b\": {\"a\": 1}}",
      "{\"\": \"\"}",
      "{ \"a\" : [ 1 , 2 ] , \"b\" : { } }",
      // Numbers.
      "[0, -0, 1, -1, 10, 1234567890, -9223372036854775808, 18446744073709551615]",
      "[0.0, -0.5, 1.25, 10.01, 0.000001]",
      "[0e0, 1e5, 1E5, 1e+5, 1e-5, 1.5e3, -1.5E-3, 1e05]",
      "[123456789012345678901234567890]",
      "[1e308, 1.7976931348623157e308, -1.7976931348623157e308]",
      "[1e-400, 0e999, 4.9e-324]",
      "[" + std::string(300, '9') + "]",
      "[0." + std::string(1000, '1') + "]",
      // Texts.
      R"(["", "a", "\"", "\\", "\/", "\b\f\n\r\t"])",
      R"(["\u0000", "\u0041", "\u00e9\u00E9", "\uFFFF", "\uD7FF\uE000"])",
      R"(["\uD83D\uDE00", "\ud800\udc00", "\uDBFF\uDFFF", "\ud83d\ude00x"])",
      R"({"\u0061": 1})",
      R"(["// a", "/* b */", "# c", "'"])",
      "[\"\x7F\", \"caf\xC3\xA9\", \"\xF0\x9F\x98\x80\"]",
      "[\"caf\xE9\", \"\xFF\xFE\x80\", \"\xC0\x80\", \"\xED\xA0\x80\", \"\xEF\xBB\xBF\"]",
      "\xEF\xBB\xBF{}",
      "\xEF\xBB\xBF [1]",
      Nested(1000, "[", "]"),
      Nested(999, "{\"a\":", "}").insert(999 * 5, "[]"),
  };
}

std::vector<std::string> Refused() {
  return {
      // Not one object or array and nothing else.
      "",
      " ",
      "\n",
      "1",
      "\"text\"",
      "true",
      "null",
      "{} {}",
      "{}x",
      "[],",
      "[]]",
      "{}}",
      "}",
      "]",
      "[",
      "{",
      "[}",
      "{]",
      "[1",
      "{\"a\"",
      "{\"a\":",
      "{\"a\": 1",
      "{\"a\": 1,",
      "[\"a",
      "[\"a\\",
      "[\"a\\u00",
      "\xEF\xBB{}",
      " \xEF\xBB\xBF{}",
      "{}\xEF\xBB\xBF",
      "\xEF\xBB\xBF\xEF\xBB\xBF{}",
      "\xEF\xBB\xBF",
      "\xFF\xFE{\0}\0"s,
      "\0"s,
      "\0{}"s,
      "{}\0"s,
      "{}\n\0\0"s,
      "[1\0]"s,
      "[\0]"s,
      "{}\x1A",
      "\f{}",
      "\v{}",
      "\xC2\xA0{}",
      // Separators.
      "[,]",
      "[,1]",
      "[1,]",
      "[1,,2]",
      "[1 2]",
      "[1; 2]",
      "{,}",
      "{\"a\": 1,}",
      "{,\"a\": 1}",
      "{\"a\": 1 \"b\": 2}",
      "{\"a\" 1}",
      "{\"a\":: 1}",
      "{\"a\"}",
      "{\"a\",}",
      "{\"a\": }",
      "{\"a\": : 1}",
      "[1: 2]",
      "[\"a\": 2]",
      "{a: 1}",
      "{'a': 1}",
      "{1: 2}",
      "{null: 1}",
      "{[]: 1}",
      // Comments.
      "// a\n{}",
      "/* a */ {}",
      "{} // a",
      "{} /* a */",
      "{ /* a */ }",
      "[1 /* a */]",
      "[1, // a\n2]",
      "{\"a\": /* b */ 1}",
      "{\"a\": 1, /* b */ \"b\": 2}",
      "# a\n{}",
      // Words.
      "[TRUE]",
      "[True]",
      "[tru]",
      "[truex]",
      "[true false]",
      "[nul]",
      "[nullnull]",
      "[undefined]",
      "[NaN]",
      "[nan]",
      "[Infinity]",
      "[-Infinity]",
      "[inf]",
      // Numbers.
      "[01]",
      "[-01]",
      "[00]",
      "[0123]",
      "[+1]",
      "[-]",
      "[--1]",
      "[- 1]",
      "[1.]",
      "[-1.]",
      "[.5]",
      "[-.5]",
      "[1.e5]",
      "[1e]",
      "[1e+]",
      "[1E-]",
      "[1e5.5]",
      "[1.2.3]",
      "[1ee5]",
      "[0x10]",
      "[1f]",
      "[1_000]",
      "[1 000]",
      "[1,5e]",
      "[1e309]",
      "[-1e309]",
      "[1.8e308]",
      "[1e999]",
      "[" + std::string(400, '9') + "]",
      // Texts.
      "['a']",
      "[\"a]",
      "[a\"]",
      "[\"a\nb\"]",
      "[\"a\tb\"]",
      "[\"\x01\"]",
      "[\"\x1F\"]",
      "[\"a\0b\"]"s,
      "{\"a\n\": 1}",
      R"(["\x41"])",
      R"(["\a"])",
      R"(["\'"])",
      R"(["\0"])",
      "[\"\\\0\"]"s,
      "[\"\\\n\"]",
      R"(["\U0041"])",
      R"(["\u"])",
      R"(["\u12"])",
      R"(["\u123"])",
      R"(["\u123g"])",
      R"(["\u+123"])",
      R"(["\u 123"])",
      R"(["\u12"34"])",
      // Half a pair.
      R"(["\ud800"])",
      R"(["\udbff"])",
      R"(["\udc00"])",
      R"(["\uDFFF"])",
      R"(["\ud83d\ud83d"])",
      R"(["\ud83d\u0041"])",
      R"(["\ud83d\udbff"])",
      R"(["\ud83d\ue000"])",
      R"(["\ud83dx"])",
      R"(["\ud83d\n"])",
      R"(["\ud83d \ude00"])",
      R"(["\ude00\ud83d"])",
      R"({"\ud800": 1})",
      // Depth.
      Nested(1001, "[", "]"),
      Nested(1001, "{\"a\":", "}"),
      std::string(100'000, '['),
      Nested(1000, "[", "]").insert(1000, "{}"),
  };
}

/// What the library's strict mode makes of a text; nothing where it refuses it.
std::unique_ptr<Json::Value> LibraryValue(const std::string& text, std::string& errors) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder.settings_["stackLimit"] = static_cast<Json::UInt>(kDeepestJson + 1);
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  auto value = std::make_unique<Json::Value>();
  if (!reader->parse(text.data(), text.data() + text.size(), value.get(), &errors)) return nullptr;
  return value;
}

TEST(PlainJson, IsAccepted) {
  for (const std::string& text : Accepted()) EXPECT_EQ(Refusal(text), "") << text.substr(0, 80);
}

TEST(PlainJson, IsAllThatIsAccepted) {
  for (const std::string& text : Refused()) EXPECT_NE(Refusal(text), "") << text.substr(0, 80);
}

TEST(PlainJson, IsReadByTheLibraryToo) {
  for (const std::string& text : Accepted()) {
    std::string errors;
    EXPECT_NE(LibraryValue(text, errors), nullptr) << text.substr(0, 80) << errors;
  }
}

// Whatever release the library is of: every text that is one byte away from a rich sample.
TEST(PlainJson, IsReadByTheLibraryWhateverByteChanges) {
  const std::string sample =
      R"({"a":[-1.5e-2,0,{"b\u00e9":"\ud83d\ude00\n"},true,[],{}], "c" :null,"d":{"e":10}})"s + "\n";
  ASSERT_EQ(Refusal(sample), "");
  int accepted = 0;
  for (std::size_t at = 0; at <= sample.size(); ++at) {
    std::vector<std::string> texts{sample.substr(0, at)};
    if (at < sample.size()) texts.push_back(std::string(sample).erase(at, 1));
    for (int byte = 0; byte < 256; ++byte) {
      texts.push_back(std::string(sample).insert(at, 1, static_cast<char>(byte)));
      if (at < sample.size()) texts.push_back(std::string(sample).replace(at, 1, 1, static_cast<char>(byte)));
    }
    for (const std::string& text : texts) {
      if (!Refusal(text).empty()) continue;
      ++accepted;
      std::string errors;
      const bool is_read = LibraryValue(text, errors) != nullptr;
      EXPECT_TRUE(is_read || errors.find("Duplicate key") != std::string::npos) << text << errors;
    }
  }
  EXPECT_GT(accepted, 1000);
}

TEST(PlainJson, HasTheValuesThatStandThere) {
  const auto value = [](const std::string& text) {
    std::string errors;
    EXPECT_EQ(Refusal(text), "");
    const auto root = LibraryValue(text, errors);
    return root && root->isArray() ? (*root)[0] : Json::Value();
  };
  EXPECT_EQ(value("[-0]").asInt(), 0);
  EXPECT_EQ(value("[-9223372036854775808]").asInt64(), INT64_MIN);
  EXPECT_EQ(value("[18446744073709551615]").asUInt64(), UINT64_MAX);
  EXPECT_EQ(value("[1.25e2]").asDouble(), 125.0);
  EXPECT_EQ(value("[1e05]").asDouble(), 100000.0);
  EXPECT_EQ(value("[1.7976931348623157e308]").asDouble(), 1.7976931348623157e308);
  EXPECT_EQ(value("[1e-400]").asDouble(), 0.0);
  EXPECT_EQ(value(R"(["\ud83d\ude00"])").asString(), "\xF0\x9F\x98\x80");
  EXPECT_EQ(value(R"(["\u0000"])").asString(), "\0"s);
  EXPECT_EQ(value("[\"caf\xE9\"]").asString(), "caf\xE9");
}

TEST(PlainJson, TellsThePlaceAndTheReasonAndNothingOfTheText) {
  EXPECT_EQ(Refusal("{\"a\": 1}\n{}"), "line 2, column 1: something behind the document");
  EXPECT_EQ(Refusal("{\n \"password\": hunter2}"), "line 2, column 14: no value");
  EXPECT_EQ(Refusal("[1\n2]"), "line 2, column 1: neither a comma nor the closing bracket");
  EXPECT_EQ(Refusal("[\"secret"), "line 1, column 9: the document ends too early");
  EXPECT_EQ(Refusal(""), "line 1, column 1: the document ends too early");
  EXPECT_EQ(Refusal("7"), "line 1, column 1: neither an object nor an array");
  EXPECT_EQ(Refusal("[1e999]"), "line 1, column 7: a number out of range");
  EXPECT_EQ(Refusal("[\"\t\"]"), "line 1, column 3: a control character in a text");
}

}  // namespace
}  // namespace KELP::Wifi
