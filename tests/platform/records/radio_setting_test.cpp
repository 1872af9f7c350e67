#include "platform/records/radio_setting.h"

#include <gtest/gtest.h>

#include "platform/stand_in/json/record_json.h"
#include "tests/support/json_text.h"

namespace KELP::Wifi {
namespace {

using testing_support::ParseJson;
using Util::RadioFrequency;

TEST(RadioSetting, DocumentHasItsMembersByTheirNamesAndKinds) {
  const RadioSetting setting{.frequency = RadioFrequency::Band5GHz_2,
                             .channel = 36,
                             .channel2 = 149,
                             .bandwidth = 3,
                             .mode = 5,
                             .txPower = 2,
                             .allowDFSChannels = true,
                             .usb3Enabled = false,
                             .thirdFlag = true,
                             .fourthFlag = false};
  EXPECT_EQ(ToJson(setting), ParseJson(R"({
    "frequency": 4, "channel": 36, "channel2": 149, "bandwidth": 3, "mode": 5, "txPower": 2,
    "allowDFSChannels": true, "usb3Enabled": false, "thirdFlag": true, "fourthFlag": false
  })"));
}

TEST(RadioFrequency, NumbersAreTheDocuments) {
  EXPECT_EQ(ToJson(RadioFrequency::AllBands), Json::Value(0));
  EXPECT_EQ(ToJson(RadioFrequency::Band2_4GHz), Json::Value(1));
  EXPECT_EQ(ToJson(RadioFrequency::Band5GHz), Json::Value(2));
  EXPECT_EQ(ToJson(RadioFrequency::Band5GHz_1), Json::Value(3));
  EXPECT_EQ(ToJson(RadioFrequency::Band5GHz_2), Json::Value(4));
}

}  // namespace
}  // namespace KELP::Wifi
