#include "platform/records/network_setting.h"

#include <gtest/gtest.h>

#include "platform/json_serializer.h"
#include "tests/platform/records/sample_feature.h"
#include "tests/support/json_text.h"

namespace KELP::Wifi {
namespace {

using testing_support::kSampleFeatureMembers;
using testing_support::ParseJson;
using testing_support::SampleFeature;
using Util::JsonSerializer::Serialize;

TEST(NetworkSetting, DocumentHasTheAllBandsMembersInItsOwnObject) {
  const NetworkSetting setting{.number = 1,
                               .name = "Guest Network",
                               .kind = NetworkKind::Guest,
                               .smartConnect = true,
                               .allBands = SampleFeature(),
                               .featureSettings = {SampleFeature(), SampleFeature()}};
  EXPECT_EQ(Serialize(setting),
            ParseJson(R"({"number": 1, "name": "Guest Network", "kind": 1, "smartConnect": true,)" +
                      kSampleFeatureMembers + R"(, "featureSettings": [{)" + kSampleFeatureMembers + "}, {" +
                      kSampleFeatureMembers + "}]}"));
}

TEST(NetworkSetting, PrimaryNetworkIsKindZero) {
  EXPECT_EQ(Serialize(NetworkSetting{})["kind"], Json::Value(0));
  EXPECT_EQ(Serialize(NetworkSetting{})["featureSettings"], Json::Value(Json::arrayValue));
}

}  // namespace
}  // namespace KELP::Wifi
