#include "tests/lab/findings/found.h"

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
