#include "lab/reports/personal_keys.h"

#include <gtest/gtest.h>

namespace lab_test {
namespace {

TEST(PersonalKeys, KnowSecretsInAnySpelling) {
  for (const char* key : {"password",
                          "guest_password",
                          "Guest_Password",
                          "PASSWORD ",
                          "auth_server_shared_secret",
                          "wps_ap_pin",
                          "wps_pin",
                          "pin",
                          "\"psk\"",
                          "#password",
                          "wl0_wpa_psk",
                          "wl0_key1",
                          "wl_wep_key",
                          "wl0_radius_key",
                          "passphrase",
                          "passwd",
                          "admin_pwd",
                          "pwd",
                          "apiToken",
                          "credentials"}) {
    EXPECT_TRUE(lab::IsSecretKey(key)) << key;
  }
  for (const char* key : {"", "pin_enabled", "is_wps_ap_pin_enabled", "key_rotation", "guest_key_rotation",
                          "guest_pwd_rotate_enable", "guestPasswordRotation", "guest_pwd_rotate_strength",
                          "mode", "security", "1"}) {
    EXPECT_FALSE(lab::IsSecretKey(key)) << key;
  }
}

TEST(PersonalKeys, KnowNamesOfNetworks) {
  for (const char* key : {"ssid", "guest_ssid", "SSID", "wl0_ssid"}) EXPECT_TRUE(lab::IsSsidKey(key)) << key;
  for (const char* key : {"display_ssid", "guest_display_ssid", "bssid", "ssid_count"})
    EXPECT_FALSE(lab::IsSsidKey(key)) << key;
  EXPECT_TRUE(lab::IsStoredSsidKey("guest_ssid"));
  EXPECT_FALSE(lab::IsStoredSsidKey("wl0_ssid"));
}

TEST(PersonalKeys, KnowWhatTellsDevicesAndPeople) {
  EXPECT_TRUE(lab::IsNameKey("desc"));
  EXPECT_TRUE(lab::IsNameKey("\"name\""));
  EXPECT_TRUE(lab::IsNameKey("hostname"));
  EXPECT_FALSE(lab::IsNameKey("model"));
  EXPECT_TRUE(lab::IsMacKey("mac"));
  EXPECT_TRUE(lab::IsMacKey("bssid"));
  EXPECT_FALSE(lab::IsMacKey("mac_filter_profile_id"));
  EXPECT_TRUE(lab::IsMailKey("guest_pwd_rotate_mail_list"));
  EXPECT_FALSE(lab::IsMailKey("guest_pwd_rotate_notify_enable"));
}

}  // namespace
}  // namespace lab_test
