#include "lab/page/script_data.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <memory>
#include <sstream>
#include <string>

namespace lab_test {
namespace {

using lab::page::ScriptData;

Json::Value Text(const std::string& text) {
  return Json::Value(text);
}

Json::Value Read(const std::string& text) {
  std::istringstream stream(text);
  Json::Value value;
  std::string errors;
  EXPECT_TRUE(Json::parseFromStream(Json::CharReaderBuilder(), stream, &value, &errors)) << errors;
  return value;
}

TEST(ScriptData, LeavesPlainTextsAsTheyAre) {
  EXPECT_EQ(ScriptData(Text("Harbour 5G")), R"("Harbour 5G")");
}

TEST(ScriptData, NeverEndsTheElementOrBeginsAComment) {
  EXPECT_EQ(ScriptData(Text("</script>")), R"("\u003c/script\u003e")");
  EXPECT_EQ(ScriptData(Text("<!--<script>")), R"("\u003c!--\u003cscript\u003e")");
  EXPECT_EQ(ScriptData(Text("]]>")), R"("]]\u003e")");
  EXPECT_EQ(ScriptData(Text("&lt;")), R"("\u0026lt;")");
}

TEST(ScriptData, EscapesNamesOfMembersToo) {
  Json::Value value;
  value["</script>"] = 1;
  EXPECT_EQ(ScriptData(value), R"({"\u003c/script\u003e":1})");
}

TEST(ScriptData, GivesBackWhatWentIn) {
  for (const std::string text :
       {"</script>", "\"quotes\" and 'others'", "back\\slash", "\\u003c", "霧笛の家", "two\nlines\t!", "😀"}) {
    EXPECT_EQ(Read(ScriptData(Text(text))), Text(text));
  }
}

TEST(ScriptData, IsAsciiWhateverTheTextHolds) {
  EXPECT_EQ(ScriptData(Text("é")), R"("\u00e9")");
  EXPECT_EQ(ScriptData(Text("😀")), R"("\ud83d\ude00")");
}

TEST(ScriptData, TellsBytesThatAreNoUtf8Apart) {
  EXPECT_EQ(Read(ScriptData(Text("Caf\xe9"))), Text("Caf\\xe9"));
  EXPECT_EQ(Read(ScriptData(Text("\xc0\xbc/script\xf8"))), Text("\\xc0\\xbc/script\\xf8"));
}

TEST(ScriptData, MakesMarksVisibleThatTurnTheDirectionOrTheLine) {
  EXPECT_EQ(Read(ScriptData(Text("\u202egnp.exe"))), Text("\\u202egnp.exe"));
  EXPECT_EQ(Read(ScriptData(Text("a\u2028b\u2029c"))), Text("a\\u2028b\\u2029c"));
  EXPECT_EQ(Read(ScriptData(Text("a\u2066b\u200fc"))), Text("a\\u2066b\\u200fc"));
}

TEST(ScriptData, WritesArraysAndObjectsWithoutSpace) {
  Json::Value value;
  value["list"].append(1);
  value["list"].append(true);
  value["list"].append(Json::Value());
  value["none"] = Json::Value(Json::arrayValue);
  EXPECT_EQ(ScriptData(value), R"({"list":[1,true,null],"none":[]})");
}

}  // namespace
}  // namespace lab_test
