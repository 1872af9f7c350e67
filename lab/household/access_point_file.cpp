#include "lab/household/access_point_file.h"

#include "lab/household/known_files.h"
#include "lab/images/tree_lookup.h"
#include "legacy/interface_mac.h"

namespace lab {
namespace {

constexpr const char* kKernelEntry = "/proc/sys/kernel/kelp_mac_address";
constexpr int kAllBands = 0;
constexpr int kBand2_4GHz = 1;
constexpr int kSecondBand5GHz = 4;

int KernelEntry(bool is_orchid, int frequency) {
  if (frequency == kSecondBand5GHz) return 5;
  return (frequency == kBand2_4GHz ? 3 : 4) + (is_orchid ? 1 : 0);
}

}  // namespace

std::string AccessPointFile(const Tree& device, bool is_orchid, int frequency) {
  if (frequency == kAllBands) return kAllBandsFile;
  if (is_orchid && frequency == kSecondBand5GHz) return std::string(kAccessPointPrefix) + "11:11:11:11:11:11";
  const Entry* const entry =
      FindFile(device, kKernelEntry + std::to_string(KernelEntry(is_orchid, frequency)));
  if (entry == nullptr) return "";
  std::string bssid = KELP::Wifi::Updater::InsertPairColons(entry->content);
  if (bssid.ends_with('\n')) bssid.pop_back();
  return kAccessPointPrefix + bssid;
}

}  // namespace lab
