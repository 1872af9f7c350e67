#include "platform/records/mac_filter.h"

#include <gtest/gtest.h>

#include "platform/stand_in/json/record_json.h"
#include "tests/support/json_text.h"

namespace KELP::Wifi {
namespace {

using testing_support::ParseJson;

TEST(MACFilterProfile, DocumentHasItsMembersByTheirNamesAndKinds) {
  const MACFilterProfile profile{.id = 2,
                                 .name = "Primary Network - Deny",
                                 .policy = MACFilterPolicy::Deny,
                                 .devices = {{"Tom", Util::MACAddress("00-11-22-AA-BB-CC")},
                                             {"", Util::MACAddress("ff:ff:ff:ff:ff:ff")}}};
  EXPECT_EQ(ToJson(profile), ParseJson(R"({
    "id": 2,
    "name": "Primary Network - Deny",
    "policy": 1,
    "devices": [{"name": "Tom", "mac": "00:11:22:aa:bb:cc"}, {"name": "", "mac": "ff:ff:ff:ff:ff:ff"}]
  })"));
}

TEST(MACFilterProfile, AllowIsPolicyZero) {
  const MACFilterProfile profile{.id = 0, .name = "x", .policy = MACFilterPolicy::Allow, .devices = {}};
  EXPECT_EQ(ToJson(profile), ParseJson(R"({"id": 0, "name": "x", "policy": 0, "devices": []})"));
}

}  // namespace
}  // namespace KELP::Wifi
