#include "lab/text/json.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace lab {
namespace {

TEST(ParseJson, ReadsWhatADeviceReads) {
  EXPECT_EQ(ParseJson(R"( {"a": [1, -2.5, true, null, "\u00e9"]} )").value()["a"].size(), 5U);
  EXPECT_EQ(ParseJson("[]").value(), Json::Value(Json::arrayValue));
  EXPECT_EQ(ParseJson("[\"caf\xe9\"]").value()[0].asString(), "caf\xe9");
  EXPECT_EQ(ParseJson("[\"a\\u0000b\"]").value()[0].asString(), std::string("a\0b", 3));
  EXPECT_EQ(ParseJson("[18446744073709551616]").value()[0].asDouble(), 18446744073709551616.0);
}

TEST(ParseJson, TakesNothingElse) {
  for (const std::string& text :
       {std::string(), std::string("1"), std::string("\"a\""), std::string("null"), std::string("[1,]"),
        std::string("{\"a\":1,\"a\":2}"), std::string("[] // end"), std::string("[]]"), std::string("[NaN]"),
        std::string("{'a':1}"), std::string("{a:1}"), std::string("[1"), std::string(100'000, '[')}) {
    EXPECT_FALSE(ParseJson(text)) << text.substr(0, 20);
  }
  EXPECT_TRUE(ParseJson("[1]")) << "the reader has what it failed at behind it";
}

TEST(WrittenJson, HasItsForm) {
  Json::Value value;
  value["b"].append(1);
  value["a"] = "\xc3\xa9\t\"";
  EXPECT_EQ(JsonLine(value), R"({"a":"\u00e9\t\"","b":[1]})");
  EXPECT_EQ(IndentedJson(value), "{\n  \"a\" : \"\\u00e9\\t\\\"\",\n  \"b\" : \n  [\n    1\n  ]\n}\n");
  EXPECT_EQ(DocumentJson(value), "{\n\t\"a\" : \"\xc3\xa9\\t\\\"\",\n\t\"b\" : \n\t[\n\t\t1\n\t]\n}\n");
}

TEST(JsonString, IsValidWhateverTheBytes) {
  EXPECT_EQ(JsonString(""), "\"\"");
  EXPECT_EQ(JsonString("a\"b\\c\n\t\r\x01\x7f"), "\"a\\\"b\\\\c\\n\\u0009\\u000d\\u0001\\u007f\"");
  EXPECT_EQ(JsonString(std::string("\0", 1)), "\"\\u0000\"");
  EXPECT_EQ(JsonString("Café さくら \xF0\x9F\x8F\xA0"), "\"Café さくら \xF0\x9F\x8F\xA0\"");
  EXPECT_EQ(JsonString("caf\xE9"), "\"caf\\\\xe9\"");
}

TEST(JsonWriter, KeepsTheOrderOfMembers) {
  JsonWriter json;
  json.BeginObject()
      .Member("b", "text")
      .Member("a", std::int64_t{-9'000'000'000})
      .Member("yes", true)
      .Member("none", std::optional<int>())
      .Texts("list", std::vector<std::string>{"x", "\""})
      .Texts("empty", std::vector<std::string>());
  json.Name("inner").BeginArray().BeginObject().End().Add(1).AddJson("{\"c\":2}").End().End();
  EXPECT_EQ(json.Text(),
            "{\"b\":\"text\",\"a\":-9000000000,\"yes\":true,\"none\":null,\"list\":[\"x\",\"\\\"\"],"
            "\"empty\":[],\"inner\":[{},1,{\"c\":2}]}");
}

}  // namespace
}  // namespace lab
