// Holds docs/migration-map.md to what an experiment finds on the sample devices for everything that is no
// access-point file.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "lab/experiments/effects.h"
#include "lab/experiments/inputs.h"
#include "lab/images/image.h"
#include "lab/images/tree.h"
#include "tests/lab/experiments/migration_map.h"

namespace lab_test {
namespace {

/// What removing and changing an input does, on any sample.
struct Observed {
  /// Members of global.json and misc.json, their paths without places in lists.
  Names members;
  /// Names of members that radios and their networks have.
  Names members_of_radios;
  bool ends_the_update = false;
  bool is_used = false;
};

/// By file, without its folders, and key. Of a whole file that is removed the key is empty.
using Observations = std::map<std::pair<std::string, std::string>, Observed>;

std::string FileName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

/// "[station_0] mac" is `mac`.
std::string KeyOf(const std::string& entry) {
  const std::size_t section = entry.find("] ");
  return section == std::string::npos ? entry : entry.substr(section + 2);
}

bool IsOfRadios(const std::string& member) {
  return !member.starts_with("global.json") && !member.starts_with("misc.json");
}

/// "global.json.meshInfo.isRepeater" is `meshInfo.isRepeater`, "misc.json.macFilterProfiles[1].devices" is
/// `macFilterProfiles`, "radio.json[0].mode" is `mode`.
std::string NameOf(const std::string& member) {
  if (IsOfRadios(member)) return member.substr(member.find_last_of("/.") + 1);
  const std::string path = member.substr(member.find(".json.") + 6);
  return path.substr(0, path.find('['));
}

void Add(const lab::Effect& effect, Observed& observed) {
  for (const std::string& member : effect.members) {
    (IsOfRadios(member) ? observed.members_of_radios : observed.members).insert(NameOf(member));
  }
  observed.is_used = observed.is_used || !effect.IsNone();
  for (const std::string& what : effect.otherwise) {
    observed.ends_the_update = observed.ends_the_update || what.starts_with("the update ends with");
  }
}

bool IsAccessPointFile(const std::string& path) {
  return path.find("/wifi_ap_") != std::string::npos;
}

/// The inputs but those of access-point files; of a filter list those of its first device. With them every
/// file of the household as a whole.
std::vector<lab::Input> OtherInputsOf(const lab::Tree& device) {
  std::vector<lab::Input> inputs = lab::InputsOf(device);
  std::erase_if(inputs, [](const lab::Input& input) {
    const bool is_of_device = input.entry.starts_with("[");
    return IsAccessPointFile(input.file) || (is_of_device && !input.entry.starts_with("[station_0]"));
  });
  Names files;
  for (const lab::Input& input : inputs) files.insert(input.file);
  for (const std::string& file : files) {
    const bool is_whole = std::ranges::any_of(
        inputs, [&](const lab::Input& input) { return input.file == file && input.entry.empty(); });
    if (!is_whole) inputs.push_back({file, "", {{file, std::nullopt}}});
  }
  return inputs;
}

Observations Observe(const std::vector<std::string>& devices, const std::string& from) {
  Observations observations;
  for (const std::string& device : devices) {
    const std::string image = std::string(KELP_SOURCE "/devices/") + device;
    const std::vector<lab::Input> inputs = OtherInputsOf(lab::ReadTree(image));
    for (const lab::Effect& effect : lab::FindEffects(lab::ReadImage(image), inputs, KELP_PROGRAM, from, 2)) {
      Add(effect, observations[{FileName(effect.file), KeyOf(effect.entry)}]);
    }
  }
  return observations;
}

/// Before generation 1.3, and of it.
const Observations& Of125() {
  static const Observations kObservations = Observe(
      {"dual-band-bridge", "dual-band-standalone", "tri-band-mesh-router", "tri-band-repeater"}, "8000");
  return kObservations;
}

const Observations& Of13() {
  static const Observations kObservations = Observe({"release-13-mesh"}, "9000");
  return kObservations;
}

/// The keys of a file that have an effect.
Names UsedKeys(const Observations& observations, const std::string& file) {
  Names keys;
  for (const auto& [input, observed] : observations) {
    if (input.first == file && observed.is_used && !input.second.empty()) keys.insert(input.second);
  }
  return keys;
}

bool EndsTheUpdate(const Observations& observations, const std::string& file, const std::string& key) {
  const auto found = observations.find({file, key});
  return found != observations.end() && found->second.ends_the_update;
}

/// The fields of a table's row, without the blanks around them.
std::vector<std::string> FieldsOf(const std::string& row) {
  std::vector<std::string> fields;
  for (std::size_t start = 1; start < row.size();) {
    const std::size_t end = row.find('|', start);
    const std::string field = row.substr(start, end - start);
    const std::size_t first = field.find_first_not_of(' ');
    fields.push_back(
        first == std::string::npos ? "" : field.substr(first, field.find_last_not_of(' ') + 1 - first));
    start = end == std::string::npos ? end : end + 1;
  }
  return fields;
}

/// The row of the table of files that names it.
std::vector<std::string> RowOf(const std::string& file) {
  for (const Passage& passage : PassagesOfTheMap()) {
    std::vector<std::string> fields = FieldsOf(passage.text);
    if (fields.size() == 4 && fields[0].find(file + "`") != std::string::npos) return fields;
  }
  ADD_FAILURE() << "the map has no file " << file;
  return std::vector<std::string>(4);
}

// The columns of that table.
constexpr std::size_t kFile = 0;
constexpr std::size_t kReadFor = 1;
constexpr std::size_t kMissing = 2;
constexpr std::size_t kAfterwards = 3;

void ExpectInRow(const std::string& file, std::size_t column, const std::string& text) {
  EXPECT_EQ(RowOf(file).at(column), text) << file;
}

/// That those keys of a file have an effect, and no other.
void ExpectKeys(const Observations& observations, const std::string& file, const Names& keys) {
  EXPECT_EQ(UsedKeys(observations, file), keys) << file;
}

/// Whether the update ends where the file is missing.
void ExpectNeeded(const Observations& observations, const std::string& file, bool is_needed) {
  EXPECT_EQ(EndsTheUpdate(observations, file, ""), is_needed) << file;
  EXPECT_TRUE(observations.at({file, ""}).is_used) << file;
}

void ExpectTheKeysThatAreRead() {
  ExpectKeys(Of125(), "info.conf",
             {"kelpbios", "mesh_network_role", "net_topology", "country_code", "mesh_swap_backhaul_band",
              "wps_pin"});
  ExpectInRow("info.conf", kReadFor,
              "`kelpbios`, `mesh_network_role`, `net_topology`, `country_code`, `mesh_swap_backhaul_band`, "
              "`wps_pin`");
  ExpectKeys(Of125(), "mesh.conf", {"repeater_nodes"});
  ExpectInRow("mesh.conf", kReadFor, "`repeater_nodes`");
  ExpectKeys(Of125(), "uboot.env", {"usb3_disable"});
  ExpectInRow("fw_env.config", kReadFor, "`usb3_disable`");
  for (const char* file : {"lbd.conf", "lbd.guest.conf", "wifi_nvram"}) {
    ExpectKeys(Of125(), file, {});
    ExpectInRow(file, kReadFor, "nothing");
  }
}

/// Of generation 1.3 nobody reads them.
void ExpectKernelEntry(int number, bool is_read) {
  const std::pair<std::string, std::string> entry{"kelp_mac_address" + std::to_string(number), ""};
  EXPECT_EQ(Of125().at(entry).is_used, is_read) << number;
  EXPECT_EQ(Of125().at(entry).ends_the_update, is_read) << number;
  EXPECT_FALSE(Of13().at(entry).is_used) << number;
}

void ExpectTheKernelEntries() {
  for (const int number : {0, 1, 2}) ExpectKernelEntry(number, false);
  for (const int number : {3, 4, 5}) ExpectKernelEntry(number, true);
  ExpectInRow("kelp_mac_address3", kFile,
              "`/proc/sys/kernel/kelp_mac_address3`, `4`, `5` (`4`, `5` on `orchid`)");
  ExpectInRow("kelp_mac_address3", kMissing, "stops the run");
}

void ExpectWhichFilesHaveToBeThere() {
  for (const char* file :
       {"lbd.conf", "lbd.guest.conf", "wifi_nvram", "wifi_wps", "mf.info", "mf_guest.info", "mf.setting"}) {
    ExpectNeeded(Of125(), file, true);
    ExpectInRow(file, kAfterwards, "archived, stops the archive when missing");
  }
  for (const char* file : {"mesh.conf", "mf_deny.conf", "mf_allow.conf", "secret.key", "uboot.env"}) {
    ExpectNeeded(Of125(), file, false);
  }
  ExpectInRow("mf_deny.conf", kAfterwards, "stay");
  for (const char* file : {"mesh.conf", "secret.key", "fw_env.config", "info.conf"}) {
    ExpectInRow(file, kAfterwards, "stays");
  }
}

void ExpectWhichKeysHaveToBeThere() {
  Names needed;
  for (const auto& [input, observed] : Of125()) {
    if (input.first == "info.conf" && observed.ends_the_update) needed.insert(input.second);
  }
  // With another role there are other radios, which may have no files.
  EXPECT_EQ(needed, (Names{"", "kelpbios", "wps_pin", "mesh_network_role"}));
  ExpectInRow("info.conf", kMissing, "the model and, below 8228, the PIN stop the run");
}

void ExpectWhatGeneration13Reads() {
  Names used;
  for (const auto& [input, observed] : Of13()) {
    if (observed.is_used) used.insert(input.first);
  }
  EXPECT_EQ(used, (Names{"model.json", "country.json", "backhaul.json", "mesh_role.conf", "info.conf"}));
  ExpectKeys(Of13(), "info.conf", {"kelpbios", "mesh_network_role"});
  for (const char* file : {"model.json", "country.json", "backhaul.json"}) ExpectNeeded(Of13(), file, true);
  ExpectNeeded(Of13(), "mesh_role.conf", false);

  const auto passages = PassagesOfTheMap();
  const auto builds = std::ranges::find_if(
      passages, [](const Passage& passage) { return passage.text.starts_with("Builds 8228 to 9224 read"); });
  ASSERT_NE(builds, passages.end());
  EXPECT_THAT(builds->names, ::testing::IsSupersetOf({"/usr/kelp/etc/wifi/model.json", "country.json",
                                                      "backhaul.json", "/usr/kelp/etc/mesh/mesh_role.conf",
                                                      "kelpbios", "mesh_network_role"}));
}

bool StandTogether(const std::vector<Passage>& passages, const std::string& key, const std::string& member) {
  return std::ranges::any_of(passages, [&](const Passage& passage) {
    return passage.names.contains(key) && passage.names.contains(member);
  });
}

/// Each member that an input moves stands in a passage with the input's key.
void ExpectOnTheMap(const Observations& observations) {
  const auto passages = PassagesOfTheMap();
  const auto radios = std::ranges::find_if(
      passages, [](const Passage& passage) { return passage.text.starts_with("`orchid` outside a mesh"); });
  ASSERT_NE(radios, passages.end());
  for (const auto& [input, observed] : observations) {
    const auto& [file, key] = input;
    // A kernel entry, a secret key and a whole file move all that is read with their help.
    if (key.empty()) continue;
    Names members = observed.members;
    // What decides which radios there are moves all that they have.
    if (!radios->names.contains(key))
      members.insert(observed.members_of_radios.begin(), observed.members_of_radios.end());
    for (const std::string& member : members) {
      EXPECT_TRUE(StandTogether(passages, key, member))
          << key << " of " << file << " moves " << member << ", of which the map says nothing";
    }
  }
}

struct Moved {
  const char* file;
  const char* key;
  Names members;
};

/// That each key moves those members, and of global.json and misc.json no others; where it moves none of
/// them, no others of radios and networks.
void ExpectMoves(const Observations& observations, const std::vector<Moved>& moves) {
  for (const Moved& moved : moves) {
    const Observed& observed = observations.at({moved.file, moved.key});
    EXPECT_EQ(observed.members.empty() ? observed.members_of_radios : observed.members, moved.members)
        << moved.key << " of " << moved.file;
  }
}

void ExpectWhatKeysMove() {
  const Names profiles{"macFilterProfiles"};
  ExpectMoves(
      Of125(),
      {{"info.conf", "mesh_network_role", {"meshInfo.isRepeater", "meshInfo.connectedModels", "netTopology"}},
       {"info.conf", "kelpbios", {"defaultModel"}},
       {"info.conf", "net_topology", {"netTopology"}},
       {"info.conf", "country_code", {"countryCodeSetting.countryCode"}},
       {"info.conf", "mesh_swap_backhaul_band", {"backhaulSwapped"}},
       {"mesh.conf", "repeater_nodes", {"meshInfo.connectedModels"}},
       {"uboot.env", "usb3_disable", {"usb3Enabled"}},
       {"wifi_wps", "is_wps_ap_pin_enabled", {"pin_enabled"}},
       {"wifi_wps", "wps_ap_pin", {"pin"}},
       {"mf.info", "policy", {"mac_filter_profile_id"}},
       {"mf.setting", "broadcast_detect_enabled", {"broadcastDetect.enabled"}},
       {"mf.setting", "broadcast_threshold", {"broadcastDetect.enabled", "broadcastDetect.threshold"}},
       {"mf_deny.conf", "enable", profiles},
       {"mf_deny.conf", "desc", profiles},
       {"mf_deny.conf", "mac", profiles}});
  ExpectMoves(Of13(), {{"info.conf", "kelpbios", {"defaultModel"}},
                       {"model.json", "connected_models", {"meshInfo.connectedModels"}},
                       {"mesh_role.conf", "role", {"meshInfo.isRepeater"}},
                       {"country.json", "country_code", {"countryCodeSetting.countryCode"}},
                       {"backhaul.json", "radio_frequencies", {"backhaulSwapped"}}});
}

// One test, since each would make the experiments anew.
TEST(MigrationMap, IsWhatAnExperimentFindsOfOtherInputs) {
  ExpectTheKeysThatAreRead();
  ExpectTheKernelEntries();
  ExpectWhichFilesHaveToBeThere();
  ExpectWhichKeysHaveToBeThere();
  ExpectWhatGeneration13Reads();
  ExpectWhatKeysMove();
  ExpectOnTheMap(Of125());
  ExpectOnTheMap(Of13());
}

}  // namespace
}  // namespace lab_test
