// A whole update of a device. Input: the device, as support/device_text.h describes it.
#include <fcntl.h>
#include <json/reader.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "cli/update_handler.h"
#include "fuzz/support/captured_console.h"
#include "fuzz/support/captured_log.h"
#include "fuzz/support/check.h"
#include "fuzz/support/device_text.h"
#include "fuzz/support/input.h"
#include "fuzz/support/plain_text.h"
#include "fuzz/support/private_device.h"
#include "lab/images/tree.h"
#include "lab/runs/collected_documents.h"

namespace {

using lab::Entry;
using lab::Tree;

const std::string kWifi = "/usr/kelp/etc/wifi/";
const std::string kFailure = "Failed to update config, error: ";
constexpr std::int32_t kFirstBuildOf13 = 8228;
constexpr std::int32_t kFirstBuildWithNewConfig = 9225;

fuzz::PrivateDevice& Device() {
  static fuzz::PrivateDevice device;
  return device;
}

/// Where the entry at `path` really stands: links on the way to it followed, but not the entry itself.
std::string Place(const std::string& path) {
  const std::filesystem::path name(path);
  std::error_code failure;
  const auto folder = std::filesystem::weakly_canonical(name.parent_path(), failure);
  return failure ? path : (folder / name.filename()).string();
}

std::set<std::string> Places(const std::vector<std::string>& paths) {
  std::set<std::string> places;
  for (const std::string& path : paths) places.insert(Place(path));
  return places;
}

std::string NameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

/// The files that an update may touch, at their places on one device.
struct Files {
  explicit Files(const Tree& device)
      : documents(Places({kWifi + "global.json", kWifi + "misc.json", kWifi + "radio.json",
                          kWifi + "wps.json", kWifi + "network.json.default", kWifi + "network.json.bridge",
                          kWifi + "network.json.repeater"})),
        always_archived(
            Places({"/etc/hostapd/mac_filter/mf.info", "/etc/hostapd/mac_filter/mf.setting",
                    "/etc/hostapd/mac_filter/mf_guest.info", kWifi + "lbd.conf", kWifi + "lbd.guest.conf",
                    kWifi + "wifi_nvram", kWifi + "wifi_wps", kWifi + "wifi_ap_00:00:00:00:00:00"})),
        legacy(always_archived),
        consumed_13(Places({kWifi + "model.json", kWifi + "country.json"})),
        archive(Place(kWifi + "legacy/x").substr(0, Place(kWifi + "legacy/x").size() - 1)),
        lock(Place("/var/lock/fw_printenv.lock")) {
    const std::string prefix = Place(kWifi + "wifi_ap_");
    for (const auto& [path, entry] : device) {
      if (path.starts_with(prefix)) legacy.insert(path);
    }
  }

  std::string Archived(const std::string& path) const { return archive + NameOf(path); }

  std::set<std::string> documents;
  std::set<std::string> always_archived;
  std::set<std::string> legacy;  // some of the access-point files may be no radio's
  std::set<std::string> consumed_13;
  std::string archive;  // with a slash at its end
  std::string lock;
};

bool IsAtOrBelow(const std::string& path, const std::string& top) {
  return path.starts_with(top) && (path.size() == top.size() || path[top.size()] == '/');
}

const Entry* Find(const Tree& device, const std::string& path) {
  const auto found = device.find(path);
  return found == device.end() ? nullptr : &found->second;
}

bool IsSame(const Tree& before, const Tree& after, const std::string& path) {
  const Entry* old = Find(before, path);
  const Entry* now = Find(after, path);
  return old == nullptr ? now == nullptr : now != nullptr && *old == *now;
}

bool IsForOwnerOnly(const Entry* file) {
  return file != nullptr && file->kind == Entry::Kind::File && file->mode == 0600;
}

std::optional<Json::Value> ParseWhole(const std::string& text) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  std::istringstream stream(text);
  Json::Value document;
  std::string errors;
  if (!Json::parseFromStream(builder, stream, &document, &errors)) return std::nullopt;
  return document;
}

struct Run {
  int status;
  std::string error;
  std::vector<fuzz::LogLine> log;
  Tree before;
  Tree after;

  bool HasLogged(const std::string& start) const {
    return std::any_of(log.begin(), log.end(),
                       [&](const auto& line) { return line.text.starts_with(start); });
  }
};

int LowestFreeDescriptor() {
  const int descriptor = ::open("/", O_PATH | O_CLOEXEC);
  ::close(descriptor);
  return descriptor;
}

