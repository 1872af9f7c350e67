#pragma once

#include <json/value.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lab/household/legacy_text.h"
#include "lab/runs/outcome.h"
#include "lab/runs/program_run.h"

namespace lab {

/// Where a household's settings stand on a device.
inline constexpr const char* kWifiFolder = "/usr/kelp/etc/wifi/";
inline constexpr const char* kInformationStore = "/usr/kelp/etc/info.conf";
inline constexpr const char* kSecretKeyFile = "/usr/kelp/etc/secret.key";
inline constexpr const char* kAllBandsFile = "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00";
inline constexpr const char* kWPSFile = "/usr/kelp/etc/wifi/wifi_wps";
inline constexpr const char* kMeshRoleFile = "/usr/kelp/etc/mesh/mesh_role.conf";
inline constexpr const char* kFilterFolder = "/etc/hostapd/mac_filter/";

/// A radio with its settings, or a network with its settings on one radio.
struct RadioView {
  /// The radio's number in the documents, 0 for all bands.
  int frequency = 0;
  /// The access-point file that its settings come from.
  std::string file;
  /// Its object in the document.
  const Json::Value* now = nullptr;
};

struct NetworkView {
  bool is_guest = false;
  /// Its object in the document.
  const Json::Value* now = nullptr;
  /// All bands first, then the radios in the document's order.
  std::vector<RadioView> radios;

  /// The key by which an access-point file holds the setting `key` for this network.
  std::string Key(std::string_view key) const;
};

/// One run of the program on one device, to be asked what the household had and what it has. It knows the
/// legacy words as they stood, the documents as they stand, and the log; what becomes of a word is the
/// program's affair alone.
class RunView {
 public:
  /// `run` has to stay for as long as this does.
  explicit RunView(const RunResult& run);

  const RunResult& Run() const { return run_; }
  const std::vector<NumberedLine>& Log() const { return log_; }

  /// Whether a line of that number was logged.
  bool Logged(int number) const;
  /// Whether one was logged with that word or text in it (MessageArgument), which ends at a NUL there.
  bool Logged(int number, std::string_view argument) const;
  /// What the lines of that number tell, each text once, in the order of the log.
  std::vector<std::string> LoggedArguments(int number) const;

  /// Whether this run carried a household over from its legacy files.
  bool IsWholeMigration() const;
  /// Whether it carried over the global files of release 1.3.
  bool IsOfGlobalFiles() const;
  /// Whether it ended in anything but success.
  bool Failed() const;

  /// Whether the legacy file was there before the run, to be read.
  bool Had(const std::string& path) const;
  /// Whether it was there with at least one entry in it.
  bool HadEntries(const std::string& path) const;
  /// The text of a file before the run; empty where there was none.
  std::string_view TextOf(const std::string& path) const;
  /// The value that stood under `key` in a key=value file; none where file or key was missing.
  std::optional<std::string> Was(const std::string& path, std::string_view key) const;

  /// A document as it stands after the run ("global.json"); null where it is missing or no JSON.
  const Json::Value* Document(const std::string& name) const;
  /// The network document's name, whatever its topology; empty where there is none.
  const std::string& NetworkDocument() const { return network_document_; }

  /// From the documents; empty where those are missing.
  const std::vector<NetworkView>& Networks() const { return networks_; }
  const std::vector<RadioView>& Radios() const { return radios_; }

 private:
  void ReadDocument(const std::string& name);
  void ReadDocuments();
  void FindNetworks();
  void FindRadios();
  RadioView PartOf(const Json::Value& now) const;

  const RunResult& run_;
  std::vector<NumberedLine> log_;
  std::map<std::string, Json::Value> documents_;
  std::string network_document_;
  std::vector<NetworkView> networks_;
  std::vector<RadioView> radios_;
  const std::vector<LegacyEntry>& EntriesOf(const std::string& path) const;

  mutable std::map<std::string, std::vector<LegacyEntry>> entries_;  // of the files asked for
};

/// The text as a device reads JSON; none for anything else.
std::optional<Json::Value> ParseDocument(std::string_view text);

/// Members of a document's object, whatever was written there: the given value where the member is missing or
/// of another kind.
std::string TextIn(const Json::Value& object, const char* member);
int NumberIn(const Json::Value& object, const char* member, int otherwise);
bool FlagIn(const Json::Value& object, const char* member);

}  // namespace lab
