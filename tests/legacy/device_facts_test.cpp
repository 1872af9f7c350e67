#include "legacy/device_facts.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <system_error>

#include "lab/images/boot_environment.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/legacy/logged.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::LoggedErrors;
using testing_support::Messages;
using Util::SupportedModel;

constexpr const char* kStore = "/usr/kelp/etc/info.conf";
constexpr const char* kMeshFile = "/usr/kelp/etc/mesh/mesh.conf";

class DeviceFacts : public ::testing::Test {
 protected:
  lab::PrivateRoot device_;
};

class GetMeshRoleTest : public DeviceFacts {
 protected:
  void ExpectRole(MeshRole role) {
    lab::InRoot inside(device_);
    EXPECT_EQ(GetMeshRole(), role);
    EXPECT_EQ(LoggedErrors(inside), Messages{});
  }
  /// Standalone, with one line of number 140 that holds `reason`.
  void ExpectFallback(const std::string& reason) {
    lab::InRoot inside(device_);
    EXPECT_EQ(GetMeshRole(), MeshRole::Standalone);
    const Messages messages = LoggedErrors(inside);
    ASSERT_EQ(messages.size(), 1U);
    const std::string start = "kelpwifiupdater:140 Failed to get mesh role, error: ";
    EXPECT_TRUE(messages[0].starts_with(start)) << messages[0];
    EXPECT_GT(messages[0].size(), start.size());
    EXPECT_NE(messages[0].find(reason), std::string::npos) << messages[0];
  }
};

TEST(MeshRoleNumbers, AreThoseOfTheSettings) {
  EXPECT_EQ(static_cast<int>(MeshRole::Standalone), 0);
  EXPECT_EQ(static_cast<int>(MeshRole::MeshRouter), 1);
  EXPECT_EQ(static_cast<int>(MeshRole::Repeater), 2);
}

TEST_F(GetMeshRoleTest, ReIsARepeaterEvenWithoutAMeshFile) {
  device_.Write(kStore, "mesh_network_role=re\n");
  ExpectRole(MeshRole::Repeater);
}

TEST_F(GetMeshRoleTest, ReIsARepeaterWhateverTheMeshFileHolds) {
  device_.Write(kStore, "mesh_network_role=re\n");
  device_.Write(kMeshFile, "no JSON");
  ExpectRole(MeshRole::Repeater);
}

TEST_F(GetMeshRoleTest, EveryOtherWordLeavesItToTheMeshFile) {
  for (const auto* word : {"repeater", "RE", "Re", "re ", " re", "re\r", "r", "", "cap", "router"}) {
    device_.Write(kStore, std::string("mesh_network_role=") + word + "\n");
    device_.Write(kMeshFile, R"({"repeater_nodes": []})");
    ExpectRole(MeshRole::Standalone);
    device_.Write(kMeshFile, R"({"repeater_nodes": [{"mac": "00:11:22:33:44:55"}]})");
    ExpectRole(MeshRole::MeshRouter);
  }
}

TEST_F(GetMeshRoleTest, AnyElementMakesAMeshRouter) {
  device_.Write(kStore, "mesh_network_role=none\n");
  for (const auto* nodes : {"[null]", "[0]", "[\"\"]", "[[]]", "[{}]", "[1, 2, 3]"}) {
    device_.Write(kMeshFile, std::string(R"({"other": 1, "repeater_nodes": )") + nodes + "}");
    ExpectRole(MeshRole::MeshRouter);
  }
}

TEST_F(GetMeshRoleTest, MissingStoreLogsAndIsStandalone) {
  device_.Write(kMeshFile, R"({"repeater_nodes": [1]})");
  ExpectFallback(kStore);
}

TEST_F(GetMeshRoleTest, MissingRoleLogsAndIsStandaloneWhateverTheMeshFileHolds) {
  device_.Write(kStore, "kelpbios=lotus\n");
  device_.Write(kMeshFile, R"({"repeater_nodes": [1]})");
  ExpectFallback("mesh_network_role");
}

TEST_F(GetMeshRoleTest, MissingMeshFileLogsAndIsStandalone) {
  device_.Write(kStore, "mesh_network_role=none\n");
  ExpectFallback(kMeshFile);
}

