#include "platform/stand_in/json/record_json.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "platform/json_util.h"
#include "tests/platform/random_records.h"

namespace KELP::Wifi {
namespace {

using namespace std::string_literals;
using Util::MACAddress;
using Util::RadioFrequency;
using Util::SupportedModel;
namespace JsonUtil = Util::JsonUtil;
using testing_support::RandomRecords;

constexpr int kRounds = 500;

/// Through the value, and through the bytes of a document as the daemon reads them.
template <typename Record>
void ExpectToReadBack(Record (RandomRecords::*make)()) {
  RandomRecords random(20'210'101);
  for (int i = 0; i < kRounds; ++i) {
    const Record record = (random.*make)();
    const Json::Value json = ToJson(record);
    ASSERT_TRUE(json.isObject());
    ASSERT_EQ(FromJson<Record>(json), record) << json.toStyledString();
    if (i % 100 != 0) continue;
    lab::PrivateRoot device;
    device.MakeDirectory("/etc");
    const lab::InRoot inside(device);
    JsonUtil::SaveJsonToFile("/etc/document.json", json);
    ASSERT_EQ(FromJson<Record>(JsonUtil::LoadJsonFromFile("/etc/document.json")), record)
        << json.toStyledString();
  }
}

TEST(RecordJson, MACFilterDeviceReadsBack) {
  ExpectToReadBack(&RandomRecords::MACFilterDevice);
}
TEST(RecordJson, MACFilterProfileReadsBack) {
  ExpectToReadBack(&RandomRecords::MACFilterProfile);
}
TEST(RecordJson, BroadcastDetectSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::BroadcastDetectSetting);
}
TEST(RecordJson, MiscSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::MiscSetting);
}
TEST(RecordJson, GuestPasswordRotationReadsBack) {
  ExpectToReadBack(&RandomRecords::GuestPasswordRotation);
}
TEST(RecordJson, FeatureSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::FeatureSetting);
}
TEST(RecordJson, NetworkSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::NetworkSetting);
}
TEST(RecordJson, RadioSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::RadioSetting);
}
TEST(RecordJson, WPSSettingReadsBack) {
  ExpectToReadBack(&RandomRecords::WPSSetting);
}
TEST(RecordJson, GlobalDataReadsBack) {
  ExpectToReadBack(&RandomRecords::GlobalData);
}

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

TEST(RecordJson, MissingMemberIsNotReadAsADefault) {
  Json::Value json = ToJson(WPSSetting{});
  json.removeMember("pin");
  EXPECT_THROW(FromJson<WPSSetting>(json), std::runtime_error);
}

TEST(RecordJson, MissingMemberOfARecordWrittenInPlaceIsNoticed) {
  Json::Value json = ToJson(NetworkSetting{});
  json.removeMember("dtim");
  EXPECT_THROW(FromJson<NetworkSetting>(json), std::runtime_error);
}

TEST(RecordJson, UnknownNameIsRefused) {
  EXPECT_THROW(FromJson<CountryCode>(Json::Value("XX")), std::runtime_error);
  EXPECT_THROW(FromJson<SupportedModel>(Json::Value("lotus")), std::runtime_error);
}

TEST(RecordJson, ValueOfAnotherKindIsRefused) {
  EXPECT_THROW(FromJson<std::int32_t>(Json::Value("1x")), Json::LogicError);
  EXPECT_THROW(FromJson<std::int32_t>(Json::Value(Json::arrayValue)), Json::LogicError);
  EXPECT_THROW(FromJson<bool>(Json::Value(Json::objectValue)), Json::LogicError);
  EXPECT_THROW(FromJson<std::string>(Json::Value(Json::arrayValue)), Json::LogicError);
  EXPECT_THROW(FromJson<MACAddress>(Json::Value("no address")), std::invalid_argument);
}

}  // namespace
}  // namespace KELP::Wifi
