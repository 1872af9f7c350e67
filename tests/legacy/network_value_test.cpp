#include "legacy/network_value.h"

#include <gtest/gtest.h>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"

namespace KELP::Wifi::Updater {
namespace {

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_ap_00:11:22:33:44:55";

TEST(GuestKey, OfThePrimaryNetworkIsTheKeyItself) {
  for (const auto* key : {"ssid", "pmf_mode", "allow_access_guest", "", "guest_ssid"}) {
    EXPECT_EQ(GuestKey(key, false), key);
  }
}

TEST(GuestKey, OfTheGuestNetworkIsPrefixed) {
  EXPECT_EQ(GuestKey("ssid", true), "guest_ssid");
  EXPECT_EQ(GuestKey("allow_access_guest", true), "guest_allow_access_guest");
  EXPECT_EQ(GuestKey("auth_server_Port", true), "guest_auth_server_Port");
  EXPECT_EQ(GuestKey("guest_ssid", true), "guest_guest_ssid");
  EXPECT_EQ(GuestKey("", true), "guest_");
}

TEST(GuestKey, PmfModeAloneIsExempt) {
  EXPECT_EQ(GuestKey("pmf_mode", true), "pmf_mode");
  EXPECT_EQ(GuestKey("pmf_mode2", true), "guest_pmf_mode2");
  EXPECT_EQ(GuestKey("pmf", true), "guest_pmf");
  EXPECT_EQ(GuestKey("PMF_MODE", true), "guest_PMF_MODE");
}

TEST(ReadNetworkValue, ReadsEachNetworksOwnKey) {
  lab::PrivateRoot device;
  device.Write(kFile, "ssid=primary\nguest_ssid=guest\n");
  const lab::InRoot inside(device);
  EXPECT_EQ(ReadNetworkValue({.file = kFile, .isGuest = false}, "ssid"), "primary");
  EXPECT_EQ(ReadNetworkValue({.file = kFile, .isGuest = true}, "ssid"), "guest");
}

TEST(ReadNetworkValue, GuestPmfModeIsThePrimaryNetworks) {
  lab::PrivateRoot device;
  device.Write(kFile, "guest_pmf_mode=required\npmf_mode=capable\n");
  const lab::InRoot inside(device);
  EXPECT_EQ(ReadNetworkValue({.file = kFile, .isGuest = true}, "pmf_mode"), "capable");
  EXPECT_EQ(ReadNetworkValue({.file = kFile, .isGuest = false}, "pmf_mode"), "capable");
}

TEST(ReadNetworkValue, GuestDoesNotFallBackToThePrimaryKey) {
  lab::PrivateRoot device;
  device.Write(kFile, "ssid=primary\nguest_pmf_mode=required\n");
  lab::InRoot inside(device);
  EXPECT_EQ(ReadNetworkValue({.file = kFile, .isGuest = true}, "ssid"), "");
  EXPECT_EQ(ReadNetworkValue({.file = kFile, .isGuest = true}, "pmf_mode"), "");
  EXPECT_EQ(ReadNetworkValue({.file = "/etc/missing", .isGuest = false}, "ssid"), "");
  EXPECT_TRUE(inside.Log().empty());
}

TEST(ReadNetworkValue, GivesTheValueUnchanged) {
  lab::PrivateRoot device;
  device.Write(kFile, "schedule= 1 0 \n");
  const lab::InRoot inside(device);
  EXPECT_EQ(ReadNetworkValue({.file = kFile, .isGuest = false}, "schedule"), " 1 0 ");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
