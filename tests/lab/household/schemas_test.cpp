#include "lab/household/schemas.h"

#include <gtest/gtest.h>

#include <boost/describe/members.hpp>
#include <boost/mp11/algorithm.hpp>
#include <set>
#include <string>
#include <vector>

#include "lab/household/settings.h"
#include "platform/json_serializer.h"
#include "platform/records/feature_setting.h"
#include "platform/records/global_data.h"
#include "platform/records/guest_password_rotation.h"
#include "platform/records/mac_filter.h"
#include "platform/records/misc_setting.h"
#include "platform/records/network_setting.h"
#include "platform/records/radio_setting.h"
#include "platform/records/wps_setting.h"
#include "tests/lab/household/household.h"

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

std::string TypeOf(const Json::Value& value) {
  if (value.isBool()) return "boolean";
  if (value.isInt()) return "integer";
  if (value.isString()) return "string";
  return value.isArray() ? "array" : "object";
}

/// Holds the schema to what the serializer makes of a record: the same members of the same types, at any
/// depth.
void ExpectForm(const Json::Value& document, const Json::Value& schema, const Json::Value& value,
                const std::string& place) {
  ASSERT_EQ(schema["type"].asString(), TypeOf(value)) << place;
  if (value.isArray()) {
    ASSERT_FALSE(value.empty()) << place << ": nothing to compare with";
    for (const Json::Value& entry : value)
      ExpectForm(document, lab::Resolved(document, schema["items"]), entry, place + "[]");
  }
  if (!value.isObject()) return;
  EXPECT_EQ(NamesOf(schema["properties"]), NamesOf(value)) << place;
  for (const std::string& name : value.getMemberNames()) {
    ExpectForm(document, lab::Resolved(document, schema["properties"][name]), value[name],
               place + "." + name);
  }
}

TEST(Schemas, HaveTheFormThatTheSerializerGivesRecords) {
  const auto form = [](const char* name, const std::string& object, const Json::Value& value) {
    const Json::Value& document = lab::Schema(name);
    ExpectForm(document, object.empty() ? document : document["$defs"][object], value, name);
  };
  Daemon::GlobalData global;
  MeshInfo mesh;
  mesh.connectedModels = {Util::SupportedModel::LOTUS};
  global.SetMeshInfo(mesh);
  form("global", "", Util::JsonSerializer::Serialize(global));
  Daemon::MiscSetting misc;
  const MACFilterDevice device{"Tablet", Util::MACAddress("02:aa:00:00:00:01")};
  misc.broadcastDetect.devices = {device};
  misc.macFilterProfiles.resize(1);
  misc.macFilterProfiles.front().devices = {device};
  form("misc", "", Util::JsonSerializer::Serialize(misc));
  form("radio", "radio", Util::JsonSerializer::Serialize(RadioSetting{}));
  form("wps", "", Util::JsonSerializer::Serialize(WPSSetting{}));
  NetworkSetting network;
  network.allBands.guestPasswordRotation.mail_list = {"host@example.net"};
  network.featureSettings = {network.allBands};
  form("network", "network", Util::JsonSerializer::Serialize(network));
}

/// What holds for every schema in a document: words for each member and each number, no other member than
/// the required ones, and an end to every number.
void ExpectComplete(const Json::Value& schema, const std::string& place) {
  if (schema.isMember("$ref")) return;  // its definition is looked at by itself
  EXPECT_NE(lab::Title(schema), "") << place;
  ASSERT_TRUE(schema["type"].isString()) << place;
  const bool has_choices = schema.isMember("oneOf") || schema.isMember("enum");
  if (schema["type"] == "integer" && !has_choices) {
    EXPECT_TRUE(schema["minimum"].isInt() && schema["maximum"].isInt()) << place;
  }
  for (const char* choices : {"oneOf", "anyOf"}) {
    for (const Json::Value& choice : schema[choices]) EXPECT_NE(lab::Title(choice), "") << place;
  }
  if (schema["type"] == "array") {
    EXPECT_TRUE(schema.isMember("items")) << place;
    if (schema["items"].isObject()) ExpectComplete(schema["items"], place + "[]");
  }
  if (schema["type"] != "object") return;
  Names required;
  for (const Json::Value& name : schema["required"])
    EXPECT_TRUE(required.insert(name.asString()).second) << place;
  EXPECT_EQ(required, NamesOf(schema["properties"])) << place;
  EXPECT_TRUE(schema["additionalProperties"].isBool() && !schema["additionalProperties"].asBool()) << place;
  for (const std::string& name : required) ExpectComplete(schema["properties"][name], place + "." + name);
}