TEST_F(GetMeshRoleTest, MeshFileWithoutNodesLogsAndIsStandalone) {
  device_.Write(kStore, "mesh_network_role=none\n");
  for (const auto* text :
       {"{}", "[1]", R"({"Repeater_nodes": [1]})", R"({"repeater_nodes": {"a": 1}})",
        R"({"repeater_nodes": "x"})", R"({"repeater_nodes": null})", R"({"repeater_nodes": 1})"}) {
    device_.Write(kMeshFile, text);
    ExpectFallback("repeater_nodes");
  }
}

TEST_F(GetMeshRoleTest, MeshFileThatIsNoDocumentLogsAndIsStandalone) {
  const std::string malformed = std::string("malformed JSON in ") + kMeshFile + ": ";
  device_.Write(kStore, "mesh_network_role=none\n");
  for (const auto* text : {"", "{", "\"re\"", R"({"repeater_nodes": [1]} x)", R"({"repeater_nodes": [1})"}) {
    device_.Write(kMeshFile, text);
    ExpectFallback(malformed);
  }
  device_.Write(kMeshFile, std::string(100'000, '['));
  ExpectFallback(malformed);
  device_.Remove(kMeshFile);
  device_.MakeDirectory(kMeshFile);
  ExpectFallback(std::string("cannot read ") + kMeshFile + ": Is a directory");
}

class GetSupportedModelTest : public DeviceFacts {
 protected:
  std::string ErrorFor(const std::string& store) {
    device_.Write(kStore, store);
    lab::InRoot inside(device_);
    std::string text;
    try {
      GetSupportedModel();
    } catch (const std::runtime_error& error) {
      text = error.what();
    }
    EXPECT_EQ(LoggedErrors(inside), Messages{});
    return text;
  }
};

TEST_F(GetSupportedModelTest, KnowsTheFourModels) {
  const std::pair<const char*, int> models[] = {{"orchid", 0}, {"lotus", 1}, {"maple", 2}, {"cedar", 3}};
  for (const auto& [word, value] : models) {
    device_.Write(kStore, std::string("kelpbios=") + word + "\n");
    lab::InRoot inside(device_);
    EXPECT_EQ(static_cast<int>(GetSupportedModel()), value) << word;
    EXPECT_EQ(LoggedErrors(inside), Messages{});
  }
}

TEST_F(GetSupportedModelTest, EveryOtherValueThrowsWithIt) {
  EXPECT_EQ(ErrorFor("kelpbios=ORCHID\n"), "Invalid kelpbios value: ORCHID");
  EXPECT_EQ(ErrorFor("kelpbios=\n"), "Invalid kelpbios value: ");
  EXPECT_EQ(ErrorFor("kelpbios=lotus \n"), "Invalid kelpbios value: lotus ");
  EXPECT_EQ(ErrorFor("kelpbios= lotus\n"), "Invalid kelpbios value:  lotus");
  EXPECT_EQ(ErrorFor("kelpbios=lotus\r\n"), "Invalid kelpbios value: lotus\r");
  EXPECT_EQ(ErrorFor("kelpbios=Error\n"), "Invalid kelpbios value: Error");
  EXPECT_EQ(ErrorFor("kelpbios=%s%n\n"), "Invalid kelpbios value: %s%n");
  EXPECT_EQ(ErrorFor("kelpbios=1\n"), "Invalid kelpbios value: 1");
}

TEST_F(GetSupportedModelTest, FailureOfTheStorePassesThrough) {
  EXPECT_NE(ErrorFor("net_topology=router\n").find("kelpbios"), std::string::npos);
  device_.Remove(kStore);
  const lab::InRoot inside(device_);
  EXPECT_THROW(GetSupportedModel(), std::system_error);
}

class GetNetTopologyTest : public DeviceFacts {
 protected:
  void Expect(MeshRole role, const std::string& topology, const Messages& messages) {
    lab::InRoot inside(device_);
    EXPECT_EQ(GetNetTopology({.buildNumber = 8000, .meshRole = role, .model = SupportedModel::LOTUS}),
              topology);
    EXPECT_EQ(LoggedErrors(inside), messages);
  }
};

TEST_F(GetNetTopologyTest, OfARepeaterIsRepeaterWithoutReadingAnything) {
  Expect(MeshRole::Repeater, "repeater", {});
  device_.Write(kStore, "net_topology=bridge\n");
  Expect(MeshRole::Repeater, "repeater", {});
}

TEST_F(GetNetTopologyTest, RouterIsDefaultAndBridgeIsBridge) {
  for (const MeshRole role : {MeshRole::Standalone, MeshRole::MeshRouter}) {
    device_.Write(kStore, "net_topology=router\n");
    Expect(role, "default", {});
    device_.Write(kStore, "net_topology=bridge\n");
    Expect(role, "bridge", {});
  }
}

TEST_F(GetNetTopologyTest, RepeaterOnADeviceThatIsNoneLogsAndIsDefault) {
  device_.Write(kStore, "net_topology=repeater\n");
  const Messages line{
      "kelpwifiupdater:168 Failed to get network context: unsupported net_topology: %srepeater"};
  Expect(MeshRole::Standalone, "default", line);
  Expect(MeshRole::MeshRouter, "default", line);
}

TEST_F(GetNetTopologyTest, UnsupportedValueFollowsThePercentSInTheLine) {
  const std::string start = "kelpwifiupdater:168 Failed to get network context: unsupported net_topology: %s";
  for (const auto* word : {"", "Router", "default", "router ", " bridge", "bridge\r", "%d%n%s"}) {
    device_.Write(kStore, std::string("net_topology=") + word + "\n");
    Expect(MeshRole::Standalone, "default", {start + word});
  }
}

TEST_F(GetNetTopologyTest, StoreThatCannotBeReadLogsAndIsDefault) {
  lab::InRoot inside(device_);
  EXPECT_EQ(GetNetTopology({}), "default");
  const Messages messages = LoggedErrors(inside);
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_TRUE(messages[0].starts_with("kelpwifiupdater:168 Failed to get network context: ")) << messages[0];
  EXPECT_NE(messages[0].find(kStore), std::string::npos) << messages[0];
}

TEST_F(GetNetTopologyTest, StoreWithoutTheKeyLogsAndIsDefault) {
  device_.Write(kStore, "kelpbios=lotus\n");
  lab::InRoot inside(device_);
  EXPECT_EQ(GetNetTopology({}), "default");
  const Messages messages = LoggedErrors(inside);
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_TRUE(messages[0].starts_with("kelpwifiupdater:168 Failed to get network context: ")) << messages[0];
}

TEST_F(DeviceFacts, USB3IsEnabledUnlessTheBootEnvironmentDisablesIt) {
  const std::pair<lab::BootVariables, bool> cases[] = {{{}, true},
                                                       {{{"usb3_disable", "0"}}, true},
                                                       {{{"usb3_disable", "1"}}, false},
                                                       {{{"usb3_disable", "yes"}}, false},
                                                       {{{"usb3_disable", "00"}}, false}};
  for (const auto& [variables, enabled] : cases) {
    lab::PrivateRoot device;
    lab::InstallBootEnvironment(device, variables);
    lab::InRoot inside(device);
    EXPECT_EQ(IsUSB3Enabled(), enabled);
    EXPECT_EQ(LoggedErrors(inside), Messages{});
  }
}

TEST_F(DeviceFacts, USB3IsEnabledWithALineAtEveryCallWhereTheBootEnvironmentCannotBeAsked) {
  lab::InRoot inside(device_);
  const std::string line = "kelpwifiupdater:896 Failed to call KELPUSBGetUSB3DisableUbootEnv";
  EXPECT_TRUE(IsUSB3Enabled());
  EXPECT_EQ(LoggedErrors(inside), (Messages{line}));
  EXPECT_TRUE(IsUSB3Enabled());
  EXPECT_TRUE(IsUSB3Enabled());
  EXPECT_EQ(LoggedErrors(inside), (Messages{line, line}));
}

}  // namespace
}  // namespace KELP::Wifi::Updater
