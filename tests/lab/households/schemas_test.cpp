#include "lab/households/schemas.h"

#include <gtest/gtest.h>

#include <boost/describe/members.hpp>
#include <boost/mp11/algorithm.hpp>
#include <set>
#include <string>

#include "lab/households/settings.h"
#include "platform/records/feature_setting.h"
#include "platform/records/global_data.h"
#include "platform/records/guest_password_rotation.h"
#include "platform/records/mac_filter.h"
#include "platform/records/misc_setting.h"
#include "platform/records/network_setting.h"
#include "platform/records/radio_setting.h"
#include "platform/records/wps_setting.h"
#include "tests/lab/households/household.h"

namespace lab_test {
namespace {

using namespace KELP::Wifi;

using Names = std::set<std::string>;

template <typename Record>
Names MembersOf() {
  using Members = boost::describe::describe_members<Record, boost::describe::mod_any_access>;
  Names names;
  boost::mp11::mp_for_each<Members>([&](auto member) { names.insert(member.name); });
  return names;
}

Names NamesOf(const Json::Value& properties) {
  const auto names = properties.getMemberNames();
  return {names.begin(), names.end()};
}

TEST(Schemas, HaveTheMembersOfTheRecords) {
  EXPECT_EQ(NamesOf(lab::Properties("global", "")), MembersOf<Daemon::GlobalData>());
  EXPECT_EQ(NamesOf(lab::Properties("global", "")["meshInfo"]["properties"]), MembersOf<MeshInfo>());
  EXPECT_EQ(NamesOf(lab::Properties("global", "")["countryCodeSetting"]["properties"]),
            MembersOf<CountryCodeSetting>());
  EXPECT_EQ(NamesOf(lab::Properties("misc", "")), MembersOf<Daemon::MiscSetting>());
  EXPECT_EQ(NamesOf(lab::Properties("misc", "")["broadcastDetect"]["properties"]),
            MembersOf<BroadcastDetectSetting>());
  EXPECT_EQ(NamesOf(lab::Properties("misc", "profile")), MembersOf<MACFilterProfile>());
  EXPECT_EQ(NamesOf(lab::Properties("misc", "device")), MembersOf<MACFilterDevice>());
  EXPECT_EQ(NamesOf(lab::Properties("radio", "radio")), MembersOf<RadioSetting>());
  EXPECT_EQ(NamesOf(lab::Properties("wps", "")), MembersOf<WPSSetting>());
  EXPECT_EQ(NamesOf(lab::Properties("network", "feature")), MembersOf<FeatureSetting>());
  EXPECT_EQ(NamesOf(lab::Properties("network", "rotation")), MembersOf<GuestPasswordRotation>());
  // The network's own, and in place of the all-bands record its members.
  Names network = MembersOf<NetworkSetting>();
  network.erase("allBands");
  network.merge(MembersOf<FeatureSetting>());
  EXPECT_EQ(NamesOf(lab::Properties("network", "network")), network);
}

TEST(Schemas, RequireEveryMemberAndHaveAWordForIt) {
  const auto expect_words = [](const Json::Value& properties) {
    for (const std::string& name : properties.getMemberNames()) {
      const Json::Value& property = properties[name];
      EXPECT_TRUE(property.isMember("title") || property.isMember("$ref")) << name;
      for (const Json::Value& choice : property["oneOf"]) EXPECT_TRUE(choice.isMember("title")) << name;
    }
  };
  for (const auto& [document, object] : {std::pair{"global", ""},
                                         {"misc", ""},
                                         {"misc", "profile"},
                                         {"misc", "device"},
                                         {"radio", "radio"},
                                         {"wps", ""},
                                         {"network", "network"},
                                         {"network", "feature"},
                                         {"network", "rotation"}}) {
    expect_words(lab::Properties(document, object));
  }
}

TEST(Schemas, SayTheSameOfANetworkAndOfItOnOneRadio) {
  const Json::Value& network = lab::Properties("network", "network");
  const Json::Value& feature = lab::Properties("network", "feature");
  for (const std::string& name : feature.getMemberNames()) {
    if (name == "frequency") continue;
    EXPECT_EQ(network[name], feature[name]) << name;
  }
}

TEST(Meaning, IsTheTitleOfTheNumber) {
  const Json::Value& feature = lab::Properties("network", "feature");
  EXPECT_EQ(lab::Meaning(feature["security"], 7), "WPA2/WPA3");
  EXPECT_EQ(lab::Meaning(feature["security"], 12), "");
  EXPECT_EQ(lab::Meaning(feature["mac_filter_profile_id"], -1), "none");
  EXPECT_EQ(lab::Meaning(feature["ssid"], "x"), "");
  EXPECT_EQ(lab::Title(feature["security"]), "Security");
}

TEST(RadioName, IsThatOfTheSchema) {
  EXPECT_EQ(lab::RadioName(0), "all bands");
  EXPECT_EQ(lab::RadioName(1), "2.4 GHz");
  EXPECT_EQ(lab::RadioName(4), "second 5 GHz");
  EXPECT_EQ(lab::RadioName(9), "radio 9");
}

TEST(SettingsOf, NamesEveryMemberOfTheRecords) {
  Household household;
  const lab::RunResult run = household.Update();
  const lab::Rehearsal rehearsal(run);
  const lab::NetworkPart& guest = rehearsal.Networks().at(1);
  Names network{"frequency", "guestPasswordRotation"};
  Names rotation;
  for (const lab::Setting& setting : lab::SettingsOf(rehearsal, guest, guest.radios.at(1))) {
    const std::string prefix = "guestPasswordRotation.";
    const bool is_rotation = setting.member.starts_with(prefix);
    (is_rotation ? rotation : network)
        .insert(is_rotation ? setting.member.substr(prefix.size()) : setting.member);
    EXPECT_NE(setting.title, "") << setting.member;
  }
  EXPECT_EQ(network, MembersOf<FeatureSetting>());
  EXPECT_EQ(rotation, MembersOf<GuestPasswordRotation>());
  Names radio{"frequency"};
  for (const lab::Setting& setting : lab::SettingsOf(rehearsal, rehearsal.Radios().at(0))) {
    radio.insert(setting.member);
  }
  EXPECT_EQ(radio, MembersOf<RadioSetting>());
}

}  // namespace
}  // namespace lab_test
