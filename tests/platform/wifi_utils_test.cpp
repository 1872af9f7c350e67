#include "platform/wifi_utils.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <system_error>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"

namespace KELP::Wifi::Util::WifiUtils {
namespace {

constexpr const char* kStore = "/usr/kelp/etc/info.conf";

TEST(GetDefaultWPS_AP_PIN, IsTheInformationStoresPinAsItStands) {
  lab::PrivateRoot device;
  device.Write(kStore, "wps_pin=12345670\n");
  const lab::InRoot inside(device);
  EXPECT_EQ(GetDefaultWPS_AP_PIN(), "12345670");
}

TEST(GetDefaultWPS_AP_PIN, IsNeitherTrimmedNorChecked) {
  lab::PrivateRoot device;
  device.Write(kStore, "wps_pin= no pin \n");
  const lab::InRoot inside(device);
  EXPECT_EQ(GetDefaultWPS_AP_PIN(), " no pin ");
}

TEST(GetDefaultWPS_AP_PIN, MayBeEmpty) {
  lab::PrivateRoot device;
  device.Write(kStore, "wps_pin=\n");
  const lab::InRoot inside(device);
  EXPECT_EQ(GetDefaultWPS_AP_PIN(), "");
}

TEST(GetDefaultWPS_AP_PIN, ThrowsWithoutThePinAndIsNotDerivedFromAnAddress) {
  lab::PrivateRoot device;
  device.Write(kStore, "kelpbios=lotus\n");
  device.Write("/proc/sys/kernel/kelp_mac_address0", "0011322a0b0c\n");
  const lab::InRoot inside(device);
  EXPECT_THROW(GetDefaultWPS_AP_PIN(), std::runtime_error);
}

TEST(GetDefaultWPS_AP_PIN, ThrowsWithoutTheStore) {
  lab::PrivateRoot device;
  const lab::InRoot inside(device);
  EXPECT_THROW(GetDefaultWPS_AP_PIN(), std::system_error);
}

}  // namespace
}  // namespace KELP::Wifi::Util::WifiUtils
