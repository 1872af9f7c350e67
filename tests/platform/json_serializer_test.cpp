#include "platform/json_serializer.h"

#include <gtest/gtest.h>

#include "platform/records/global_data.h"
#include "platform/records/misc_setting.h"
#include "platform/records/network_setting.h"
#include "platform/records/radio_setting.h"
#include "platform/records/wps_setting.h"
#include "platform/stand_in/json/record_json.h"
#include "tests/platform/random_records.h"

namespace KELP::Wifi::Util::JsonSerializer {
namespace {

TEST(JsonSerializer, GivesTheObjectOfEachRecordThatADocumentHolds) {
  testing_support::RandomRecords random(20'210'101);
  const auto global = random.GlobalData();
  EXPECT_EQ(FromJson<Daemon::GlobalData>(Serialize(global)), global);
  const auto misc = random.MiscSetting();
  EXPECT_EQ(FromJson<Daemon::MiscSetting>(Serialize(misc)), misc);
  const auto network = random.NetworkSetting();
  EXPECT_EQ(FromJson<NetworkSetting>(Serialize(network)), network);
  const auto radio = random.RadioSetting();
  EXPECT_EQ(FromJson<RadioSetting>(Serialize(radio)), radio);
  const auto wps = random.WPSSetting();
  EXPECT_EQ(FromJson<WPSSetting>(Serialize(wps)), wps);
}

}  // namespace
}  // namespace KELP::Wifi::Util::JsonSerializer
