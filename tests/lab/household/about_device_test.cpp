#include "tests/lab/household/found.h"

namespace lab_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST(FindingsAboutTheDevice, TellACountryThatIsNotKnown) {
  Household household;
  household.Set(Household::kInformation, "country_code", "EU");
  EXPECT_THAT(Found(household), ElementsAre("country-unknown: country_code=EU"));
  Household other;
  other.Drop(Household::kInformation, "country_code");
  EXPECT_THAT(Found(other), ElementsAre("country-unknown: country_code is missing"));
}

TEST(FindingsAboutTheDevice, LeaveAMeshRoleAloneOfWhichNothingIsMade) {
  Household household;
  household.Files().Remove(Household::kMesh);
  EXPECT_THAT(Found(household, "9225"), IsEmpty());
  Household repeated;
  repeated.Update();
  repeated.Files().Remove(Household::kMesh);
  EXPECT_THAT(Found(repeated), IsEmpty());
}

TEST(FindingsAboutTheDevice, TellARepeaterWhoseRoleIsNotExactlyItsWord) {
  for (const char* word : {"RE", "re ", "Repeater"}) {
    Household household;
    household.Set(Household::kInformation, "mesh_network_role", word);
    EXPECT_THAT(Found(household),
                ElementsAre(std::string("repeater-lost: info.conf: mesh_network_role=") + word));
  }
  Household router;
  router.Set(Household::kInformation, "mesh_network_role", "RE");
  router.Files().Write(Household::kMesh, R"({"repeater_nodes": [{"mac": "02:aa:00:00:00:09"}]})");
  EXPECT_EQ(::testing::PrintToString(Found(router)).find("repeater-lost"), std::string::npos);
}

class GlobalFiles : public ::testing::Test {
 protected:
  GlobalFiles() {
    Write("model.json", R"({"connected_models": []})");
    Write("country.json", R"({"country_code": "DE"})");
    Write("backhaul.json", R"({"radio_frequencies": ["Band5GHz_1"]})");
  }

  void Write(const std::string& name, const std::string& text) {
    household_.Files().Write("/usr/kelp/etc/wifi/" + name, text);
  }
  void WriteRole(const std::string& text) {
    household_.Files().Write("/usr/kelp/etc/mesh/mesh_role.conf", text);
  }

  Household household_;
};

TEST_F(GlobalFiles, TellARepeaterThatTheyMakeNone) {
  household_.Set(Household::kInformation, "mesh_network_role", "re");
  EXPECT_THAT(
      Found(household_, "9000"),
      ElementsAre("repeater-lost: mesh_role.conf: role is missing, but info.conf: mesh_network_role=re"));
}

TEST_F(GlobalFiles, TellARoleInOtherLetters) {
  WriteRole("role=RE\n");
  EXPECT_THAT(Found(household_, "9000"), ElementsAre("repeater-lost: mesh_role.conf: role=RE"));
}

TEST_F(GlobalFiles, TellARoleWhoseLineEndsOtherwise) {
  WriteRole("role=re\r\n");
  EXPECT_THAT(Found(household_, "9000"),
              ElementsAre("crlf-lines: mesh_role.conf", "repeater-lost: mesh_role.conf: role=re\r"));
}

TEST_F(GlobalFiles, LeaveRolesAloneThatStay) {
  household_.Set(Household::kInformation, "mesh_network_role", "re");
  household_.Files().Remove(Household::kMesh);
  WriteRole("role=re\n");
  EXPECT_THAT(Found(household_, "9000"), IsEmpty());
}

TEST_F(GlobalFiles, TellABackhaulInOtherLetters) {
  Write("backhaul.json", R"({"radio_frequencies": ["band5GHz_2", "Band5GHz_1"]})");
  EXPECT_THAT(Found(household_, "9000"), ElementsAre("backhaul-unreadable: backhaul.json: band5GHz_2"));
}

TEST_F(GlobalFiles, LeaveABackhaulAloneThatIsTheUsualOne) {
  Write("backhaul.json", R"({"radio_frequencies": ["Band2GHz", "Band5GHz_1", "band5GHz_2"]})");
  EXPECT_THAT(Found(household_, "9000"), IsEmpty());
}

TEST(FindingsAboutTheDevice, LeaveTheCountryThatIsTheFallbackAlone) {
  Household household;
  household.Set(Household::kInformation, "country_code", "US");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutTheDevice, TellAMeshRoleThatCannotBeRead) {
  Household household;
  household.Files().Write(Household::kMesh, "{}");
  EXPECT_THAT(Found(household), ElementsAre("mesh-role-unreadable: missing member repeater_nodes"));
}

TEST(FindingsAboutTheDevice, NeedNoMeshFileOfARepeater) {
  Household household;
  household.Files().Remove(Household::kMesh);
  household.Set(Household::kInformation, "mesh_network_role", "re");
  for (const std::string& finding : Found(household)) {
    EXPECT_THAT(finding, ::testing::Not(StartsWith("mesh-role-unreadable")));
  }
}

TEST(FindingsAboutTheDevice, TellATopologyThatCannotBeRead) {
  Household household;
  household.Set(Household::kInformation, "net_topology", "Bridge");
  EXPECT_THAT(Found(household), ElementsAre("topology-unreadable: net_topology=Bridge"));
}

TEST(FindingsAboutTheDevice, TellABackhaulThatCannotBeReadOnly) {
  Household household;
  household.Drop(Household::kInformation, "mesh_swap_backhaul_band");
  EXPECT_THAT(Found(household), ElementsAre("backhaul-unreadable: mesh_swap_backhaul_band is missing"));
  Household other;
  other.Set(Household::kInformation, "mesh_swap_backhaul_band", "YES");
  EXPECT_THAT(Found(other), ElementsAre("flag-unknown: info.conf: mesh_swap_backhaul_band=YES"));
}

TEST(FindingsAboutTheDevice, TellOnceThatTheUSB3SwitchCannotBeRead) {
  Household household;
  household.Files().Remove("/etc/fw_env.config");
  EXPECT_THAT(Found(household), ElementsAre(StartsWith("usb3-unreadable: ")));
}

}  // namespace
}  // namespace lab_test
