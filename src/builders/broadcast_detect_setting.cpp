#include "builders/broadcast_detect_setting.h"

#include <cstdint>
#include <string>

#include "legacy/legacy_value.h"
#include "legacy/update_context.h"
#include "platform/records/misc_setting.h"

namespace KELP::Wifi::Updater {
namespace {

constexpr const char* kFile = "/etc/hostapd/mac_filter/mf.setting";
constexpr std::int32_t kDefaultThreshold = 100;

}  // namespace

BroadcastDetectSetting BuildBroadcastDetectSetting(const UpdateContext& /*context*/) {
  try {
    BroadcastDetectSetting setting;
    setting.enabled = ReadLegacyFlag(kFile, "broadcast_detect_enabled");
    setting.threshold = std::stoi(ReadLegacyValue(kFile, "broadcast_threshold", ""));
    return setting;
  } catch (...) {
    BroadcastDetectSetting setting;
    setting.threshold = kDefaultThreshold;
    return setting;
  }
}

}  // namespace KELP::Wifi::Updater
