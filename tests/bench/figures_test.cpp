#include "bench/figures.h"

#include <gtest/gtest.h>

namespace bench {
namespace {

TEST(IsLegacyFile, SettingsAndFilterLists) {
  EXPECT_TRUE(IsLegacyFile("/usr/kelp/etc/wifi/wifi_wps"));
  EXPECT_TRUE(IsLegacyFile("/usr/kelp/etc/info.conf"));
  EXPECT_TRUE(IsLegacyFile("/etc/hostapd/mac_filter/mf.info"));
}

TEST(IsLegacyFile, NotWhatIsAskedAnewEachTime) {
  EXPECT_FALSE(IsLegacyFile("/usr/kelp/etc/secret.key"));
  EXPECT_FALSE(IsLegacyFile("/proc/sys/kernel/kelp_mac_address3"));
  EXPECT_FALSE(IsLegacyFile("/etc/fw_env.config"));
  EXPECT_FALSE(IsLegacyFile("/boot/uboot.env"));
}

TEST(Target, IsMetAtItsBound) {
  EXPECT_TRUE((Target{"", 2.0, 2.0, false, 0}.IsMet()));
  EXPECT_FALSE((Target{"", 2.1, 2.0, false, 0}.IsMet()));
  EXPECT_TRUE((Target{"", 40.0, 40.0, true, 0}.IsMet()));
  EXPECT_FALSE((Target{"", 39.9, 40.0, true, 0}.IsMet()));
}

TEST(Target, IsNotMetUnmeasured) {
  EXPECT_FALSE((Target{"", std::nullopt, 2.0, false, 0}.IsMet()));
}

TEST(Flushes, AreCountedUnderAllTheirNames) {
  EXPECT_EQ(Flushes({{"fsync", 3}, {"fdatasync", 2}, {"read", 9}}), 5);
  EXPECT_EQ(Total({{"fsync", 3}, {"fdatasync", 2}, {"read", 9}}), 14);
}

}  // namespace
}  // namespace bench
