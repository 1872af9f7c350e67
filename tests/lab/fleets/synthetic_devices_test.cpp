#include "lab/fleets/synthetic_devices.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

#include "lab/fleets/key_set.h"

namespace lab::fleets {
namespace {

/// All of a device as one text.
std::string TextOf(const SyntheticDevice& device) {
  std::string text = ListLine(device.source) + "\n";
  for (const auto& [path, bytes] : device.files) text.append(path).append("\n").append(bytes).append("\n");
  return text;
}

TEST(SyntheticDevices, AreTheSameEverywhere) {
  // Not to be changed lightly: teams compare fleets by their seeds.
  std::string all;
  for (std::size_t number = 1; number <= 300; ++number) all += TextOf(MakeSyntheticDevice(7, number, false));
  EXPECT_EQ(KeyOf(all, ""), std::uint64_t{365110668496885106});
}

TEST(SyntheticDevices, DifferBySeedAndNumber) {
  std::set<std::string> texts;
  for (std::uint64_t seed = 0; seed < 10; ++seed) {
    for (std::size_t number = 1; number <= 20; ++number)
      texts.insert(TextOf(MakeSyntheticDevice(seed, number, true)));
  }
  EXPECT_EQ(texts.size(), 200U);
}

TEST(SyntheticDevices, AreOfAllKinds) {
  std::string all;
  std::set<std::string> generations;
  for (std::size_t number = 1; number <= 300; ++number) {
    const SyntheticDevice device = MakeSyntheticDevice(1, number, true);
    all += TextOf(device);
    generations.insert(std::stoi(device.source.from) < 8228 ? "1.2.5" : "1.3");
    EXPECT_LE(std::stoi(device.source.from), 9224);
  }
  for (const char* part : {"kelpbios=orchid", "kelpbios=lotus", "kelpbios=maple", "kelpbios=cedar",
                           "mesh_network_role=re", "net_topology=bridge", "net_topology=router", "\"Garage\"",
                           "smartconnect_enabled=yes", "guest_enabled=yes", "ENTERPRISE_WPA2", "policy=deny",
                           "policy=allow", "\"usb3_disable\":\"1\"", "11:11:11:11:11:11"}) {
    EXPECT_NE(all.find(part), std::string::npos) << part;
  }
  EXPECT_EQ(generations.size(), 2U);
}

TEST(SyntheticDevices, ThatAreNotPlainHaveWhatRealOnesHave) {
  std::string all;
  for (std::size_t number = 1; number <= 600; ++number) all += TextOf(MakeSyntheticDevice(1, number, false));
  for (const char* part : {"PERSONAL_WPA4", "pmf_mode=optional", "bandwidth=40MHZ", "=yes\r\n",
                           "mac=3c-6a:9d", "/wifi/global.json", "country_code=eu", "net_topology=repeater"}) {
    EXPECT_NE(all.find(part), std::string::npos) << part;
  }
}

}  // namespace
}  // namespace lab::fleets
