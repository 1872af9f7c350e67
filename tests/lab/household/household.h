#pragma once

#include <string>
#include <string_view>

#include "lab/images/private_root.h"
#include "lab/runs/program_run.h"

namespace lab_test {

/// The dual-band device of the cases: complete, with values that are all known, so that the real program logs
/// nothing. Tests change what they are about.
class Household {
 public:
  static constexpr const char* kAllBands = "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00";
  static constexpr const char* k24 = "/usr/kelp/etc/wifi/wifi_ap_02:11:32:00:00:04";
  static constexpr const char* k5 = "/usr/kelp/etc/wifi/wifi_ap_02:11:32:00:00:05";
  static constexpr const char* kInformation = "/usr/kelp/etc/info.conf";
  static constexpr const char* kDenyList = "/etc/hostapd/mac_filter/mf_deny.conf";
  static constexpr const char* kAllowList = "/etc/hostapd/mac_filter/mf_allow.conf";
  static constexpr const char* kPolicy = "/etc/hostapd/mac_filter/mf.info";
  static constexpr const char* kGuestPolicy = "/etc/hostapd/mac_filter/mf_guest.info";
  static constexpr const char* kBroadcast = "/etc/hostapd/mac_filter/mf.setting";
  static constexpr const char* kWPS = "/usr/kelp/etc/wifi/wifi_wps";
  static constexpr const char* kKey = "/usr/kelp/etc/secret.key";
  static constexpr const char* kMesh = "/usr/kelp/etc/mesh/mesh.conf";

  Household() : files_(KELP_SOURCE "/tests/cases/devices/household") {}

  lab::PrivateRoot& Files() { return files_; }

  /// Gives `key` of a key=value file another value, or the file that key.
  void Set(const std::string& file, const std::string& key, std::string_view value);
  /// Takes the key out of the file.
  void Drop(const std::string& file, const std::string& key);
  /// Does so in the files of all radios.
  void SetEverywhere(const std::string& key, std::string_view value);

  /// The secret as the device stores it.
  std::string Sealed(std::string_view secret) const;

  /// Runs the real program.
  lab::RunResult Update(const std::string& from = "8000");

 private:
  lab::PrivateRoot files_;
};

}  // namespace lab_test
