#include "platform/json_serializer.h"

#include <gtest/gtest.h>

#include "platform/records/global_data.h"
#include "platform/records/misc_setting.h"
#include "platform/records/network_setting.h"
#include "platform/records/radio_setting.h"
#include "platform/records/wps_setting.h"
#include "platform/stand_in/json/record_json.h"

namespace KELP::Wifi::Util::JsonSerializer {
namespace {

TEST(JsonSerializer, GivesTheObjectOfEachRecordThatADocumentHolds) {
  Daemon::GlobalData global;
  global.SetBackhaulSwapped(true);
  EXPECT_EQ(Serialize(global), ToJson(global));
  const Daemon::MiscSetting misc{.netTopology = "bridge", .broadcastDetect = {}, .macFilterProfiles = {}};
  EXPECT_EQ(Serialize(misc), ToJson(misc));
  NetworkSetting network;
  network.number = 1;
  EXPECT_EQ(Serialize(network), ToJson(network));
  RadioSetting radio;
  radio.txPower = 1;
  EXPECT_EQ(Serialize(radio), ToJson(radio));
  WPSSetting wps;
  wps.pin = "01234567";
  EXPECT_EQ(Serialize(wps), ToJson(wps));
}

}  // namespace
}  // namespace KELP::Wifi::Util::JsonSerializer
