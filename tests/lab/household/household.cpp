#include "tests/lab/household/household.h"

#include "lab/images/boot_environment.h"
#include "lab/images/secret_seal.h"
#include "lab/runs/collected_documents.h"

namespace lab_test {
namespace {

constexpr std::string_view kSecretKey = "00112233445566778899aabbccddeeff00112233445566778899aabbccddeeff\n";

constexpr std::string_view kAccessPoint = R"(enabled=yes
ssid=SG9tZQ==
display_ssid=yes
max_num_client=64
security=PERSONAL_WPA2
auth_server_ip=
auth_server_Port=1812
schedule_enabled=no
schedule=
pmf_mode=capable
ampdu=yes
key_rotation=3600
dtim=1
guest_enabled=yes
guest_ssid=R3Vlc3Rz
guest_display_ssid=yes
guest_max_num_client=10
guest_allow_access_guest=no
guest_security=PERSONAL_WPA2
guest_auth_server_Port=1812
guest_key_rotation=3600
guest_dtim=1
guest_pwd_rotate_enable=yes
guest_pwd_rotate_date_type=0
guest_pwd_rotate_strength=medium
guest_pwd_rotate_date=2023/7/4
guest_pwd_rotate_hour=9
guest_pwd_rotate_minute=5
guest_pwd_rotate_week_day=1,4
guest_pwd_rotate_notify_enable=yes
guest_pwd_rotate_mail_list=host@example.net
channel=auto
channel2=auto
bandwidth=20_40MHZ
mode=bgn
tx_power=high
allow_dfs_channels=no
ap_enable_wps=no
smartconnect_enabled=no
smartconnect_guest_enabled=no
)";

std::string With(const std::string& text, const std::string& key, const std::string& line) {
  std::string changed;
  bool found = false;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = text.find('\n', start) + 1;
    const std::string old = text.substr(start, end - start);
    start = end;
    if (old.compare(0, key.size() + 1, key + "=") == 0) {
      found = true;
      changed += line;
    } else {
      changed += old;
    }
  }
  return found ? changed : changed + line;
}

}  // namespace

Household::Household() {
  files_.Write(kKey, kSecretKey, 0600);
  files_.Write(kInformation,
               "kelpbios=orchid\nmesh_network_role=ap\nnet_topology=router\ncountry_code=DE\n"
               "mesh_swap_backhaul_band=no\nwps_pin=12345670\n");
  files_.Write(kMesh, R"({"repeater_nodes": []})");
  files_.Write("/proc/sys/kernel/kelp_mac_address4", "021132000004\n");
  files_.Write("/proc/sys/kernel/kelp_mac_address5", "021132000005\n");
  lab::InstallBootEnvironment(files_, {{"usb3_disable", "0"}}, "/boot/uboot.env");
  for (const char* file : {kAllBands, k24, k5}) {
    files_.Write(file, kAccessPoint);
    Set(file, "password", Sealed("home secret"));
    Set(file, "guest_password", Sealed("guest secret"));
  }
  Set(k5, "mode", "ac");
  Set(k5, "bandwidth", "20_40_80MHZ");
  files_.Write(kWPS, "is_wps_ap_pin_enabled=yes\nwps_ap_pin=87654325\n");
  files_.Write(kDenyList, "[one]\nenable=yes\ndesc=Tablet\nmac=02:aa:00:00:00:01\n");
  files_.Write(kAllowList, "[one]\nenable=yes\ndesc=Phone\nmac=02:aa:00:00:00:02\n");
  files_.Write(kPolicy, "policy=deny\n");
  files_.Write(kGuestPolicy, "policy=allow\n");
  files_.Write(kBroadcast, "broadcast_detect_enabled=yes\nbroadcast_threshold=50\n");
  for (const char* name : {"lbd.conf", "lbd.guest.conf", "wifi_nvram"}) {
    files_.Write(std::string("/usr/kelp/etc/wifi/") + name, "");
  }
}

void Household::Set(const std::string& file, const std::string& key, std::string_view value) {
  files_.Write(file, With(files_.Read(file), key, key + "=" + std::string(value) + "\n"));
}

void Household::Drop(const std::string& file, const std::string& key) {
  files_.Write(file, With(files_.Read(file), key, ""));
}

void Household::SetEverywhere(const std::string& key, std::string_view value) {
  for (const char* file : {kAllBands, k24, k5}) Set(file, key, value);
}

std::string Household::Sealed(std::string_view secret) const {
  return lab::SealSecret(secret, kSecretKey);
}

lab::RunResult Household::Update(const std::string& from) {
  lab::RunResult run = lab::RunProgram(files_, KELP_PROGRAM, {"--update-config", from});
  lab::CollectDocuments(run.before, run.after);
  return run;
}

}  // namespace lab_test
