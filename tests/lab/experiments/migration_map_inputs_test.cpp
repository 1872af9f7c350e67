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
#include "lab/images/tree.h"
#include "tests/lab/experiments/migration_map.h"

namespace lab_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

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
    for (const lab::Effect& effect : lab::FindEffects(image, inputs, KELP_PROGRAM, from, 2)) {
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
    const std::vector<std::string> fields = FieldsOf(passage.text);
    if (fields.size() == 4 && fields[0].find(file + "`") != std::string::npos) return fields;
  }
  ADD_FAILURE() << "the map has no file " << file;
  return std::vector<std::string>(4);
}

void ExpectTheKeysThatAreRead() {
  const Names keys = UsedKeys(Of125(), "info.conf");
  EXPECT_THAT(keys, UnorderedElementsAre("kelpbios", "mesh_network_role", "net_topology", "country_code",
                                         "mesh_swap_backhaul_band", "wps_pin"));
  for (const std::string& key : keys) {
    EXPECT_NE(RowOf("info.conf").at(1).find("`" + key + "`"), std::string::npos) << key;
  }
  EXPECT_THAT(UsedKeys(Of125(), "mesh.conf"), ElementsAre("repeater_nodes"));
  EXPECT_EQ(RowOf("mesh.conf").at(1), "`repeater_nodes`");
  EXPECT_THAT(UsedKeys(Of125(), "uboot.env"), ElementsAre("usb3_disable"));
  EXPECT_EQ(RowOf("fw_env.config").at(1), "`usb3_disable`");
  for (const char* file : {"lbd.conf", "lbd.guest.conf", "wifi_nvram"}) {
    EXPECT_THAT(UsedKeys(Of125(), file), IsEmpty()) << file;
    EXPECT_EQ(RowOf(file).at(1), "nothing") << file;
  }
}

void ExpectTheKernelEntries() {
  for (int number = 0; number < 6; ++number) {
    const std::string entry = "kelp_mac_address" + std::to_string(number);
    EXPECT_EQ(Of125().at({entry, ""}).is_used, number >= 3) << entry;
    EXPECT_EQ(EndsTheUpdate(Of125(), entry, ""), number >= 3) << entry;
    EXPECT_FALSE(Of13().at({entry, ""}).is_used) << entry;
  }
  EXPECT_EQ(RowOf("kelp_mac_address3").at(0),
            "`/proc/sys/kernel/kelp_mac_address3`, `4`, `5` (`4`, `5` on `orchid`)");
  EXPECT_EQ(RowOf("kelp_mac_address3").at(2), "stops the run");
}

void ExpectWhichFilesHaveToBeThere() {
  for (const char* file :
       {"lbd.conf", "lbd.guest.conf", "wifi_nvram", "wifi_wps", "mf.info", "mf_guest.info", "mf.setting"}) {
    EXPECT_TRUE(EndsTheUpdate(Of125(), file, "")) << file;
    EXPECT_EQ(RowOf(file).at(3), "archived, stops the archive when missing") << file;
  }
  for (const char* file : {"mesh.conf", "mf_deny.conf", "mf_allow.conf", "secret.key", "uboot.env"}) {
    EXPECT_FALSE(EndsTheUpdate(Of125(), file, "")) << file;
    EXPECT_TRUE(Of125().at({file, ""}).is_used) << file;
  }
  for (const char* file : {"mesh.conf", "mf_deny.conf", "secret.key", "fw_env.config", "info.conf"}) {
    EXPECT_THAT(RowOf(file).at(3), ::testing::AnyOf("stays", "stay")) << file;
  }
  for (const auto& [input, observed] : Of125()) {
    if (input.first != "info.conf" || !observed.ends_the_update) continue;
    // With another role there are other radios, which may have no files.
    EXPECT_THAT(input.second, ::testing::AnyOf("", "kelpbios", "wps_pin", "mesh_network_role"));
  }
  EXPECT_TRUE(EndsTheUpdate(Of125(), "info.conf", "kelpbios"));
  EXPECT_TRUE(EndsTheUpdate(Of125(), "info.conf", "wps_pin"));
  EXPECT_EQ(RowOf("info.conf").at(2), "the model and, below 8228, the PIN stop the run");
}

