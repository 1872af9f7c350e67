#include "platform/json_serializer.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "platform/json_util.h"
#include "tests/platform/random_records.h"

namespace KELP::Wifi::Util::JsonSerializer {
namespace {

using namespace std::string_literals;
using testing_support::RandomRecords;

constexpr int kRounds = 500;

/// Through the value, and through the bytes of a document as the daemon reads them.
template <typename Record>
void ExpectToReadBack(Record (RandomRecords::*make)()) {
  RandomRecords random(20'210'101);
  for (int i = 0; i < kRounds; ++i) {
    const Record record = (random.*make)();
    const Json::Value json = Serialize(record);
    ASSERT_TRUE(json.isObject());
    ASSERT_EQ(Deserialize<Record>(json), record) << json.toStyledString();
    if (i % 100 != 0) continue;
    lab::PrivateRoot device;
    device.MakeDirectory("/etc");
    const lab::InRoot inside(device);
    JsonUtil::SaveJsonToFile("/etc/document.json", json);
    ASSERT_EQ(Deserialize<Record>(JsonUtil::LoadJsonFromFile("/etc/document.json")), record)
        << json.toStyledString();
  }
}

TEST(JsonSerializer, MACFilterDeviceReadsBack) {
  ExpectToReadBack(&RandomRecords::MACFilterDevice);
}
TEST(JsonSerializer, MACFilterProfileReadsBack) {
  ExpectToReadBack(&RandomRecords::MACFilterProfile);
}
TEST(JsonSerializer, BroadcastDetectSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::BroadcastDetectSetting);
}
TEST(JsonSerializer, MiscSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::MiscSetting);
}
TEST(JsonSerializer, GuestPasswordRotationReadsBack) {
  ExpectToReadBack(&RandomRecords::GuestPasswordRotation);
}
TEST(JsonSerializer, FeatureSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::FeatureSetting);
}
TEST(JsonSerializer, NetworkSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::NetworkSetting);
}
TEST(JsonSerializer, RadioSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::RadioSetting);
}
TEST(JsonSerializer, WPSSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::WPSSetting);
}
TEST(JsonSerializer, GlobalDataReadsBack) {
  ExpectToReadBack(&RandomRecords::GlobalData);
}

TEST(JsonSerializer, BasicValuesBecomeWhatJsonHasForThem) {
  EXPECT_TRUE(Serialize(true).isBool());
  EXPECT_EQ(Serialize(std::int32_t{-1}).type(), Json::intValue);
  EXPECT_EQ(Serialize("a\0b\xFF"s), Json::Value("a\0b\xFF"s));
  EXPECT_EQ(Serialize(MACAddress("AA-BB-CC-DD-EE-FF")), Json::Value("aa:bb:cc:dd:ee:ff"));
  EXPECT_EQ(Serialize(std::vector<std::string>{}), Json::Value(Json::arrayValue));
  EXPECT_EQ(Serialize(RadioFrequency::Band5GHz_2), Json::Value(4));
  EXPECT_EQ(Serialize(SupportedModel::Error), Json::Value("Error"));
  EXPECT_EQ(Serialize(CountryCode::US), Json::Value("US"));
}

TEST(JsonSerializer, ListsKeepTheirOrderAndTheirDuplicates) {
  const Json::Value json = Serialize(std::vector<std::string>{"b", "a", "b"});
  ASSERT_EQ(json.size(), 3U);
  EXPECT_EQ(json[0], "b");
  EXPECT_EQ(json[1], "a");
  EXPECT_EQ(json[2], "b");
}

TEST(JsonSerializer, MissingMemberIsNotReadAsADefault) {
  Json::Value json = Serialize(WPSSetting{});
  json.removeMember("pin");
  EXPECT_THROW(Deserialize<WPSSetting>(json), std::runtime_error);
}

TEST(JsonSerializer, MissingMemberOfARecordWrittenInPlaceIsNoticed) {
  Json::Value json = Serialize(NetworkSetting{});
  json.removeMember("dtim");
  EXPECT_THROW(Deserialize<NetworkSetting>(json), std::runtime_error);
}

TEST(JsonSerializer, UnknownNameIsRefused) {
  EXPECT_THROW(Deserialize<CountryCode>(Json::Value("XX")), std::runtime_error);
  EXPECT_THROW(Deserialize<SupportedModel>(Json::Value("lotus")), std::runtime_error);
}

TEST(JsonSerializer, ValueOfAnotherKindIsRefused) {
  EXPECT_THROW(Deserialize<std::int32_t>(Json::Value("1x")), Json::LogicError);
  EXPECT_THROW(Deserialize<std::int32_t>(Json::Value(Json::arrayValue)), Json::LogicError);
  EXPECT_THROW(Deserialize<bool>(Json::Value(Json::objectValue)), Json::LogicError);
  EXPECT_THROW(Deserialize<std::string>(Json::Value(Json::arrayValue)), Json::LogicError);
  EXPECT_THROW(Deserialize<MACAddress>(Json::Value("no address")), std::invalid_argument);
}

}  // namespace
}  // namespace KELP::Wifi::Util::JsonSerializer
