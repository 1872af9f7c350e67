#include "lab/experiments/effects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "lab/reports/effects_text.h"
#include "tests/lab/household/household.h"

namespace lab_test {
namespace {

using lab::Effect;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

const std::string kNetwork = "network.json.default";

class Effects : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    Household household;
    household.Set(Household::k24, "colour", "blue");
    const auto inputs = lab::InputsOf(household.Files().Snapshot());
    effects_ = lab::FindEffects(household.Files().Snapshot(), inputs, KELP_PROGRAM, "8000", 2);
  }
  static void TearDownTestSuite() { effects_.clear(); }

  static const Effect& Of(const std::string& file, const std::string& entry) {
    for (const Effect& effect : effects_) {
      if (effect.file == file && effect.entry == entry) return effect;
    }
    throw std::out_of_range(file + ": " + entry);
  }

  static std::vector<Effect> effects_;
};

std::vector<Effect> Effects::effects_;

TEST_F(Effects, TellWhichMembersAnEntryMoves) {
  EXPECT_THAT(Of(Household::k24, "guest_security").members,
              ElementsAre(kNetwork + "[1].featureSettings[0].password",
                          kNetwork + "[1].featureSettings[0].security"));
  EXPECT_THAT(Of(Household::k24, "channel").members, ElementsAre("radio.json[0].channel"));
  EXPECT_THAT(Of(Household::k24, "ap_enable_wps").members, ElementsAre("wps.json.band", "wps.json.enabled"));
  EXPECT_THAT(Of(Household::kInformation, "country_code").members,
              ElementsAre("global.json.countryCodeSetting.countryCode"));
  EXPECT_THAT(
      Of(Household::kDenyList, "[one] desc").members,
      ElementsAre("misc.json.macFilterProfiles[0].devices", "misc.json.macFilterProfiles[1].devices"));
}

TEST_F(Effects, FindEffectsOfBothARemovalAndAChange) {
  // Without the entry the fall-back is the word that stands there.
  EXPECT_THAT(Of(Household::k24, "tx_power").members, ElementsAre("radio.json[0].txPower"));
  EXPECT_THAT(Of(Household::k24, "tx_power").otherwise, ElementsAre("the log"));
  // Any other word makes the same of it as none.
  EXPECT_THAT(Of(Household::k24, "enabled").members,
              ElementsAre(kNetwork + "[0].featureSettings[0].enabled"));
}

TEST_F(Effects, TellOfKernelEntriesBootVariablesAndKeys) {
  EXPECT_THAT(Of("/proc/sys/kernel/kelp_mac_address4", "").members,
              Contains(kNetwork + "[0].featureSettings[0].ssid"));
  EXPECT_THAT(Of("/proc/sys/kernel/kelp_mac_address4", "").members, Not(Contains("radio.json[1].mode")));
  EXPECT_THAT(Of("/boot/uboot.env", "usb3_disable").members,
              ElementsAre("radio.json[0].usb3Enabled", "radio.json[1].usb3Enabled"));
  EXPECT_THAT(Of(Household::kKey, "").members, Contains(kNetwork + "[1].password"));
  EXPECT_THAT(Of(Household::kMesh, "repeater_nodes").members,
              Contains("global.json.meshInfo.connectedModels"));
}

TEST_F(Effects, TellThatTheUpdateStopsInPlaceOfWhatItDidNotWrite) {
  EXPECT_THAT(Of(Household::kInformation, "wps_pin").members, IsEmpty());
  EXPECT_THAT(Of(Household::kInformation, "wps_pin").otherwise, Contains(HasSubstr("no key wps_pin")));
}

TEST_F(Effects, KnowATopologyThatRenamesADocument) {
  EXPECT_THAT(Of(Household::kInformation, "net_topology").members, ElementsAre("misc.json.netTopology"));
  EXPECT_THAT(Of(Household::kInformation, "net_topology").otherwise, Contains("the network document's name"));
}

TEST_F(Effects, AreNoneWhereNobodyReads) {
  EXPECT_TRUE(Of(Household::k24, "colour").IsNone());
  EXPECT_TRUE(Of(Household::kAllBands, "channel").IsNone());
  EXPECT_FALSE(Of(Household::k24, "channel").IsNone());
}

TEST_F(Effects, ArePrintedByTheObjectsThatTheyMove) {
  std::ostringstream all;
  lab::PrintEffects(all, effects_, "", lab::Discretion({}, {}));
  EXPECT_THAT(all.str(),
              HasSubstr("wifi_ap_02:11:32:00:00:04: guest_security -> "
                        "network.json.default[1].featureSettings[0].password, .security; the log\n"));
  EXPECT_THAT(all.str(), HasSubstr("\nUnused\n"));
  EXPECT_THAT(all.str(), HasSubstr(", colour\n"));

  std::ostringstream one;
  lab::PrintEffects(one, effects_, "wps.json.pin_enabled", lab::Discretion({}, {}));
  EXPECT_EQ(one.str(), "wifi_wps: is_wps_ap_pin_enabled -> wps.json.pin_enabled\n");
}

TEST_F(Effects, ArePrintedWithoutTheSecretsThatAProgramTells) {
  const Effect effect{
      .file = "/x/wifi_ap", .entry = "ssid", .members = {}, .otherwise = {"the update ends with: no word9"}};
  std::ostringstream out;
  lab::PrintEffects(
      out, {effect}, "",
      lab::Discretion({}, {{"/x/wifi_ap", {lab::Entry::Kind::File, 0644, "password=word9\n"}}}));
  EXPECT_EQ(out.str(), "wifi_ap: ssid -> the update ends with: no ********\n");
}

}  // namespace
}  // namespace lab_test