void ExpectWhatGeneration13Reads() {
  const auto passages = PassagesOfTheMap();
  const auto builds = std::ranges::find_if(
      passages, [](const Passage& passage) { return passage.text.starts_with("Builds 8228 to 9224 read"); });
  ASSERT_NE(builds, passages.end());
  Names used;
  for (const auto& [input, observed] : Of13()) {
    if (observed.is_used) used.insert(input.first);
  }
  EXPECT_THAT(used, UnorderedElementsAre("model.json", "country.json", "backhaul.json", "mesh_role.conf",
                                         "info.conf"));
  for (const char* file : {"/usr/kelp/etc/wifi/model.json", "country.json", "backhaul.json",
                           "/usr/kelp/etc/mesh/mesh_role.conf", "kelpbios", "mesh_network_role"}) {
    EXPECT_TRUE(builds->names.contains(file)) << file;
  }
  EXPECT_THAT(UsedKeys(Of13(), "info.conf"), ElementsAre("kelpbios", "mesh_network_role"));
  for (const char* file : {"model.json", "country.json", "backhaul.json"}) {
    EXPECT_TRUE(EndsTheUpdate(Of13(), file, "")) << file;
  }
  EXPECT_FALSE(EndsTheUpdate(Of13(), "mesh_role.conf", ""));
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

void ExpectTheGlobalDocuments() {
  const auto moves = [](const Observations& observations, const std::string& file, const std::string& key) {
    const Observed& observed = observations.at({file, key});
    return observed.members.empty() ? observed.members_of_radios : observed.members;
  };
  const std::string info = "info.conf";
  EXPECT_THAT(moves(Of125(), info, "kelpbios"), ::testing::Contains("defaultModel"));
  EXPECT_THAT(moves(Of125(), info, "mesh_network_role"),
              UnorderedElementsAre("meshInfo.isRepeater", "meshInfo.connectedModels", "netTopology"));
  EXPECT_THAT(moves(Of125(), info, "net_topology"), ElementsAre("netTopology"));
  EXPECT_THAT(moves(Of125(), info, "country_code"), ElementsAre("countryCodeSetting.countryCode"));
  EXPECT_THAT(moves(Of125(), info, "mesh_swap_backhaul_band"), ElementsAre("backhaulSwapped"));
  EXPECT_THAT(moves(Of125(), "mesh.conf", "repeater_nodes"), ::testing::Contains("meshInfo.connectedModels"));
  EXPECT_THAT(moves(Of125(), "uboot.env", "usb3_disable"), ElementsAre("usb3Enabled"));
  EXPECT_THAT(moves(Of125(), "wifi_wps", "is_wps_ap_pin_enabled"), ElementsAre("pin_enabled"));
  EXPECT_THAT(moves(Of125(), "wifi_wps", "wps_ap_pin"), ElementsAre("pin"));
  EXPECT_THAT(moves(Of125(), "mf.info", "policy"), ElementsAre("mac_filter_profile_id"));
  EXPECT_THAT(moves(Of125(), "mf.setting", "broadcast_detect_enabled"),
              ElementsAre("broadcastDetect.enabled"));
  EXPECT_THAT(moves(Of125(), "mf.setting", "broadcast_threshold"),
              UnorderedElementsAre("broadcastDetect.enabled", "broadcastDetect.threshold"));
  for (const char* key : {"enable", "desc", "mac"}) {
    EXPECT_THAT(moves(Of125(), "mf_deny.conf", key), ::testing::Contains("macFilterProfiles")) << key;
  }
  EXPECT_THAT(moves(Of13(), info, "kelpbios"), ElementsAre("defaultModel"));
  EXPECT_THAT(moves(Of13(), "model.json", "connected_models"), ElementsAre("meshInfo.connectedModels"));
  EXPECT_THAT(moves(Of13(), "mesh_role.conf", "role"), ElementsAre("meshInfo.isRepeater"));
  EXPECT_THAT(moves(Of13(), "country.json", "country_code"), ElementsAre("countryCodeSetting.countryCode"));
  EXPECT_THAT(moves(Of13(), "backhaul.json", "radio_frequencies"), ElementsAre("backhaulSwapped"));
}

// One test, since each would make the experiments anew.
TEST(MigrationMap, IsWhatAnExperimentFindsOfOtherInputs) {
  ExpectTheKeysThatAreRead();
  ExpectTheKernelEntries();
  ExpectWhichFilesHaveToBeThere();
  ExpectWhatGeneration13Reads();
  ExpectTheGlobalDocuments();
  ExpectOnTheMap(Of125());
  ExpectOnTheMap(Of13());
}

}  // namespace
}  // namespace lab_test
