#include "legacy/interface_mac.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "base/file_content.h"
#include "legacy/format_text.h"
#include "legacy/radios.h"
#include "legacy/update_context.h"
#include "platform/records/radio_frequency.h"
#include "platform/records/supported_model.h"

namespace KELP::Wifi::Updater {
namespace {

using Util::RadioFrequency;
using Util::SupportedModel;

// The first model has no second 5 GHz radio of its own; its placeholder names the file of settings.
constexpr const char* kAllBandsBssid = "00:00:00:00:00:00";
constexpr const char* kPlaceholderBssid = "11:11:11:11:11:11";

bool IsWordByte(char byte) {
  return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
         byte == '_';
}

int KernelEntryOf(bool is_first_model, RadioFrequency frequency) {
  switch (frequency) {
    case kBand24:
      return is_first_model ? 4 : 3;
    case kBand5:
    case kBand5First:
      return is_first_model ? 5 : 4;
    case kBand5Second:
      return 5;
    default:
      return 0;
  }
}

std::string GetBssid(const UpdateContext& context, RadioFrequency frequency) {
  const bool is_first_model = context.model == SupportedModel::ORCHID;
  if (frequency == kAllBands) return kAllBandsBssid;
  if (is_first_model && frequency == kBand5Second) return kPlaceholderBssid;
  return ReadInterfaceMAC(KernelEntryOf(is_first_model, frequency));
}

std::string ReadEntry(const std::string& path) {
  try {
    return ReadRegularFile(path);
  } catch (const std::system_error&) {
    throw std::runtime_error("Failed to get bssid from kelp_mac_address");
  }
}

}  // namespace

std::string GetAccessPointFilePath(const UpdateContext& context, RadioFrequency frequency) {
  return FormatText("/usr/kelp/etc/wifi/wifi_ap_%s", GetBssid(context, frequency).c_str());
}

std::string ReadInterfaceMAC(int entry) {
  std::string bssid = InsertPairColons(ReadEntry(FormatText("/proc/sys/kernel/kelp_mac_address%d", entry)));
  if (bssid.ends_with('\n')) bssid.pop_back();
  return bssid;
}

std::string InsertPairColons(std::string_view text) {
  std::string result;
  result.reserve(text.size() + text.size() / 2);
  const auto is_word_at = [&](std::size_t place) { return place < text.size() && IsWordByte(text[place]); };

  std::size_t place = 0;
  while (place + 1 < text.size()) {
    const bool is_pair_on_line = text[place] != '\n' && text[place + 1] != '\n';
    // A line's end counts as no word byte, as every other byte outside a word does.
    if (is_pair_on_line && is_word_at(place + 1) == is_word_at(place + 2)) {
      result.append(text, place, 2).push_back(':');
      place += 2;
    } else {
      result.push_back(text[place]);
      ++place;
    }
  }
  return result.append(text.substr(place));
}

}  // namespace KELP::Wifi::Updater
