#include "lab/page/shared_values.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace lab_test {
namespace {

using lab::page::SharedValues;

std::string Shared(SharedValues& values, const std::string& text) {
  return values.Share(text).value_or("none");
}

using Texts = std::vector<std::string>;

TEST(SharedValues, KeepsAnObjectOfAnArrayOnce) {
  SharedValues values;
  EXPECT_EQ(Shared(values, R"({"log": [{"n": 1}, {"n": 2}, {"n": 1}]})"), R"({"log":{"refs":[0,1,0]}})");
  EXPECT_EQ(Shared(values, R"({"log": [{"n": 2}]})"), R"({"log":{"refs":[1]}})");
  EXPECT_EQ(values.Texts(), (Texts{R"({"n":1})", R"({"n":2})"}));
}

TEST(SharedValues, LeavesOtherArraysAndObjectsInTheirPlace) {
  SharedValues values;
  EXPECT_EQ(Shared(values, R"({"a": [1, 2], "b": [], "c": {"d": "e"}, "f": ["x"]})"),
            R"({"a":[1,2],"b":[],"c":{"d":"e"},"f":["x"]})");
  EXPECT_TRUE(values.Texts().empty());
}

TEST(SharedValues, SharesWithinWhatIsShared) {
  SharedValues values;
  EXPECT_EQ(Shared(values, R"([{"radios": [{"n": 1}]}])"), R"({"refs":[1]})");
  EXPECT_EQ(values.Texts(), (Texts{R"({"n":1})", R"({"radios":{"refs":[0]}})"}));
}

TEST(SharedValues, TakesNothingForAReferenceThatIsNone) {
  SharedValues values;
  EXPECT_EQ(Shared(values, R"({"now": {"refs": [0]}, "log": [{"refs": [1]}]})"),
            R"({"log":{"refs":[0]},"now":"{\"refs\":[0]}"})");
  EXPECT_EQ(values.Texts(), (Texts{R"("{\"refs\":[1]}")"}));
}

TEST(SharedValues, NamesThePartsFileOnce) {
  SharedValues values;
  EXPECT_EQ(
      Shared(values,
             R"({"file": "/a", "settings": [{"file": "/a", "n": 1}, {"file": "/b", "n": 2}, {"n": 3}]})"),
      R"({"file":"/a","settings":{"refs":[0,1,2]}})");
  EXPECT_EQ(values.Texts(), (Texts{R"({"n":1})", R"({"file":"/b","n":2})", R"({"n":3})"}));
}

// Whether a text is gone over as it is or written anew by the library before.
TEST(SharedValues, TakesAnyJsonAlike) {
  const std::array<std::pair<std::string, std::string>, 9> texts{{
      {R"({"a":1,"b":[{"c":-2}]})", R"({"b": [ {"c": -2} ], "a": 1})"},
      {R"({"a":[],"b":{}})", R"({ "a": [], "b": {} })"},
      {R"(["\u003c\u0026\u00e9\"\\","\u000d"])", "[ \"<&\xc3\xa9\\\"\\\\\", \"\\r\" ]"},
      {R"([0,1e3,-0,123456789012345678])", R"([ 0, 1000.0, -0, 123456789012345678 ])"},
      {R"({"x\u00e9":1,"z":2})", "{\"z\": 2, \"x\xc3\xa9\": 1}"},
      {"[1,{\"a\":2},\"x\"]", "[1, {\"a\":2}, \"x\"]"},
      {R"({"file":"/a","settings":[{"file":"/a"}]})", R"({"settings": [{"file": "/a"}], "file": "/a"})"},
      {R"([[{"a":1}],[]])", R"([ [ {"a": 1} ], [] ])"},
      {R"({"caf\u00e9":[{"n":"\u007f"}]})", "{ \"caf\xc3\xa9\": [{\"n\": \"\x7f\"}]}"},
  }};
  for (const auto& [ours, other] : texts) {
    SharedValues values;
    SharedValues other_values;
    EXPECT_EQ(Shared(values, ours), Shared(other_values, other));
    EXPECT_NE(Shared(values, ours), "none") << ours;
    EXPECT_EQ(values.Texts(), other_values.Texts()) << ours;
  }
}

TEST(SharedValues, TakesNothingButJsonAndKeepsNothingOfIt) {
  SharedValues values;
  for (const std::string text : {R"([{"a":1})", R"([{"a":1}]])", R"([{"a":1},])", R"({"a":[{"b":2}],"a":1})",
                                 R"([{"a":"\x"}])", R"([{"a":tru}])", R"([{"a":1}{"a":2}])", R"([{"a"1}])",
                                 R"({"a":[{"b":2}],"c":"torn)", R"({"a":[{"b":2}],"c":"torn\)"}) {
    EXPECT_EQ(Shared(values, text), "none") << text;
  }
  EXPECT_EQ(Shared(values, std::string(100'000, '[')), "none");
  EXPECT_TRUE(values.Texts().empty());
}

}  // namespace
}  // namespace lab_test
