#include "builders/radio_setting.h"

#include <string>
#include <string_view>
#include <vector>

#include "legacy/device_facts.h"
#include "legacy/interface_mac.h"
#include "legacy/legacy_value.h"
#include "legacy/radios.h"
#include "legacy/update_context.h"
#include "legacy/vocabularies.h"
#include "platform/records/radio_frequency.h"
#include "platform/records/radio_setting.h"
#include "platform/records/supported_model.h"

namespace KELP::Wifi::Updater {

using Util::RadioFrequency;

std::vector<RadioFrequency> GetRadioFrequencies(const UpdateContext& context) {
  const bool is_dual_band =
      context.model == Util::SupportedModel::ORCHID && context.meshRole == MeshRole::Standalone;
  if (is_dual_band) return {kAllBands, kBand24, kBand5};
  return {kAllBands, kBand24, kBand5First, kBand5Second};
}

RadioSetting BuildRadioSetting(const UpdateContext& context, RadioFrequency frequency) {
  const std::string file = GetAccessPointFilePath(context, frequency);
  const auto text = [&](std::string_view key) { return ReadLegacyValue(file, key, ""); };

  RadioSetting setting;
  setting.frequency = frequency;
  setting.channel = ParseLegacyInt(text("channel"), 0);
  setting.channel2 = ParseLegacyInt(text("channel2"), 0);
  setting.bandwidth = ToBandwidth(file, frequency);
  setting.mode = ToWirelessMode(text("mode"), frequency);
  setting.txPower = ToTxPower(text("tx_power"));
  setting.allowDFSChannels = IsYes(text("allow_dfs_channels"));
  setting.usb3Enabled = IsUSB3Enabled();
  setting.thirdFlag = false;
  setting.fourthFlag = true;
  return setting;
}

}  // namespace KELP::Wifi::Updater
