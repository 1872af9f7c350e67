#include "builders/mac_filter_profiles.h"

#include <array>
#include <filesystem>
#include <memory>
#include <string_view>

#include "base/log.h"
#include "legacy/legacy_value.h"
#include "platform/section_files.h"

namespace KELP::Wifi::Updater {
namespace {

constexpr std::size_t kCapacity = 8192;

constexpr const char* kPrimaryFilter = "/etc/hostapd/mac_filter/mf.info";
constexpr const char* kGuestFilter = "/etc/hostapd/mac_filter/mf_guest.info";

/// One legacy device list and the profiles that are made of it.
struct FilterList {
  const char* file;
  std::string_view word;  // by which a network's policy selects it
  MACFilterPolicy policy;
  const char* primary_name;
  const char* guest_name;
};
constexpr std::array kFilterLists{
    FilterList{"/etc/hostapd/mac_filter/mf_deny.conf", "deny", MACFilterPolicy::Deny,
               "Primary Network - Deny", "Guest Network - Deny"},
    FilterList{"/etc/hostapd/mac_filter/mf_allow.conf", "allow", MACFilterPolicy::Allow,
               "Primary Network - Allow", "Guest Network - Allow"},
};

struct FreeList {
  void operator()(KLIBCSzList* list) const { KLIBCSzListFree(list); }
};
struct FreeHash {
  void operator()(KLIBCSzHash* table) const { KLIBCSzHashFree(table); }
};

std::string ReadPolicy(bool is_guest) {
  return ReadLegacyValue(is_guest ? kGuestFilter : kPrimaryFilter, "policy", "");
}

const char* ValueOrEmpty(const KLIBCSzHash* table, const char* key) {
  const char* value = KLIBCSzHashGetValue(table, key);
  return value == nullptr ? "" : value;
}

void AppendProfile(std::vector<MACFilterProfile>& profiles, const char* name, MACFilterPolicy policy,
                   std::vector<MACFilterDevice> devices) {
  const auto id = static_cast<std::int32_t>(profiles.size());
  profiles.push_back({id, name, policy, std::move(devices)});
}

}  // namespace

std::vector<MACFilterDevice> ReadMACFilterDevices(const std::string& path) {
  const std::unique_ptr<KLIBCSzList, FreeList> sections(KLIBCSzListAlloc(kCapacity));
  const std::unique_ptr<KLIBCSzHash, FreeHash> section(KLIBCSzHashAlloc(kCapacity));
  if (sections == nullptr || section == nullptr) {
    Log(LOG_ERR, "%s:%d Failed to allocate memory", 524);
    return {};
  }
  // The interfaces want the address of a handle; what it refers to stays ours.
  KLIBCSzList* const list = sections.get();
  KLIBCSzHash* const table = section.get();
  KLIBCSzList* list_handle = list;
  KLIBCSzHash* table_handle = table;

  const int count = KLIBCFileEnumSection(path.c_str(), &list_handle);
  if (count < 0) {
    Log(LOG_ERR, "%s:%d Failed to enum section from %s", 530, path.c_str());
    return {};
  }

  std::vector<MACFilterDevice> devices;
  for (int index = 0; index < count; ++index) {
    if (KLIBCFileGetSection(path.c_str(), KLIBCSzListGet(list, index), &table_handle) <= 0) continue;
    if (!IsYes(ValueOrEmpty(table, "enable"))) continue;
    devices.push_back({ValueOrEmpty(table, "desc"), Util::MACAddress(ValueOrEmpty(table, "mac"))});
  }
  return devices;
}

std::vector<MACFilterProfile> BuildMACFilterProfiles() {
  try {
    // Only the exact word keeps the guest network out: a missing policy counts as filtering.
    const bool has_guest_copies = ReadPolicy(true) != "disabled";
    std::vector<MACFilterProfile> profiles;
    for (const FilterList& list : kFilterLists) {
      if (!std::filesystem::exists(list.file)) continue;
      std::vector<MACFilterDevice> devices = ReadMACFilterDevices(list.file);
      if (devices.empty()) continue;
      if (has_guest_copies) {
        AppendProfile(profiles, list.primary_name, list.policy, devices);
        AppendProfile(profiles, list.guest_name, list.policy, std::move(devices));
      } else {
        AppendProfile(profiles, list.primary_name, list.policy, std::move(devices));
      }
    }
    return profiles;
  } catch (...) {
    return {};
  }
}

std::int32_t FindMACFilterProfileId(const std::vector<MACFilterProfile>& profiles, bool is_guest) {
  const std::string policy = ReadPolicy(is_guest);
  for (const FilterList& list : kFilterLists) {
    if (policy != list.word) continue;
    const std::string_view wanted = is_guest ? list.guest_name : list.primary_name;
    for (const MACFilterProfile& profile : profiles) {
      if (profile.name == wanted) return profile.id;
    }
  }
  return -1;
}

}  // namespace KELP::Wifi::Updater
