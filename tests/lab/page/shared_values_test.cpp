#include "lab/page/shared_values.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "lab/page/script_data.h"

namespace lab_test {
namespace {

using lab::page::ScriptData;
using lab::page::SharedValues;

Json::Value Read(const std::string& text) {
  std::istringstream stream(text);
  Json::Value value;
  stream >> value;
  return value;
}

std::string Shared(SharedValues& values, const std::string& text) {
  return ScriptData(values.Share(Read(text)));
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

}  // namespace
}  // namespace lab_test
