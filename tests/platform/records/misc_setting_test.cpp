#include "platform/records/misc_setting.h"

#include <gtest/gtest.h>

#include "platform/stand_in/json/record_json.h"
#include "tests/support/json_text.h"

namespace KELP::Wifi::Daemon {
namespace {

using testing_support::ParseJson;

TEST(MiscSetting, DocumentHasItsMembersByTheirNamesAndKinds) {
  const MACFilterDevice device{"Tom", Util::MACAddress("00:11:22:aa:bb:cc")};
  const MiscSetting setting{
      .netTopology = "bridge",
      .broadcastDetect = {.devices = {device}, .enabled = true, .threshold = 100},
      .macFilterProfiles = {{.id = 0, .name = "p", .policy = MACFilterPolicy::Allow, .devices = {device}}}};
  EXPECT_EQ(ToJson(setting), ParseJson(R"({
    "netTopology": "bridge",
    "broadcastDetect": {"devices": [{"name": "Tom", "mac": "00:11:22:aa:bb:cc"}], "enabled": true, "threshold": 100},
    "macFilterProfiles": [
      {"id": 0, "name": "p", "policy": 0, "devices": [{"name": "Tom", "mac": "00:11:22:aa:bb:cc"}]}
    ]
  })"));
}

TEST(MiscSetting, EmptyListsAreEmptyArrays) {
  EXPECT_EQ(ToJson(MiscSetting{}), ParseJson(R"({
    "netTopology": "",
    "broadcastDetect": {"devices": [], "enabled": false, "threshold": 0},
    "macFilterProfiles": []
  })"));
}

}  // namespace
}  // namespace KELP::Wifi::Daemon
