#include "lab/household/settings.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "lab/household/legacy_words.h"
#include "lab/household/match.h"
#include "lab/household/message_kinds.h"
#include "lab/household/rotation_date.h"
#include "lab/household/rules.h"
#include "lab/household/schemas.h"
#include "lab/household/settings_table.h"

namespace lab {
namespace {

constexpr int kBand2_4GHz = 1;
constexpr int kOpen = 0;
constexpr int kOWE = 1;
constexpr int kForced40MHz = 1;

const std::string kRotate = "pwd_rotate_";

/// Where the settings of a table are on a device.
struct Place {
  const RunView& view;
  std::string file;
  /// The document's object, and what it says of its members.
  const Json::Value& object;
  const Json::Value& properties;
  const NetworkView* network = nullptr;
  const RadioView* radio = nullptr;
  bool was_on = true;
  /// Whether a setting that is not stored is missed here.
  bool is_in_use = true;

  StoredValue Stored(std::string_view key) const {
    return view.Stored(file, network != nullptr ? network->Key(key) : std::string(key));
  }
};

const Json::Value& MemberOf(const Json::Value& object, const std::string& name) {
  return object.isObject() ? object[name] : Json::Value::nullSingleton();
}

bool IsRelevant(const SettingRow& row, const Place& place) {
  const Json::Value& record = place.radio != nullptr ? *place.radio->now : place.object;
  const int security = NumberIn(record, "security", kOpen);
  switch (row.relevance) {
    case Relevance::Always:
      return true;
    case Relevance::NeedsSecret:
      return security != kOpen && security != kOWE;
    case Relevance::Enterprise:
      return IsEnterprise(security);
    case Relevance::Scheduled:
      return FlagIn(record, "schedule_enabled");
    case Relevance::Rotating:
      return FlagIn(place.object, "enable");
    case Relevance::RotationStored:
      return place.Stored(row.key).value || place.view.HasKeyWithPrefix(place.file, "guest_" + kRotate);
    case Relevance::Mailing:
      return FlagIn(place.object, "enable") && FlagIn(place.object, "notify_enable");
    case Relevance::WPSByPin:
      return FlagIn(place.object, "enabled") && FlagIn(place.object, "pin_enabled");
    case Relevance::DetectionOn:
      return FlagIn(place.object, "enabled");
    case Relevance::NotARepeater: {
      const Json::Value* const global = place.view.Document("global.json");
      return global == nullptr || !FlagIn(MemberOf(*global, "meshInfo"), "isRepeater");
    }
  }
  return true;
}

/// "off", "kept out", "WPA2": what is there instead of a value that is not stored.
std::string DefaultText(const SettingRow& row, const Setting& setting) {
  if (!setting.Meaning().empty()) return setting.Meaning();
  const Json::Value& now = setting.now;
  if (row.form == Form::Refusal) return now == true ? "kept out" : "let in";
  if (now.isBool()) return now.asBool() ? "on" : "off";
  if (now.isInt()) return std::to_string(now.asInt());
  if (row.form == Form::Hour || row.form == Form::Minute) return "0";
  if (row.form == Form::Secret || !now.isString() || now.asString().empty()) return "none";
  return row.relevance == Relevance::WPSByPin ? "the device's own" : now.asString();
}

bool IsSecret(const SettingRow& row) {
  return row.form == Form::Secret || row.relevance == Relevance::WPSByPin;
}

/// The rest of a name that ends at a NUL.
bool IsCutName(const SettingRow& row, const Setting& setting) {
  return row.form == Form::Name && setting.now.isString() && !setting.now.asString().empty();
}

std::string LostDetail(const SettingRow& row, const StoredValue& stored, const Setting& setting) {
  if (IsSecret(row) || IsCutName(row, setting)) return stored.DetailWithoutValue();
  const bool is_number = row.form == Form::Number || row.form == Form::Channel;
  return stored.Detail() + (is_number ? " is now " + std::to_string(setting.now.asInt()) : "");
}

/// A port that is none leaves no server; another one that is not read whole is a wrong number.
std::string_view LostFinding(const SettingRow& row, const Setting& setting) {
  if (IsCutName(row, setting)) return "ssid-cut";
  const bool is_other_number = row.form == Form::Number && setting.now != 0;
  return row.relevance == Relevance::Enterprise && is_other_number ? "number-unreadable" : row.lost;
}

Observations Observe(const SettingRow& row, const StoredValue& stored, const Setting& setting,
                     const Place& place) {
  if (!IsRelevant(row, place)) return {};
  const auto cause = [&] { return CauseInFile(place.view, place.file, stored.has_carriage_return); };
  switch (MatchOf(row, stored, setting.now)) {
    case Match::AsMeant:
      break;
    case Match::ByLuck:
      return {{kReadByLuck, IsSecret(row) ? stored.DetailWithoutValue() : stored.Detail()}};
    case Match::NotStored:
      if (row.not_stored.empty() || !place.was_on || !place.is_in_use) break;
      return {{row.not_stored,
               stored.DetailWithoutValue() + " is not stored; now " + DefaultText(row, setting), cause()}};
    case Match::Lost: {
      const std::string_view lost = LostFinding(row, setting);
      const std::string detail = LostDetail(row, stored, setting);
      return {{place.was_on ? lost : kOffNetworkDamaged, detail, cause()}};
    }
  }
  return {};
}

/// The key by which the row's value is stored in this place; empty if there is none.
std::string KeyOf(const SettingRow& row, const Place& place) {
  if (row.key == nullptr) return "";
  if (place.network == nullptr) return row.key;
  if (row.form == Form::Refusal && !place.network->is_guest) return "";
  const bool is_enterprise =
      place.radio != nullptr && IsEnterprise(NumberIn(*place.radio->now, "security", kOpen));
  if (row.form == Form::Secret && is_enterprise) return place.network->Key("auth_server_shared_secret");
  return place.network->Key(row.key);
}

Setting Describe(const SettingRow& row, const Place& place) {
  const std::string name(row.member);
  Setting setting{name, &place.properties[name]};
  setting.now = MemberOf(place.object, name);
  setting.key = KeyOf(row, place);
  if (setting.key.empty()) return setting;
  setting.file = place.file;
  setting.was = place.view.LegacyValue(place.file, setting.key);
  return setting;
}

/// The rows that the table judges by itself.
std::vector<Setting> ReadRows(std::span<const SettingRow> rows, const Place& place) {
  std::vector<Setting> settings;
  settings.reserve(rows.size());
  for (const SettingRow& row : rows) {
    if (!row.member.empty()) settings.push_back(Describe(row, place));
    Setting& setting = settings.back();
    const std::string key = KeyOf(row, place);
    if (key.empty() || row.form == Form::Rule || !place.view.IsWholeMigration()) continue;
    for (Observation& found : Observe(row, place.view.Stored(place.file, key), setting, place)) {
      setting.observations.push_back(std::move(found));
    }
  }
  return settings;
}

Setting& Find(std::vector<Setting>& settings, std::string_view member) {
  return *std::ranges::find(settings, member, &Setting::member);
}

/// The schedule's date has its time with it, which is stored under keys of its own.
void AddTime(const Place& place, Setting& date) {
  const auto hour = place.Stored(kRotate + "hour").value;
  const auto minute = place.Stored(kRotate + "minute").value;
  if (FlagIn(place.object, "enable") && place.view.IsWholeMigration() && date.now.isString() &&
      !IsInCalendar(date.now.asString())) {
    const std::string detail =
        place.Stored(kRotate + "date").DetailWithoutValue() + " is now " + date.now.asString();
    date.observations.push_back({place.was_on ? "rotation-date-impossible" : kOffNetworkDamaged, detail});
  }
  if (date.was || hour || minute) {
    date.was = date.was.value_or("") + " " + hour.value_or("") + ":" + minute.value_or("");
  }
}

/// Only the guest network's schedule is read from the legacy files.
std::vector<Setting> ReadRotation(const Place& network) {
  const Json::Value& rotation = MemberOf(*network.radio->now, "guestPasswordRotation");
  Place place{network.view,    network.file,  rotation,       Properties("network", "rotation"),
              network.network, network.radio, network.was_on, network.is_in_use};
  std::vector<Setting> settings;
  if (network.network->is_guest) {
    settings = ReadRows(RotationRows(), place);
    AddTime(place, Find(settings, "date"));
  } else {
    for (const SettingRow& row : RotationRows()) {
      if (row.member.empty()) continue;
      const std::string name(row.member);
      settings.push_back({name, &place.properties[name]});
      settings.back().now = MemberOf(rotation, name);
    }
  }
  for (Setting& setting : settings) setting.member.insert(0, "guestPasswordRotation.");
  return settings;
}

/// With smart connect all bands have one record that is in use, otherwise each radio has its own.
bool IsInUse(const NetworkView& network, const RadioView& radio) {
  return (radio.frequency == 0) == FlagIn(*network.now, "smartConnect");
}

HouseholdSettings::Radio ReadNetworkRadio(const RunView& view, const NetworkView& network,
                                          const RadioView& radio) {
  HouseholdSettings::Radio read{&radio, WasEnabled(view, network, radio)};
  const Place place{view,     radio.file, *radio.now,  Properties("network", "feature"),
                    &network, &radio,     read.was_on, IsInUse(network, radio)};
  read.settings = ReadRows(NetworkRows(), place);
  for (Setting& setting : ReadRotation(place)) read.settings.push_back(std::move(setting));
  return read;
}

HouseholdSettings::Network ReadNetwork(const RunView& view, const NetworkView& network) {
  HouseholdSettings::Network read{&network};
  const std::string all_bands = network.radios.front().file;
  for (const SettingRow& row : WholeNetworkRows()) {
    const bool is_filter = row.form == Form::Rule;
    const std::string file =
        !is_filter ? all_bands : (network.is_guest ? kGuestPolicyFile : kPrimaryPolicyFile);
    const Place place{view, file, *network.now, Properties("network", "network")};
    SettingRow own = row;
    if (!is_filter && network.is_guest) own.key = "smartconnect_guest_enabled";
    read.settings.push_back(ReadRows({&own, 1}, place).front());
    if (is_filter && view.IsWholeMigration()) {
      read.settings.back().observations = ObserveFilter(view, network);
    }
  }
  for (const RadioView& radio : network.radios) read.radios.push_back(ReadNetworkRadio(view, network, radio));
  return read;
}

/// Whether a radio's own word says something else than counts now. A power that is not known says nothing.
bool IsDecidedElsewhere(const Setting& setting) {
  const std::string own = setting.was.value_or("");
  if (setting.now.isBool()) return (own == "yes") != setting.now.asBool();
  return (own == "low" || own == "medium" || own == "high") && own != setting.Meaning();
}

/// With smart connect a radio's power and DFS are those of the all-bands file.
void LetAllBandsDecide(const RunView& view, const SettingRow& row, Setting& setting) {
  const Place all_bands{view, kAllBandsFile, Json::Value::nullSingleton(), *setting.property};
  setting.decided_elsewhere = IsDecidedElsewhere(setting);
  setting.observations = Observe(row, view.Stored(kAllBandsFile, row.key), setting, all_bands);
  if (!setting.decided_elsewhere) return;
  setting.observations.push_back(
      {"smart-connect-decides", view.Stored(setting.file, setting.key).Detail() + ", all bands " +
                                    setting.key + "=" +
                                    view.LegacyValue(kAllBandsFile, setting.key).value_or("")});
}

/// 40 MHz that are forced at 2.4 GHz make the bandwidth's own word one that nobody reads.
void ForceBandwidth(const Place& place, Setting& bandwidth) {
  const StoredValue forced = place.view.Stored(place.file, "force_24g_40mhz");
  if (!forced.value || LooksOff(*forced.value)) return;
  if (bandwidth.now == kForced40MHz) {
    bandwidth.key = forced.key;
    bandwidth.was = forced.value;
    bandwidth.observations.clear();
    return;
  }
  bandwidth.observations = {
      {"flag-unknown", forced.Detail(), CauseInFile(place.view, place.file, forced.has_carriage_return)}};
}

HouseholdSettings::Radio ReadRadio(const RunView& view, const RadioView& radio) {
  HouseholdSettings::Radio read{&radio};
  const Place place{view, radio.file, *radio.now, Properties("radio", "radio")};
  const bool is_smart = IsSmartConnectOn(view);
  read.settings = ReadRows(RadioRows(), place);
  for (const SettingRow& row : RadioRows()) {
    Setting& setting = Find(read.settings, row.member);
    const bool is_shared = row.member == "txPower" || row.member == "allowDFSChannels";
    if (!view.IsWholeMigration()) continue;
    if (is_shared && is_smart) LetAllBandsDecide(view, row, setting);
    if (row.member == "bandwidth" && radio.frequency == kBand2_4GHz) ForceBandwidth(place, setting);
    if (row.member == "usb3Enabled" && view.Logged(kUSB3Unreadable)) {
      setting.observations.push_back({"usb3-unreadable", "the boot environment cannot be read"});
    }
  }
  return read;
}

/// The switch is in the radios' files, of which the first that is on decides.
Observations ObserveWPS(const RunView& view) {
  const SettingRow row{"enabled", "ap_enable_wps", Form::Flag, "flag-unknown"};
  Observations observations;
  for (const std::string& file : WPSFiles(view)) {
    const Json::Value nothing;
    Setting own{"enabled"};
    own.now = view.LegacyValue(file, row.key) == "yes";
    const Place place{view, file, nothing, nothing};
    for (Observation& found : Observe(row, view.Stored(file, row.key), own, place)) {
      observations.push_back(std::move(found));
    }
  }
  return observations;
}

std::vector<Setting> ReadWPS(const RunView& view) {
  const Json::Value* const wps = view.Document("wps.json");
  if (wps == nullptr) return {};
  std::vector<Setting> settings = ReadRows(WPSRows(), {view, kWPSFile, *wps, Properties("wps", "")});
  if (view.IsWholeMigration()) settings.front().observations = ObserveWPS(view);
  return settings;
}

/// The rows of a document whose members may be in groups: "meshInfo.isRepeater".
void ReadGroups(std::span<const SettingRow> rows, const RunView& view, const std::string& file,
                const std::string& name, std::vector<Setting>& settings) {
  const Json::Value* const document = view.Document(name + ".json");
  if (document == nullptr || !document->isObject()) return;
  for (const SettingRow& row : rows) {
    const std::size_t dot = row.member.find('.');
    const bool has_group = dot != std::string_view::npos;
    const std::string group(row.member.substr(0, has_group ? dot : 0));
    SettingRow own = row;
    own.member = row.member.substr(has_group ? dot + 1 : 0);
    // Only a whole migration takes these from the legacy files.
    if (!view.IsWholeMigration()) own.key = nullptr;
    const Json::Value& properties = Properties(name, "");
    const Place place{view, has_group && group == "broadcastDetect" ? kBroadcastFile : file,
                      has_group ? (*document)[group] : *document,
                      has_group ? properties[group]["properties"] : properties};
    settings.push_back(ReadRows({&own, 1}, place).front());
    if (group == "broadcastDetect") settings.back().member = row.member;
  }
}

std::vector<Setting> ReadDevice(const RunView& view) {
  std::vector<Setting> settings;
  ReadGroups(GlobalRows(), view, kInformationStore, "global", settings);
  if (!settings.empty()) {
    Find(settings, "connectedModels").observations = ObserveMeshRole(view);
    Find(settings, "isRepeater").observations = ObserveRepeater(view);
  }
  ReadGroups(MiscRows(), view, kInformationStore, "misc", settings);
  // Detection is on only with a threshold that can be read.
  for (Setting& setting : settings) {
    for (Observation& found : setting.observations) {
      if (found.id == "broadcast-detection-off") {
        found.detail += ", " + view.Stored(kBroadcastFile, "broadcast_threshold").Detail();
      }
    }
  }
  return settings;
}

}  // namespace

std::string Setting::Title() const {
  return property == nullptr ? "" : lab::Title(*property);
}

std::string Setting::Meaning() const {
  return property == nullptr ? "" : lab::Meaning(*property, now);
}

bool Setting::IsLost() const {
  return std::ranges::any_of(observations, [](const Observation& found) {
    return found.id != kReadByLuck && found.id != "smart-connect-decides";
  });
}

const Setting* FindSetting(const std::vector<Setting>& settings, std::string_view member) {
  const auto found = std::ranges::find(settings, member, &Setting::member);
  return found == settings.end() ? nullptr : &*found;
}

bool IsSmartConnectOn(const RunView& view) {
  return std::ranges::any_of(view.Networks(), [](const NetworkView& network) {
    return !network.is_guest && FlagIn(*network.now, "smartConnect");
  });
}

std::vector<std::string> WPSFiles(const RunView& view) {
  if (IsSmartConnectOn(view)) return {kAllBandsFile};
  std::vector<std::string> files;
  files.reserve(view.Radios().size());
  for (const RadioView& radio : view.Radios()) {
    files.push_back(radio.file);
    if (view.LegacyValue(radio.file, "ap_enable_wps") == "yes") break;
  }
  return files;
}

bool WasEnabled(const RunView& view, const NetworkView& network, const RadioView& radio) {
  const StoredValue enabled = view.Stored(radio.file, network.Key("enabled"));
  if (enabled.value) return !LooksOff(*enabled.value);
  return !view.Stored(radio.file, network.Key("ssid")).Word().empty();
}

HouseholdSettings ReadSettings(const RunView& view) {
  HouseholdSettings settings;
  settings.device = ReadDevice(view);
  for (const NetworkView& network : view.Networks()) settings.networks.push_back(ReadNetwork(view, network));
  for (const RadioView& radio : view.Radios()) settings.radios.push_back(ReadRadio(view, radio));
  settings.wps = ReadWPS(view);
  BlameSecretKey(view, settings);
  return settings;
}

}  // namespace lab
