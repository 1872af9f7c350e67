#include "platform/json_util.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/support/without_file_privileges.h"

namespace KELP::Wifi::Util::JsonUtil {
namespace {

using namespace std::string_literals;

constexpr const char* kFile = "/usr/kelp/etc/wifi/document.json";
constexpr std::size_t kLargest = 1024 * 1024;

/// The whole text of the exception for a file that cannot be read.
std::string Unreadable(const std::string& cause) {
  return "cannot read "s + kFile + ": " + cause;
}

class LoadJson : public ::testing::Test {
 protected:
  /// The text of the exception that loading kFile ends in; empty when it gives a document.
  std::string ErrorOfLoading() {
    const lab::InRoot inside(device_);
    try {
      LoadJsonFromFile(kFile);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "";
  }
  bool IsRefused(const std::string& bytes) {
    device_.Write(kFile, bytes);
    const std::string error = ErrorOfLoading();
    if (error.empty()) return false;
    const std::string start = "malformed JSON in "s + kFile + ": ";
    EXPECT_TRUE(error.starts_with(start)) << error;
    EXPECT_GT(error.size(), start.size()) << "no reason given";
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
    return true;
  }
  Json::Value Load(const std::string& bytes) {
    device_.Write(kFile, bytes);
    const lab::InRoot inside(device_);
    return LoadJsonFromFile(kFile);
  }

  lab::PrivateRoot device_;
};

TEST_F(LoadJson, GivesTheDocument) {
  const Json::Value document =
      Load("{\"model\": \"lotus\", \"numbers\": [1, -2], \"flag\": true, \"none\": null}\n");
  ASSERT_TRUE(document.isObject());
  EXPECT_EQ(document["model"].asString(), "lotus");
  EXPECT_EQ(document["numbers"][1].asInt(), -2);
  EXPECT_TRUE(document["flag"].asBool());
  EXPECT_TRUE(document["none"].isNull());
  EXPECT_EQ(document.size(), 4U);
}

TEST_F(LoadJson, TakesAnArrayForARoot) {
  EXPECT_EQ(Load("[1, 2]").size(), 2U);
  EXPECT_TRUE(Load("{}").isObject());
  EXPECT_TRUE(Load(" \t\r\n[]\r\n ").isArray());
}

TEST_F(LoadJson, RefusesAScalarRoot) {
  for (const auto* text : {"1", "\"text\"", "true", "false", "null", "-1.5"})
    EXPECT_TRUE(IsRefused(text)) << text;
}

TEST_F(LoadJson, RefusesEmptyAndBlankFiles) {
  for (const auto* text : {"", " ", "\n", "\t\r\n"}) EXPECT_TRUE(IsRefused(text)) << text;
}

TEST_F(LoadJson, RefusesADocumentCutAtAnyByte) {
  const std::string sample =
      "{\"repeater_nodes\": [{\"mac\": \"00:11:22:33:44:55\", \"rssi\": -61.5e0, \"up\": true}, null, false],"
      " \"n\\u00e4me\": \"caf\xC3\xA9 \\\"x\\\"\", \"empty\": {}}";
  ASSERT_FALSE(IsRefused(sample));
  for (std::size_t length = 0; length < sample.size(); ++length) {
    EXPECT_TRUE(IsRefused(sample.substr(0, length))) << sample.substr(0, length);
  }
}

TEST_F(LoadJson, RefusesTrailingText) {
  for (const auto* text : {"{}x", "{} {}", "[] 1", "{}\n]", "[],", "{}}", "{}\n\"text\""}) {
    EXPECT_TRUE(IsRefused(text)) << text;
  }
}

TEST_F(LoadJson, RefusesComments) {
  for (const auto* text : {"{} // end", "{} /* end */", "/* start */ {}", "{}\n#\n", "// all\n{}",
                           "[/* x */]", "[1, // x\n 2]", "{\"a\": /* x */ 1}", "{\"a\" /* x */: 1}"}) {
    EXPECT_TRUE(IsRefused(text)) << text;
  }
}

TEST_F(LoadJson, KeepsWhatLooksLikeACommentInsideATextAsItIs) {
  EXPECT_EQ(Load("{\"// a\": \"/* b */ // c\"}")["// a"].asString(), "/* b */ // c");
  EXPECT_EQ(Load("{\"q\": \"\\\"// c\"}")["q"].asString(), "\"// c");
}

TEST_F(LoadJson, RefusesRepeatedMembers) {
  EXPECT_TRUE(IsRefused("{\"a\": 1, \"a\": 2}"));
  EXPECT_TRUE(IsRefused("{\"a\": 1, \"b\": 2, \"a\": 1}"));
  EXPECT_TRUE(IsRefused("[{\"a\": 1, \"\\u0061\": 2}]"));
  EXPECT_FALSE(IsRefused("{\"a\": {\"a\": 1}, \"A\": 2}"));
}

TEST_F(LoadJson, RefusesLaxSpellings) {
  for (const auto* text :
       {"{'a': 1}",      "{a: 1}",     "[1,]",        "{\"a\": 1,}", "[,1]",        "[,]",
        "[NaN]",         "[Infinity]", "[-Infinity]", "[TRUE]",      "[undefined]", "{\"a\" 1}",
        "{\"a\": }",     "{\"a\"}",    "[1 2]",       "{1: 2}",      "[\"\\x41\"]", "[\"\\u12\"]",
        "[\"\\uZZZZ\"]", "[0x10]",     "[--1]",       "[1.2.3]"}) {
    EXPECT_TRUE(IsRefused(text)) << text;
  }
}

TEST_F(LoadJson, RefusesANULBeforeTheEndOfTheDocument) {
  EXPECT_TRUE(IsRefused("\0"s));
  EXPECT_TRUE(IsRefused("\0{}"s));
  EXPECT_TRUE(IsRefused("{\0}"s));
  EXPECT_TRUE(IsRefused("[1\0]"s));
}

// What a file system may put behind a text that was being written when the power went.
TEST_F(LoadJson, RefusesANULBehindTheDocument) {
  EXPECT_TRUE(IsRefused("{}\0\0\0"s));
  EXPECT_TRUE(IsRefused("{\"a\": 1}\n\0{\"a\": 2}"s));
}

TEST_F(LoadJson, GivesBytesThatAreNoUTF8AsTheyStand) {
  const Json::Value document = Load("{\"ssid\": \"\xFF\xFE\x80 caf\xE9\"}");
  EXPECT_EQ(document["ssid"].asString(), "\xFF\xFE\x80 caf\xE9");
}

TEST_F(LoadJson, RefusesBytesThatAreNoUTF8OutsideTheTexts) {
  EXPECT_TRUE(IsRefused("{\xFF}"));
  EXPECT_TRUE(IsRefused("\xFE\xFF{}"));
}

TEST_F(LoadJson, RefusesWideEncodings) {
  EXPECT_TRUE(IsRefused("{\0}\0"s));
  EXPECT_TRUE(IsRefused("\xFF\xFE{\0}\0"s));
}

TEST_F(LoadJson, PassesOverAByteOrderMark) {
  EXPECT_EQ(Load("\xEF\xBB\xBF{\"a\": 1}")["a"].asInt(), 1);
  EXPECT_TRUE(IsRefused("{\"a\": 1}\xEF\xBB\xBF"));
}

TEST_F(LoadJson, RefusesWhatReleasesOfTheLibraryReadDifferently) {
  for (const auto* text :
       {"[1 /* x */]", "{ // x\n}", "{/* x */ \"a\": 1}", "{\"a\": 1, /* x */ \"b\": 2}", "[01]", "[1.]",
        "[-]", "[+1]", "[1e999]", "[\"a\nb\"]", "[\"a\x01\"]", "[\"\\udc00\"]", "[\"\\ud83d\\u0041\"]"}) {
    EXPECT_TRUE(IsRefused(text)) << text;
  }
}

TEST_F(LoadJson, ReadsEscapedTexts) {
  const Json::Value document = Load(R"(["\"\\\/\b\f\n\r\t", "\u0041\u00e9\u20ac\ud83d\ude00", "\u0000"])");
  EXPECT_EQ(document[0].asString(), "\"\\/\b\f\n\r\t");
  EXPECT_EQ(document[1].asString(), "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(document[2].asString(), "\0"s);
}

std::string OfSize(std::size_t size) {
  return "[\"" + std::string(size - 4, 'x') + "\"]";
}

TEST_F(LoadJson, TakesExactlyOneMebibyteAndNotAByteMore) {
  EXPECT_EQ(Load(OfSize(kLargest))[0].asString().size(), kLargest - 4);
  for (const std::string& bytes :
       {OfSize(kLargest + 1), "[]" + std::string(kLargest - 1, ' '), OfSize(50 * kLargest)}) {
    device_.Write(kFile, bytes);
    EXPECT_EQ(ErrorOfLoading(), Unreadable("File too large"));
  }
}

std::string Nested(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

TEST_F(LoadJson, TakesAThousandLevelsAndRefusesMore) {
  EXPECT_FALSE(IsRefused(Nested(1000)));
  EXPECT_TRUE(IsRefused(Nested(1001)));
  EXPECT_TRUE(IsRefused(Nested(100'000)));
}

TEST_F(LoadJson, RefusesDeepNestingOfObjectsAndOfUnclosedBrackets) {
  std::string objects;
  for (int i = 0; i < 100'000; ++i) objects += "{\"a\":";
  EXPECT_TRUE(IsRefused(objects));
  EXPECT_TRUE(IsRefused(std::string(100'000, '[')));
}

TEST_F(LoadJson, MissingFileThrows) {
  EXPECT_EQ(ErrorOfLoading(), Unreadable("No such file or directory"));
}

TEST_F(LoadJson, DirectoryThrows) {
  device_.MakeDirectory(kFile);
  EXPECT_EQ(ErrorOfLoading(), Unreadable("Is a directory"));
}

TEST_F(LoadJson, FIFOThrowsWithoutWaiting) {
  device_.MakeFifo(kFile);
  EXPECT_EQ(ErrorOfLoading(), Unreadable("Invalid argument"));
}

TEST_F(LoadJson, DanglingLinkThrows) {
  device_.Link(kFile, "/etc/nowhere");
  EXPECT_EQ(ErrorOfLoading(), Unreadable("No such file or directory"));
}

TEST_F(LoadJson, UnreadableFileThrows) {
  device_.Write(kFile, "{}", 0000);
  const testing_support::WithoutFilePrivileges ordinary;
  EXPECT_EQ(ErrorOfLoading(), Unreadable("Permission denied"));
}

TEST_F(LoadJson, ErrorIsOneLineForAMemberNameThatHoldsNewlines) {
  EXPECT_TRUE(IsRefused("{\"a\\nb\": 1, \"a\\nb\": 2}"));
  EXPECT_TRUE(IsRefused("{\n\"a\n\": x\n}"));
}

Json::Value Sample() {
  Json::Value value(Json::objectValue);
  value["string"] = "text";
  value["empty string"] = "";
  value["array"].append(1);
  value["empty array"] = Json::Value(Json::arrayValue);
  value["object"] = Json::Value(Json::objectValue);
  value["number"] = 1;
  value["real"] = 1.5;
  value["bool"] = true;
  value["null"] = Json::Value();
  return value;
}

/// The exception's text, which has to name the member; empty when nothing was thrown.
template <typename Get>
std::string ErrorOf(Get get, const Json::Value& value, const std::string& member) {
  try {
    get(value, member);
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find(member), std::string::npos) << error.what();
    return error.what();
  }
  return "";
}

TEST(GetString, GivesTheMember) {
  EXPECT_EQ(GetString(Sample(), "string"), "text");
  EXPECT_EQ(GetString(Sample(), "empty string"), "");
}

TEST(GetString, KeepsNULsOfNameAndText) {
  Json::Value value(Json::objectValue);
  value["a\0b"s] = "x\0y"s;
  EXPECT_EQ(GetString(value, "a\0b"s), "x\0y"s);
  EXPECT_THROW(GetString(value, "a"), std::runtime_error);
}

TEST(GetString, ThrowsForEveryOtherKindNamingTheMember) {
  for (const auto* member : {"array", "empty array", "object", "number", "real", "bool", "null"}) {
    EXPECT_NE(ErrorOf(GetString, Sample(), member), "") << member;
  }
}

TEST(GetString, ThrowsForAMissingMemberNamingIt) {
  EXPECT_NE(ErrorOf(GetString, Sample(), "absent"), "");
  EXPECT_NE(ErrorOf(GetString, Sample(), "String"), "");
  EXPECT_NE(ErrorOf(GetString, Json::Value(Json::objectValue), "string"), "");
  EXPECT_THROW(GetString(Sample(), ""), std::runtime_error);
}

TEST(GetString, ThrowsForAValueThatIsNoObject) {
  for (const Json::Value& value : {Json::Value(), Json::Value(1), Json::Value("string"), Json::Value(true),
                                   Json::Value(Json::arrayValue)}) {
    EXPECT_NE(ErrorOf(GetString, value, "string"), "");
    EXPECT_NE(ErrorOf(GetArray, value, "array"), "");
  }
}

TEST(GetArray, GivesTheMember) {
  const Json::Value array = GetArray(Sample(), "array");
  ASSERT_TRUE(array.isArray());
  EXPECT_EQ(array.size(), 1U);
  EXPECT_TRUE(GetArray(Sample(), "empty array").isArray());
  EXPECT_TRUE(GetArray(Sample(), "empty array").empty());
}

TEST(GetArray, ThrowsForEveryOtherKindNamingTheMember) {
  for (const auto* member : {"string", "object", "number", "real", "bool", "null"}) {
    EXPECT_NE(ErrorOf(GetArray, Sample(), member), "") << member;
  }
}

TEST(GetArray, ThrowsForAMissingMemberNamingIt) {
  EXPECT_NE(ErrorOf(GetArray, Sample(), "absent"), "");
}

class SaveJson : public ::testing::Test {
 protected:
  SaveJson() { device_.MakeDirectory("/usr/kelp/etc/wifi"); }

  std::string Save(const Json::Value& document) {
    {
      const lab::InRoot inside(device_);
      SaveJsonToFile(kFile, document);
    }
    return device_.Read(kFile);
  }

  lab::PrivateRoot device_;
};

// Written twice: of the first document nothing is left in the second.
TEST_F(SaveJson, LaysADocumentOutWithOneTabALevelAndEndsWithANewline) {
  Json::Value document(Json::objectValue);
  document["text"] = "x";
  document["inner"]["none"] = Json::Value(Json::objectValue);
  document["list"] = Json::Value(Json::arrayValue);
  document["pair"].append(-1);
  document["pair"].append(true);
  document["far"].append(std::string(68, 'f'));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(Save(document), "{\n\t\"far\" : \n\t[\n\t\t\"" + std::string(68, 'f') +
                                  "\"\n\t],\n\t\"inner\" : \n\t{\n\t\t\"none\" : {}\n\t},\n"
                                  "\t\"list\" : [],\n\t\"pair\" : [ -1, true ],\n\t\"text\" : \"x\"\n}\n");
  }
}

TEST_F(SaveJson, WritesBytesAbove0x7FAsTheyAre) {
  std::string bytes;
  for (int byte = 0x80; byte < 0x100; ++byte) bytes += static_cast<char>(byte);
  Json::Value document(Json::objectValue);
  document["all"] = bytes;
  document["ssid"] = std::string(32, '\xFF');
  document["utf8"] = "caf\xC3\xA9 \xF0\x9F\x98\x80";
  const std::string text = Save(document);
  EXPECT_NE(text.find('"' + bytes + '"'), std::string::npos);
  EXPECT_NE(text.find('"' + std::string(32, '\xFF') + '"'), std::string::npos);
  EXPECT_NE(text.find("\"caf\xC3\xA9 \xF0\x9F\x98\x80\""), std::string::npos);
}

TEST_F(SaveJson, EscapesQuotesBackslashesAndControlBytes) {
  Json::Value document(Json::objectValue);
  document["a"] = "q\"b\\c";
  document["b"] = "\x01\x1F\n\t";
  const std::string text = Save(document);
  EXPECT_NE(text.find(R"("q\"b\\c")"), std::string::npos) << text;
  for (const char byte : text) {
    EXPECT_TRUE(static_cast<unsigned char>(byte) >= 0x20 || byte == '\n' || byte == '\t') << text;
  }
  EXPECT_EQ(text.find('\x01'), std::string::npos);
}

TEST_F(SaveJson, EveryByteReadsBackAsItWas) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  Json::Value document(Json::objectValue);
  document["all"] = bytes;
  for (int byte = 0; byte < 256; ++byte) document["each"].append(std::string(3, static_cast<char>(byte)));
  Save(document);
  const lab::InRoot inside(device_);
  EXPECT_EQ(LoadJsonFromFile(kFile), document);
}

TEST_F(SaveJson, NumbersAndEmptyContainersReadBackAsTheyWere) {
  Json::Value document(Json::objectValue);
  document["lowest"] = -2147483647 - 1;
  document["highest"] = 2147483647;
  document["zero"] = 0;
  document["array"] = Json::Value(Json::arrayValue);
  document["object"] = Json::Value(Json::objectValue);
  document["false"] = false;
  document[""] = "";
  Save(document);
  const lab::InRoot inside(device_);
  EXPECT_EQ(LoadJsonFromFile(kFile), document);
}

TEST_F(SaveJson, ReplacesTheEarlierDocumentWhole) {
  device_.Write(kFile, std::string(10'000, 'o'), 0666);
  Json::Value document(Json::objectValue);
  document["a"] = 1;
  EXPECT_EQ(Save(document).find('o'), std::string::npos);
  EXPECT_EQ(device_.Snapshot().at(kFile).mode & 07777U, 0600U);
}

TEST_F(SaveJson, ThrowsWithPathAndCauseWhereTheDirectoryIsMissing) {
  device_.Remove("/usr/kelp/etc/wifi");
  const lab::InRoot inside(device_);
  try {
    SaveJsonToFile(kFile, Json::Value(Json::objectValue));
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    const std::string text = error.what();
    EXPECT_NE(text.find("/usr/kelp/etc/wifi"), std::string::npos) << text;
    EXPECT_NE(text.find("No such file"), std::string::npos) << text;
  }
}

}  // namespace
}  // namespace KELP::Wifi::Util::JsonUtil