Run Update(const std::string& build_number, Tree before) {
  Run run{-1, {}, {}, std::move(before), {}};
  const int descriptor = LowestFreeDescriptor();
  {
    const fuzz::CapturedStandardError console;
    run.status = KELP::Wifi::Updater::UpdateConfig(build_number);
    run.error = console.Text();
  }
  FUZZ_CHECK(LowestFreeDescriptor() == descriptor);
  run.log = fuzz::TakeLogLines();
  run.after = lab::ReadTree("/");
  return run;
}

/// One failure line on standard error and in the log for status 1, none for 0.
void CheckReport(const Run& run, const std::string& build_number) {
  constexpr const char* kFailureStart = "kelpwifiupdater:954 ";
  FUZZ_CHECK(run.status == 0 || run.status == 1);
  for (const fuzz::LogLine& line : run.log) {
    FUZZ_CHECK(line.priority == LOG_ERR || line.priority == LOG_WARNING);
    FUZZ_CHECK(line.text.starts_with("kelpwifiupdater:"));
  }
  const auto failures = std::count_if(run.log.begin(), run.log.end(), [&](const fuzz::LogLine& line) {
    return line.text.starts_with(kFailureStart);
  });
  FUZZ_CHECK(failures == run.status);
  if (run.status == 0) {
    FUZZ_CHECK(run.error.empty());
    return;
  }
  FUZZ_CHECK(run.error.starts_with(kFailure) && run.error.ends_with('\n'));
  FUZZ_CHECK(run.error.find("\n" + kFailure) == std::string::npos);
  FUZZ_CHECK(run.log.back().priority == LOG_ERR);
  FUZZ_CHECK(run.log.back().text == kFailureStart + run.error.substr(0, run.error.size() - 1) +
                                        ", buildNumber: " + fuzz::UpToNul(build_number));
}

/// Each document is as it was, or new, whole and for its owner's eyes only.
void CheckDocuments(const Run& run, const Files& files) {
  for (const std::string& path : files.documents) {
    if (!IsSame(run.before, run.after, path)) {
      const Entry* document = Find(run.after, path);
      FUZZ_CHECK(IsForOwnerOnly(document));
      FUZZ_CHECK(document->content.ends_with('\n') && ParseWhole(document->content));
    }
    const Entry* leftover = Find(run.after, path + ".new");
    FUZZ_CHECK(leftover == nullptr || IsSame(run.before, run.after, path + ".new"));
  }
}

bool IsInArchive(const Run& run, const Files& files, const std::string& path, const Entry& entry) {
  return std::any_of(files.legacy.begin(), files.legacy.end(), [&](const std::string& file) {
    if (!IsAtOrBelow(path, file)) return false;
    const Entry* archived = Find(run.after, files.Archived(file) + path.substr(file.size()));
    return archived != nullptr && *archived == entry;
  });
}

/// True when a legacy file of the name of `path`, which stands in the archive, has taken its place or may
/// have.
bool IsNameOfLegacyFile(const Run& run, const Files& files, const std::string& path) {
  return std::any_of(files.legacy.begin(), files.legacy.end(), [&](const std::string& file) {
    return Find(run.before, file) != nullptr && IsAtOrBelow(path, files.Archived(file));
  });
}

/// Nothing that stood on the device is gone or changed, but for what the update may replace or remove.
void CheckNothingIsLost(const Run& run, const Files& files) {
  for (const auto& [path, entry] : run.before) {
    if (IsSame(run.before, run.after, path) || files.documents.contains(path) || path == files.lock) continue;
    if (IsInArchive(run, files, path, entry) || IsNameOfLegacyFile(run, files, path)) continue;
    if (files.consumed_13.contains(path)) {
      FUZZ_CHECK(!run.HasLogged("kelpwifiupdater:229 ") && Find(run.after, path) == nullptr);
      FUZZ_CHECK(IsForOwnerOnly(Find(run.after, Place(kWifi + "global.json"))));
      continue;
    }
    const bool is_leftover =
        path.ends_with(".new") && files.documents.contains(path.substr(0, path.size() - 4));
    FUZZ_CHECK(is_leftover && entry.kind != Entry::Kind::Directory && Find(run.after, path) == nullptr);
  }
}

/// Nothing has come to the device but the documents, the archive and the boot environment's lock.
void CheckNothingIsAdded(const Run& run, const Files& files) {
  for (const auto& [path, entry] : run.after) {
    if (run.before.contains(path) || files.documents.contains(path) || path == files.lock) continue;
    FUZZ_CHECK(path + "/" == files.archive || IsNameOfLegacyFile(run, files, path));
  }
}

