#include "lab/sweeps/given_values.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace lab::sweeps {
namespace {

const std::string kFolder = "/usr/kelp/etc/wifi/";
const std::string kMisc = kFolder + "misc.json";

Tree WithDocument(const std::string& path, const std::string& text) {
  return {{path, {Entry::Kind::File, 0600, text}}};
}

GivenValues Known(const std::vector<std::string>& texts) {
  GivenValues values;
  for (const std::string& text : texts) values.Add(WithDocument(kMisc, text));
  return values;
}

TEST(GivenValues, AllowsWhatStandsAtThatPlaceInAnyOutcome) {
  const GivenValues values = Known({R"({"a": 1, "b": "x"})", R"({"a": 2, "b": "y"})"});
  EXPECT_TRUE(values.Allow(kMisc, R"({"a": 1, "b": "x"})"));
  EXPECT_TRUE(values.Allow(kMisc, R"({"a": 1, "b": "y"})"));
  EXPECT_FALSE(values.Allow(kMisc, R"({"a": 3, "b": "x"})"));
  EXPECT_FALSE(values.Allow(kMisc, R"({"a": "x", "b": "x"})"));
}

TEST(GivenValues, WantsEveryMember) {
  const GivenValues values = Known({R"({"a": 1, "b": {"c": 1}})", R"({"a": 2, "b": {"c": 2}})"});
  EXPECT_FALSE(values.Allow(kMisc, R"({"a": 1})"));
  EXPECT_FALSE(values.Allow(kMisc, R"({"a": 1, "b": {}})"));
  EXPECT_FALSE(values.Allow(kMisc, R"({"a": 1, "b": {"c": 1}, "d": 1})"));
  EXPECT_TRUE(values.Allow(kMisc, R"({"a": 1, "b": {"c": 2}})"));
}

TEST(GivenValues, MissesADeviceThatVanishedFromAFilter) {
  const GivenValues values = Known({R"([{"devices": ["a", "b"]}, {"devices": ["c"]}])", "[]"});
  EXPECT_TRUE(values.Allow(kMisc, "[]"));
  EXPECT_FALSE(values.Allow(kMisc, R"([{"devices": ["a"]}, {"devices": ["c"]}])"));
  EXPECT_FALSE(values.Allow(kMisc, R"([{"devices": ["a", "b"]}])"));
}

TEST(GivenValues, TakesValuesOnlyFromListsOfTheSameLength) {
  const GivenValues values = Known({R"(["a", "b"])", R"(["c"])"});
  EXPECT_FALSE(values.Allow(kMisc, R"(["c", "b"])"));
}

TEST(GivenValues, AllowsNoTornDocumentAndNoUnknownOne) {
  const GivenValues values = Known({"{}"});
  EXPECT_FALSE(values.Allow(kMisc, "{"));
  EXPECT_FALSE(values.Allow(kMisc, ""));
  EXPECT_FALSE(values.Allow(kFolder + "wps.json", "{}"));
}

TEST(GivenValues, KnowsTheNetworkDocumentByAnyTopology) {
  GivenValues values;
  values.Add(WithDocument(kFolder + "network.json.bridge", "[1]"));
  EXPECT_TRUE(values.Allow(kFolder + "network.json.default", "[1]"));
}

TEST(GivenValues, RefusesAnOutcomeThatIsNoJson) {
  GivenValues values;
  EXPECT_THROW(values.Add(WithDocument(kMisc, "{")), std::runtime_error);
}

}  // namespace
}  // namespace lab::sweeps
