#pragma once

#include <json/value.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "lab/household/known_files.h"
#include "lab/runs/outcome.h"
#include "lab/runs/program_run.h"
#include "lab/text/key_value.h"

namespace lab {

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

/// A value of a legacy file, as a person finds it there.
struct StoredValue {
  std::string file;
  /// As it is written.
  std::string key;
  /// Any bytes; none if the file has no such key in any spelling.
  std::optional<std::string> value;
  /// Whether the key is spelled as the program reads it; another one does not exist for the program.
  bool is_key_exact = true;
  /// Whether a carriage return is why the program does not read what a person reads.
  bool has_carriage_return = false;

  /// The value without white space around it.
  std::string Word() const;
  /// "wifi_ap_...: key=value", or "wifi_ap_...: key" without the value.
  std::string Detail() const;
  std::string DetailWithoutValue() const;
};

/// A read-only view of one run of a program on one device: what the household had, and what it has. It knows
/// the legacy values as they were stored, the documents as they are, and the log.
class RunView {
 public:
  /// `run` must outlive the view. `build` is the number that the program was given.
  RunView(const RunResult& run, std::string_view build);

  const RunResult& Run() const { return run_; }
  const std::vector<NumberedLine>& Log() const { return log_; }

  /// Whether a line of that number was logged.
  bool Logged(int number) const;
  /// What the lines of that number say for the format's "%s", each once, in the order of the log.
  std::vector<std::string> LoggedArguments(int number) const;

  /// What the build number asks for.
  Request Asked() const { return asked_; }
  /// Whether global.json or misc.json was there before, so that a migration from 1.2.5 must not begin.
  bool WasMigratedBefore() const;
  /// Whether this run migrated a household from 1.2.5, or began to.
  bool IsWholeMigration() const { return is_whole_; }
  /// Whether it migrated the global files of 1.3.
  bool IsOfGlobalFiles() const;
  /// Whether it ended in anything but success.
  bool Failed() const;

  /// Whether the legacy file was there before the run, to be read.
  bool Had(const std::string& path) const;
  /// Whether it was there with at least one entry in it.
  bool HadEntries(const std::string& path) const;
  /// The text of a file before the run; empty if there was none.
  std::string_view TextOf(const std::string& path) const;
  /// The value under `key` in a key=value file, as the program reads it; none if file or key was missing.
  std::optional<std::string> LegacyValue(const std::string& path, std::string_view key) const;
  /// The same as a person reads the file: the key in any case, with white space around it, and with lines
  /// that end in a carriage return.
  StoredValue Stored(const std::string& path, const std::string& key) const;
  /// Whether the file has an entry whose key begins so.
  bool HasKeyWithPrefix(const std::string& path, std::string_view prefix) const;

  /// A document as it is after the run ("global.json"); null if it is missing or not JSON.
  const Json::Value* Document(const std::string& name) const;
  /// The network document's name, whatever its topology; empty if there is none.
  const std::string& NetworkDocument() const { return network_document_; }
  /// The names of the documents that are not there, the network document as "network.json".
  std::vector<std::string> MissingDocuments() const;

  /// From the documents; empty if those are missing.
  const std::vector<NetworkView>& Networks() const { return networks_; }
  const std::vector<RadioView>& Radios() const { return radios_; }

 private:
  void ReadDocument(const std::string& name);
  void ReadDocuments();
  void FindNetworks();
  void FindRadios();
  RadioView PartOf(const Json::Value& now) const;
  /// A legacy file, read once.
  struct LegacyFile {
    bool is_there = false;
    std::string_view text;
    /// As the program reads it, and the first entry of each key.
    std::vector<LegacyEntry> entries;
    std::unordered_map<std::string_view, const LegacyEntry*> first;
    /// As a person reads one whose lines end in a carriage return only; empty for others.
    std::vector<LegacyEntry> split;
  };
  const LegacyFile& FileAt(const std::string& path) const;

  const RunResult& run_;
  std::vector<NumberedLine> log_;
  Request asked_;
  bool is_whole_ = false;
  std::map<std::string, Json::Value> documents_;
  std::string network_document_;
  std::vector<NetworkView> networks_;
  std::vector<RadioView> radios_;
  mutable std::unordered_map<std::string, LegacyFile> files_;  // those asked for
};

/// Members of a document's object, whatever was written there: the given value if the member is missing or of
/// another kind.
std::string TextIn(const Json::Value& object, const char* member);
int NumberIn(const Json::Value& object, const char* member, int otherwise);
bool FlagIn(const Json::Value& object, const char* member);

}  // namespace lab
