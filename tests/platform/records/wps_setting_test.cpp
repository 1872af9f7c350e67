#include "platform/records/wps_setting.h"

#include <gtest/gtest.h>

#include "platform/stand_in/json/record_json.h"
#include "tests/support/json_text.h"

namespace KELP::Wifi {
namespace {

using testing_support::ParseJson;

TEST(WPSSetting, DocumentHasItsMembersByTheirNamesAndKinds) {
  const WPSSetting setting{.enabled = true,
                           .reserved = 7,
                           .band = Util::RadioFrequency::Band2_4GHz,
                           .pin_enabled = true,
                           .pin = "01234567"};
  EXPECT_EQ(ToJson(setting), ParseJson(R"({
    "enabled": true, "reserved": 7, "band": 1, "pin_enabled": true, "pin": "01234567"
  })"));
}

TEST(WPSSetting, StartsOutZeroFalseAndEmpty) {
  EXPECT_EQ(ToJson(WPSSetting{}), ParseJson(R"({
    "enabled": false, "reserved": 0, "band": 0, "pin_enabled": false, "pin": ""
  })"));
}

}  // namespace
}  // namespace KELP::Wifi
