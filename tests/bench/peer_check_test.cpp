#include "bench/peer_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace bench {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

lab::Tree Document(const std::string& text) {
  return {{"/usr/kelp/etc/wifi/radio.json", {lab::Entry::Kind::File, 0600, text}}};
}

TEST(DocumentDifferences, OrderAndLayoutDoNotCount) {
  EXPECT_THAT(DocumentDifferences(Document(R"({"a": 1, "b": [true]})"), Document("{\"b\":[true],\n\"a\":1}")),
              IsEmpty());
}

TEST(DocumentDifferences, NameThePlace) {
  EXPECT_THAT(
      DocumentDifferences(Document(R"([{"a": 1}, {"a": "x"}])"), Document(R"([{"a": 1}, {"a": "y"}])")),
      ElementsAre("/usr/kelp/etc/wifi/radio.json/1/a: \"x\" became \"y\""));
}

TEST(DocumentDifferences, AValueOfAnotherKindIsOne) {
  EXPECT_THAT(DocumentDifferences(Document(R"({"a": 1})"), Document(R"({"a": "1"})")),
              ElementsAre(HasSubstr("/a")));
  EXPECT_THAT(DocumentDifferences(Document(R"({"a": [1]})"), Document(R"({"a": [1, 2]})")),
              ElementsAre(HasSubstr("/a")));
}

TEST(DocumentDifferences, AMissingMemberOrDocumentIsOne) {
  EXPECT_THAT(DocumentDifferences(Document(R"({"a": 1})"), Document("{}")), ElementsAre(HasSubstr("/a")));
  EXPECT_THAT(DocumentDifferences(Document("{}"), {}), ElementsAre(HasSubstr("radio.json")));
  EXPECT_THAT(DocumentDifferences({}, Document("{}")), ElementsAre(HasSubstr("radio.json")));
}

TEST(DocumentDifferences, SecretsDoNotCount) {
  EXPECT_THAT(DocumentDifferences(Document(R"([{"password": "x"}])"), Document(R"([{"password": ""}])")),
              IsEmpty());
}

TEST(DocumentDifferences, BytesThatAreNoUtf8CountAsReplaced) {
  EXPECT_THAT(DocumentDifferences(Document("[\"Caf\xE9\"]"), Document("[\"Caf\xEF\xBF\xBD\"]")), IsEmpty());
}

TEST(OnlyUtf8, KeepsCharactersOfEveryLength) {
  const std::string text =
      "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
  EXPECT_EQ(OnlyUtf8(text), text);
  EXPECT_EQ(OnlyUtf8(""), "");
}

TEST(OnlyUtf8, ReplacesARunByOneCharacter) {
  EXPECT_EQ(OnlyUtf8("\x80"), "\xEF\xBF\xBD");
  EXPECT_EQ(OnlyUtf8("a\x83\xE9\xFF"
                     "b"),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(OnlyUtf8("\xEF\xBF\xBD\xEF\xBF\xBD"), "\xEF\xBF\xBD");
  EXPECT_EQ(OnlyUtf8("\xEF\xBF\xBD\x80"), "\xEF\xBF\xBD");
}

TEST(OnlyUtf8, OverlongFormsSurrogatesAndNumbersBeyondTheLastAreNoCharacters) {
  for (const char* bytes : {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                            "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xE2\x82", "\xC3"}) {
    EXPECT_EQ(OnlyUtf8(bytes), "\xEF\xBF\xBD");
  }
}

}  // namespace
}  // namespace bench
