#include "builders/mac_filter_profiles.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/log.h"
#include "legacy/legacy_value.h"
#include "platform/mac_address.h"
#include "platform/records/mac_filter.h"
#include "platform/section_files.h"

namespace KELP::Wifi::Updater {
namespace {

constexpr std::size_t kCapacity = 8192;

constexpr const char* kPrimaryFilter = "/etc/hostapd/mac_filter/mf.info";
constexpr const char* kGuestFilter = "/etc/hostapd/mac_filter/mf_guest.info";

using Policy = decltype(MACFilterProfile::policy);
constexpr auto kAllow = static_cast<Policy>(0);
constexpr auto kDeny = static_cast<Policy>(1);

/// One legacy device list and the profiles that are made of it.
struct FilterList {
  const char* file;
  std::string_view word;  // by which a network's policy selects it
  Policy policy;
  const char* primary_name;
  const char* guest_name;
};
constexpr std::array kFilterLists{
    FilterList{"/etc/hostapd/mac_filter/mf_deny.conf", "deny", kDeny, "Primary Network - Deny",
               "Guest Network - Deny"},
    FilterList{"/etc/hostapd/mac_filter/mf_allow.conf", "allow", kAllow, "Primary Network - Allow",
               "Guest Network - Allow"},
};

/// The section files' interfaces take a handle by its address and may put another in its place.
struct SectionNames {
  KLIBCSzList* list = KLIBCSzListAlloc(kCapacity);

  SectionNames() = default;
  SectionNames(const SectionNames&) = delete;
  SectionNames& operator=(const SectionNames&) = delete;
  ~SectionNames() { KLIBCSzListFree(list); }
};
struct SectionEntries {
  KLIBCSzHash* table = KLIBCSzHashAlloc(kCapacity);

  SectionEntries() = default;
  SectionEntries(const SectionEntries&) = delete;
  SectionEntries& operator=(const SectionEntries&) = delete;
  ~SectionEntries() { KLIBCSzHashFree(table); }

  const char* ValueOrEmpty(const char* key) const {
    const char* const value = KLIBCSzHashGetValue(table, key);
    return value == nullptr ? "" : value;
  }
};

std::string ReadPolicy(bool is_guest) {
  return ReadLegacyValue(is_guest ? kGuestFilter : kPrimaryFilter, "policy", "");
}

void AppendProfile(std::vector<MACFilterProfile>& profiles, const char* name, Policy policy,
                   std::vector<MACFilterDevice> devices) {
  MACFilterProfile profile;
  profile.id = static_cast<std::int32_t>(profiles.size());
  profile.name = name;
  profile.policy = policy;
  profile.devices = std::move(devices);
  profiles.push_back(std::move(profile));
}

}  // namespace

std::vector<MACFilterDevice> ReadMACFilterDevices(const std::string& path) {
  SectionNames sections;
  SectionEntries section;
  if (sections.list == nullptr || section.table == nullptr) {
    Log(LOG_ERR, "%s:%d Failed to allocate memory", 524);
    return {};
  }

  const int count = KLIBCFileEnumSection(path.c_str(), &sections.list);
  if (count < 0) {
    Log(LOG_ERR, "%s:%d Failed to enum section from %s", 530, path.c_str());
    return {};
  }

  std::vector<MACFilterDevice> devices;
  for (int index = 0; index < count; ++index) {
    const char* const name = KLIBCSzListGet(sections.list, index);
    if (KLIBCFileGetSection(path.c_str(), name, &section.table) <= 0) continue;
    if (!IsYes(section.ValueOrEmpty("enable"))) continue;
    devices.push_back({section.ValueOrEmpty("desc"), Util::MACAddress(section.ValueOrEmpty("mac"))});
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