TEST(Schemas, RequireEveryMemberAllowNoOtherAndHaveWordsForAll) {
  for (const char* name : {"global", "misc", "radio", "wps", "network"}) {
    const Json::Value& document = lab::Schema(name);
    EXPECT_EQ(document["$schema"], "https://json-schema.org/draft/2020-12/schema") << name;
    EXPECT_EQ(document["$id"], std::string(name) + ".schema.json");
    EXPECT_NE(document["description"].asString(), "") << name;
    ExpectComplete(document, name);
    for (const std::string& object : document["$defs"].getMemberNames())
      ExpectComplete(document["$defs"][object], object);
  }
}

TEST(Schemas, NameEveryModelAndCountry) {
  const Json::Value& global = lab::Properties("global", "");
  const auto names_in = [](const Json::Value& property) {
    std::vector<std::string> names;
    for (const Json::Value& name : property["enum"]) names.push_back(name.asString());
    return names;
  };
  const auto country = names_in(global["countryCodeSetting"]["properties"]["countryCode"]);
  EXPECT_EQ(country.size(), 198U);
  for (std::size_t i = 0; i < country.size(); ++i) {
    Daemon::GlobalData data;
    data.SetCountryCodeSetting({static_cast<CountryCode>(i)});
    EXPECT_EQ(Util::JsonSerializer::Serialize(data)["countryCodeSetting"]["countryCode"], country.at(i));
  }
  EXPECT_EQ(names_in(global["meshInfo"]["properties"]["connectedModels"]["items"]),
            (std::vector<std::string>{"Error", "ORCHID", "LOTUS", "MAPLE", "CEDAR"}));
  EXPECT_EQ(names_in(global["defaultModel"]),
            (std::vector<std::string>{"ORCHID", "LOTUS", "MAPLE", "CEDAR"}));
}

TEST(Schemas, SayOnceWhatANetworkHasOnARadio) {
  EXPECT_EQ(lab::Title(lab::Properties("network", "network")["security"]), "Security");
  EXPECT_EQ(lab::Meaning(lab::Properties("network", "network")["pmf_mode"], 2), "required");
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

Names MembersIn(const std::vector<lab::Setting>& settings, const std::string& prefix) {
  Names names;
  for (const lab::Setting& setting : settings) {
    EXPECT_NE(setting.Title(), "") << setting.member;
    if (setting.member.starts_with(prefix)) names.insert(setting.member.substr(prefix.size()));
  }
  return names;
}

TEST(ReadSettings, NamesEveryMemberOfTheRecords) {
  Household household;
  const lab::RunResult run = household.Update();
  const lab::RunView view(run, "8000");
  const lab::HouseholdSettings settings = lab::ReadSettings(view);
  for (const auto& network : settings.networks) {
    const auto& of_radio = network.radios.at(1).settings;
    const std::string rotation = "guestPasswordRotation.";
    EXPECT_EQ(MembersIn(of_radio, rotation), MembersOf<GuestPasswordRotation>());
    Names members = MembersIn(of_radio, "");
    std::erase_if(members, [&](const std::string& member) { return member.starts_with(rotation); });
    members.merge(Names{"frequency", "guestPasswordRotation"});
    EXPECT_EQ(members, MembersOf<FeatureSetting>());
  }
  Names radio = MembersIn(settings.radios.at(0).settings, "");
  radio.insert("frequency");
  EXPECT_EQ(radio, MembersOf<RadioSetting>());
}

}  // namespace
}  // namespace lab_test
