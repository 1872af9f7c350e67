#include "platform/stand_in/json/json_text.h"

#include <gtest/gtest.h>
#include <json/value.h>
#include <json/writer.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace KELP::Wifi {
namespace {

std::string LibraryText(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["commentStyle"] = "None";
  builder["indentation"] = "\t";
  builder["emitUTF8"] = true;
  return Json::writeString(builder, value);
}

/// Random values with a bent for what the layout depends on: short and long arrays, empty containers, texts
/// near the margin and bytes that are escaped.
class RandomValues {
 public:
  Json::Value Next(int depth) {
    switch (Draw(depth == 0 ? 4 : 8)) {
      case 0:
        return Text(Draw(30));
      case 1:
        return static_cast<Json::Int>(engine_());
      case 2:
        return Draw(2) == 0;
      case 3:
        return Draw(4) == 0 ? Json::Value() : Json::Value(Text(60 + Draw(16)));
      case 4:
      case 5:
        return Object(depth);
      default:
        return Array(depth);
    }
  }

 private:
  int Draw(int limit) { return static_cast<int>(engine_() % static_cast<std::uint32_t>(limit)); }

  std::string Text(int length) {
    std::string text;
    for (int i = 0; i < length; ++i) text += static_cast<char>(Draw(6) == 0 ? Draw(256) : 'a' + Draw(26));
    return text;
  }

  Json::Value Object(int depth) {
    Json::Value object(Json::objectValue);
    for (int members = Draw(5); members > 0; --members) object[Text(Draw(12))] = Next(depth - 1);
    return object;
  }

  Json::Value Array(int depth) {
    Json::Value array(Json::arrayValue);
    const bool plain = Draw(2) == 0;
    for (int size = Draw(plain ? 30 : 6); size > 0; --size) {
      array.append(plain ? Json::Value(Text(Draw(8))) : Next(depth - 1));
    }
    return array;
  }

  std::mt19937 engine_{20240917};
};

TEST(JsonText, IsWhatTheLibraryWritesForRandomValues) {
  RandomValues values;
  for (int round = 0; round < 20'000; ++round) {
    const Json::Value value = values.Next(4);
    ASSERT_EQ(ToIndentedText(value), LibraryText(value)) << "round " << round;
  }
}

TEST(JsonText, LaysObjectsOutWithOneTabALevel) {
  Json::Value value;
  value["b"]["inner"] = 1;
  value["a"] = "text";
  EXPECT_EQ(ToIndentedText(value), "{\n\t\"a\" : \"text\",\n\t\"b\" : \n\t{\n\t\t\"inner\" : 1\n\t}\n}");
}

TEST(JsonText, KeepsEmptyContainersOnTheLine) {
  Json::Value value;
  value["list"] = Json::Value(Json::arrayValue);
  value["object"] = Json::Value(Json::objectValue);
  EXPECT_EQ(ToIndentedText(value), "{\n\t\"list\" : [],\n\t\"object\" : {}\n}");
}

TEST(JsonText, BreaksAnArrayThatReachesTheMargin) {
  // "[ ", the quoted text and " ]": 73 bytes still fit, 74 do not.
  Json::Value fits(Json::arrayValue);
  fits.append(std::string(67, 'x'));
  EXPECT_EQ(ToIndentedText(fits), "[ \"" + std::string(67, 'x') + "\" ]");
  Json::Value breaks(Json::arrayValue);
  breaks.append(std::string(68, 'x'));
  EXPECT_EQ(ToIndentedText(breaks), "[\n\t\"" + std::string(68, 'x') + "\"\n]");
}

TEST(JsonText, EscapesControlBytesAndLeavesHighBytesAlone) {
  const Json::Value value(std::string("\x00\x1f\b\t\n\f\r\"\\/\x7f\x80\xff", 13));
  EXPECT_EQ(ToIndentedText(value), "\"\\u0000\\u001f\\b\\t\\n\\f\\r\\\"\\\\/\x7f\x80\xff\"");
}

TEST(JsonText, WritesTheLargestAndTheSmallestNumber) {
  EXPECT_EQ(ToIndentedText(std::numeric_limits<std::int32_t>::min()), "-2147483648");
  EXPECT_EQ(ToIndentedText(std::numeric_limits<std::int32_t>::max()), "2147483647");
}

}  // namespace
}  // namespace KELP::Wifi
