#include "platform/records/network_setting.h"

#include <gtest/gtest.h>

#include "platform/stand_in/json/record_json.h"
#include "tests/platform/records/sample_feature.h"
#include "tests/support/json_text.h"

namespace KELP::Wifi {
namespace {

using testing_support::kSampleFeatureMembers;
using testing_support::ParseJson;
using testing_support::SampleFeature;

TEST(NetworkSetting, DocumentHasTheAllBandsMembersInItsOwnObject) {
  const NetworkSetting setting{.number = 1,
                               .name = "Guest Network",
                               .kind = NetworkKind::Guest,
                               .smartConnect = true,
                               .allBands = SampleFeature(),
                               .featureSettings = {SampleFeature(), SampleFeature()}};
  EXPECT_EQ(ToJson(setting),
            ParseJson(R"({"number": 1, "name": "Guest Network", "kind": 1, "smartConnect": true,)" +
                      kSampleFeatureMembers + R"(, "featureSettings": [{)" + kSampleFeatureMembers + "}, {" +
                      kSampleFeatureMembers + "}]}"));
}

TEST(NetworkSetting, PrimaryNetworkIsKindZero) {
  EXPECT_EQ(ToJson(NetworkSetting{})["kind"], Json::Value(0));
  EXPECT_EQ(ToJson(NetworkSetting{})["featureSettings"], Json::Value(Json::arrayValue));
}

}  // namespace
}  // namespace KELP::Wifi