void CheckMigrated125(const Run& run, const Files& files) {
  const auto document = [&](const std::string& name) {
    const std::string path = Place(kWifi + name);
    const Entry* entry = Find(run.after, path);
    FUZZ_CHECK(IsForOwnerOnly(entry));
    return ParseWhole(entry->content).value();
  };
  FUZZ_CHECK(document("global.json").isObject());
  FUZZ_CHECK(document("wps.json").isObject());
  const Json::Value misc = document("misc.json");
  const Json::Value networks = document("network.json." + misc["netTopology"].asString());
  const Json::Value radios = document("radio.json");
  FUZZ_CHECK(networks.isArray() && networks.size() == 2);
  FUZZ_CHECK(radios.isArray() && (radios.size() == 2 || radios.size() == 3));
  for (const Json::Value& network : networks) {
    FUZZ_CHECK(network["featureSettings"].size() == radios.size());
    FUZZ_CHECK(network["frequency"].asInt() == 0);
  }
  for (const std::string& path : files.always_archived) {
    FUZZ_CHECK(Find(run.before, path) != nullptr && Find(run.after, files.Archived(path)) != nullptr);
    FUZZ_CHECK(Find(run.after, path) == nullptr || files.Archived(path) == path);
  }
}

/// What a run that ends well has done, by the build number.
void CheckSuccess(const Run& run, const Files& files, std::int32_t build) {
  if (build >= kFirstBuildWithNewConfig) {
    FUZZ_CHECK(run.HasLogged("kelpwifiupdater:120 update nothing from " + std::to_string(build) + "."));
    FUZZ_CHECK(run.before == run.after);
  } else if (build >= kFirstBuildOf13) {
    for (const std::string& path : files.consumed_13) FUZZ_CHECK(Find(run.after, path) == nullptr);
    FUZZ_CHECK(IsForOwnerOnly(Find(run.after, Place(kWifi + "global.json"))));
    FUZZ_CHECK(run.log.empty() || run.log.front().text.starts_with("kelpwifiupdater:140 "));
  } else if (run.HasLogged("kelpwifiupdater:225 ")) {
    FUZZ_CHECK(Find(run.before, Place(kWifi + "global.json")) ||
               Find(run.before, Place(kWifi + "misc.json")));
    FUZZ_CHECK(run.before == run.after);
  } else {
    FUZZ_CHECK(run.HasLogged("kelpwifiupdater:229 "));
    CheckMigrated125(run, files);
  }
}

/// Whoever updates a device that is up to date changes nothing.
void CheckSecondUpdate(const std::string& build_number, std::int32_t build, const Tree& device) {
  const Run again = Update(build_number, device);
  CheckReport(again, build_number);
  FUZZ_CHECK(again.before == again.after);
  const bool is_13 = build >= kFirstBuildOf13 && build < kFirstBuildWithNewConfig;
  FUZZ_CHECK(again.status == (is_13 ? 1 : 0));
  if (is_13) FUZZ_CHECK(again.error == kFailure + "some old config files are not existed.\n");
}

Run CheckUpdate(const std::string& build_number) {
  const Run run = Update(build_number, lab::ReadTree("/"));
  CheckReport(run, build_number);

  const Files files(run.before);
  CheckDocuments(run, files);
  CheckNothingIsLost(run, files);
  CheckNothingIsAdded(run, files);

  const std::optional<std::int32_t> build = fuzz::PlainNumber(build_number);
  if (!build) {
    FUZZ_CHECK(run.error == kFailure + "stoi\n" && run.before == run.after);
  } else if (run.status == 0) {
    CheckSuccess(run, files, *build);
    CheckSecondUpdate(build_number, *build, run.after);
  }
  return run;
}

}  // namespace

// The boot environment library loses the name on a line of its configuration that it refuses: a few bytes, in
// a process that ends soon. Nothing else here scans with the C library.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libubootenv\nleak:_vsscanf\n";
}

extern "C" int LLVMFuzzerInitialize(int* /*argument_count*/, char*** /*arguments*/) {
  Device();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const fuzz::DeviceText device = fuzz::ParseDeviceText(input.TakeRest());

  const auto check = [&] {
    const fuzz::PrivateDevice::Entered inside(Device());
    fuzz::LayOut(device.items);
    const Run run = CheckUpdate(device.build_number);
    fuzz::ClearDevice();
    return run;
  };
  const Run run = check();
  lab::CollectDocuments(run.before, run.after);
  return 0;
}
