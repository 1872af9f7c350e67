#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "lab/images/tree.h"
#include "legacy/update_context.h"
#include "tests/support/test_device.h"

namespace testing_support {

/// A dual-band device of the first model with a complete legacy configuration whose words are all known:
/// radio 1 has the file k24File, radio 2 the file k5File.
class LegacyHousehold : public TestDevice {
 public:
  static constexpr const char* kAllBandsFile = "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00";
  static constexpr const char* k24File = "/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:04";
  static constexpr const char* k5File = "/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:05";
  static constexpr const char* kSecondMeshFile = "/usr/kelp/etc/wifi/wifi_ap_11:11:11:11:11:11";

  LegacyHousehold();

  /// Makes it a mesh router: radios 0, 1, 3 and 4.
  void JoinMesh();

  /// An access-point file whose words are known, but for `entries`, which come first.
  void WriteAccessPoint(const std::string& file, const Entries& entries = {});

  Json::Value Document(const std::string& name);
  bool HasDocument(const std::string& name);
  /// The paths that are in the archive, without its own.
  std::vector<std::string> Archived();

  KELP::Wifi::Updater::UpdateContext context{8000, KELP::Wifi::Updater::MeshRole::Standalone,
                                             KELP::Wifi::Util::SupportedModel::ORCHID};
};

}  // namespace testing_support
