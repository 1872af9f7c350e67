#include "platform/stand_in/json/record_json.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace KELP::Wifi {
namespace {

using namespace std::string_literals;
using Util::MACAddress;
using Util::RadioFrequency;
using Util::SupportedModel;

TEST(RecordJson, BasicValuesBecomeWhatJsonHasForThem) {
  EXPECT_TRUE(ToJson(true).isBool());
  EXPECT_EQ(ToJson(std::int32_t{-1}).type(), Json::intValue);
  EXPECT_EQ(ToJson("a\0b\xFF"s), Json::Value("a\0b\xFF"s));
  EXPECT_EQ(ToJson(MACAddress("AA-BB-CC-DD-EE-FF")), Json::Value("aa:bb:cc:dd:ee:ff"));
  EXPECT_EQ(ToJson(std::vector<std::string>{}), Json::Value(Json::arrayValue));
  EXPECT_EQ(ToJson(RadioFrequency::Band5GHz_2), Json::Value(4));
  EXPECT_EQ(ToJson(SupportedModel::Error), Json::Value("Error"));
  EXPECT_EQ(ToJson(CountryCode::US), Json::Value("US"));
}

TEST(RecordJson, ListsKeepTheirOrderAndTheirDuplicates) {
  const Json::Value json = ToJson(std::vector<std::string>{"b", "a", "b"});
  ASSERT_EQ(json.size(), 3U);
  EXPECT_EQ(json[0], "b");
  EXPECT_EQ(json[1], "a");
  EXPECT_EQ(json[2], "b");
}

}  // namespace
}  // namespace KELP::Wifi
