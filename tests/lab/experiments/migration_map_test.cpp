// Holds docs/migration-map.md to what an experiment finds on the access-point files of sample devices.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "lab/experiments/effects.h"
#include "lab/experiments/inputs.h"
#include "lab/images/image.h"
#include "lab/images/tree.h"
#include "tests/lab/experiments/migration_map.h"

namespace lab_test {
namespace {

std::string After(const std::string& text, const std::string& prefix) {
  return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

/// "guest_pwd_rotate_hour" is `hour` in the map, "[station_0] mac" is `mac`.
std::string KeyInTheMap(const std::string& entry) {
  const std::size_t section = entry.find("] ");
  const std::string key = section == std::string::npos ? entry : entry.substr(section + 2);
  return After(After(key, "guest_"), "pwd_rotate_");
}

std::string NameOf(const std::string& path) {
  return path.substr(path.find_last_of("/.") + 1);
}

/// The members that each key of an access-point file moves in the networks and radios, on any sample.
std::map<std::string, Names> Observed() {
  std::map<std::string, Names> observed;
  for (const char* device : {"tri-band-mesh-router", "dual-band-bridge"}) {
    const std::string image = std::string(KELP_SOURCE "/devices/") + device;
    std::vector<lab::Input> inputs = lab::InputsOf(lab::ReadTree(image));
    std::erase_if(inputs,
                  [](const lab::Input& input) { return input.file.find("/wifi_ap_") == std::string::npos; });
    for (const lab::Effect& effect :
         lab::FindEffects(lab::ReadImage(image), inputs, KELP_PROGRAM, "8000", 2)) {
      for (const std::string& member : effect.members) {
        observed[KeyInTheMap(effect.entry)].insert(NameOf(member));
      }
    }
  }
  return observed;
}

bool StandTogether(const std::vector<Passage>& passages, const std::string& key, const std::string& member) {
  for (const Passage& passage : passages) {
    if (passage.names.contains(key) && passage.names.contains(member)) return true;
  }
  return false;
}

/// The members of one name with their key, and which of them a row of their own says more of.
const Names kOfTheirKeysName{"enabled",
                             "display_ssid",
                             "auth_server_ip",
                             "schedule_enabled",
                             "schedule",
                             "ampdu",
                             "uapsd_enable",
                             "ap_mumimo",
                             "ap_enable_11r",
                             "ap_mcast_translating",
                             "country_abbrev_override_enable",
                             "ap_isolation",
                             "enable_ext_nss",
                             "sc_disable_legacy_steering"};

void ExpectEachKeyOnTheMap(const std::vector<Passage>& passages,
                           const std::map<std::string, Names>& observed) {
  for (const auto& [key, members] : observed) {
    for (const std::string& member : members) {
      // "all others | the members' names"
      if (key == member && kOfTheirKeysName.contains(key)) continue;
      EXPECT_TRUE(StandTogether(passages, key, member))
          << key << " moves " << member << ", of which the map says nothing";
    }
  }
  for (const std::string& name : kOfTheirKeysName) {
    ASSERT_TRUE(observed.contains(name)) << name << " moves nothing";
    EXPECT_TRUE(observed.at(name).contains(name)) << name << " does not move its member";
  }
}

void ExpectEachRowToBeTrue(const std::vector<Passage>& passages,
                           const std::map<std::string, Names>& observed) {
  // Each row of the tables of networks, the rotation and radios: its member and its keys.
  const std::map<std::string, Names> rows{
      {"ssid", {"ssid"}},
      {"password", {"password", "auth_server_shared_secret"}},
      {"security", {"security"}},
      {"pmf_mode", {"pmf_mode"}},
      {"max_num_client", {"max_num_client"}},
      {"auth_server_port", {"auth_server_Port"}},
      {"key_rotation", {"key_rotation"}},
      {"dtim", {"dtim"}},
      {"restrict_guest_access", {"allow_access_guest"}},
      {"smartConnect", {"smartconnect_enabled", "smartconnect_guest_enabled"}},
      {"enable", {"enable"}},
      {"notify_enable", {"notify_enable"}},
      {"date_type", {"date_type"}},
      {"strength", {"strength"}},
      {"date", {"date", "hour", "minute"}},
      {"week_day", {"week_day"}},
      {"mail_list", {"mail_list"}},
      {"channel", {"channel"}},
      {"channel2", {"channel2"}},
      {"bandwidth", {"bandwidth", "force_24g_40mhz"}},
      {"mode", {"mode"}},
      {"txPower", {"tx_power"}},
      {"allowDFSChannels", {"allow_dfs_channels"}},
  };
  for (const auto& [member, keys] : rows) {
    for (const std::string& key : keys) {
      EXPECT_TRUE(StandTogether(passages, key, member))
          << "the map has no passage with " << key << " and " << member;
      ASSERT_TRUE(observed.contains(key)) << key << " moves nothing on the samples";
      EXPECT_TRUE(observed.at(key).contains(member)) << key << " does not move " << member;
    }
  }
}

TEST(MigrationMap, IsWhatAnExperimentFinds) {
  const std::vector<Passage> passages = PassagesOfTheMap();
  const std::map<std::string, Names> observed = Observed();
  ExpectEachKeyOnTheMap(passages, observed);
  ExpectEachRowToBeTrue(passages, observed);
}

}  // namespace
}  // namespace lab_test
