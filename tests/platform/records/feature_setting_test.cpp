#include "platform/records/feature_setting.h"

#include <gtest/gtest.h>

#include "platform/stand_in/json/record_json.h"
#include "tests/platform/records/sample_feature.h"
#include "tests/support/json_text.h"

namespace KELP::Wifi {
namespace {

using testing_support::ParseJson;

TEST(FeatureSetting, DocumentHasItsMembersByTheirNamesAndKinds) {
  EXPECT_EQ(ToJson(testing_support::SampleFeature()),
            ParseJson("{" + testing_support::kSampleFeatureMembers + "}"));
}

TEST(FeatureSetting, RotationWithoutMailsHasAnEmptyArray) {
  FeatureSetting setting = testing_support::SampleFeature();
  setting.guestPasswordRotation = {};
  EXPECT_EQ(ToJson(setting)["guestPasswordRotation"], ParseJson(R"({
    "enable": false, "date_type": 0, "strength": 0, "date": "", "week_day": "", "notify_enable": false,
    "mail_list": []
  })"));
}

}  // namespace
}  // namespace KELP::Wifi
