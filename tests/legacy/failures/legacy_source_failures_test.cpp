// What the platform may throw that is no std::exception: only the reads of single values swallow it.
#include <gtest/gtest.h>

#include <string>

#include "legacy/device_facts.h"
#include "legacy/legacy_value.h"
#include "tests/support/failing_platform.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::FailingPlatform;
using testing_support::LogLines;

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_wps";
constexpr const char* kMeshFile = "/usr/kelp/etc/mesh/mesh.conf";

class LegacySourceFailures : public ::testing::Test {
 protected:
  /// Nothing is logged of what passes to the caller.
  template <typename Read>
  void ExpectPassesToTheCaller(Read read) {
    EXPECT_THROW(device_.Run([&] { return read(); }), int);
    EXPECT_EQ(device_.Log(), LogLines{});
  }

  testing_support::TestDevice device_;
};

TEST_F(LegacySourceFailures, LegacyValueIsTheDefaultWhateverIsThrown) {
  device_.Files().Write(kFile, "one=1\ntwo=2\n");
  FailingPlatform failing;
  failing.key_that_throws = "one";
  EXPECT_EQ(device_.Run([] { return ReadLegacyValue(kFile, "one", "default"); }), "default");
  EXPECT_EQ(device_.Log(), LogLines{});
  EXPECT_EQ(device_.Run([] { return ReadLegacyValue(kFile, "two", "default"); }), "2");
}

TEST_F(LegacySourceFailures, MeshRoleLetsThroughWhatIsNoStandardException) {
  device_.WriteInfo({{"mesh_network_role", "none"}});
  device_.Files().Write(kMeshFile, R"({"repeater_nodes": []})");
  FailingPlatform failing;
  failing.key_that_throws = "mesh_network_role";
  ExpectPassesToTheCaller([] { return GetMeshRole(); });
  failing.key_that_throws = "";
  failing.document_that_throws = kMeshFile;
  ExpectPassesToTheCaller([] { return GetMeshRole(); });
}

TEST_F(LegacySourceFailures, TopologyLetsThroughWhatIsNoStandardException) {
  device_.WriteInfo({{"net_topology", "bridge"}});
  FailingPlatform failing;
  failing.key_that_throws = "net_topology";
  ExpectPassesToTheCaller([] { return GetNetTopology({}); });
}

}  // namespace
}  // namespace KELP::Wifi::Updater
