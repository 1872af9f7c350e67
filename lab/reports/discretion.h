#pragma once

#include <json/value.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "lab/households/settings.h"
#include "lab/images/tree.h"
#include "lab/runs/outcome.h"

namespace lab {

/// What a report shows of what only the household should know. Texts go in and come out as bytes; making them
/// safe to print is another matter.
class Discretion {
 public:
  struct Choice {
    /// Shows passwords, shared secrets, keys and PINs.
    bool show_secrets = false;
    /// Shows digests in place of SSIDs, MAC addresses, device names and mail addresses: the same one for the
    /// same value as long as the object lives, another one in the next.
    bool anonymous = false;
  };

  /// Learns from `device` (and from documents, with Learn) what is not to be shown wherever it stands.
  Discretion(Choice choice, const Tree& device);
  /// Learns from another state of the device.
  void Learn(const Tree& device);

  bool IsAnonymous() const { return choice_.anonymous; }
  bool ShowsSecrets() const { return choice_.show_secrets; }

  std::string Secret(const std::string& secret) const;
  std::string Ssid(const std::string& ssid) const;
  /// A stored SSID, in base64.
  std::string StoredSsid(const std::string& stored) const;
  std::string Name(const std::string& name) const;

  /// Any text: known secrets in it are masked, and personal things have their digests.
  std::string Text(std::string_view text) const;
  /// A line of the log, those with stored texts in them masked.
  std::string LogText(const NumberedLine& line) const;
  /// The same with its number before it, as it was sent.
  std::string LogLineText(const LogLine& line) const;
  /// A document or a part of one.
  Json::Value Document(const Json::Value& value) const;
  /// The content of the device's file at `path`, as a person reads it.
  std::string FileText(const std::string& path, std::string_view content) const;

 private:
  std::string Digest(const char* kind, std::string_view value) const;
  std::string WithoutSecrets(std::string text) const;
  std::string WithoutPersons(std::string text) const;
  Json::Value Member(const std::string& name, const Json::Value& value) const;
  void LearnText(std::string_view text);
  void LearnDocument(const Json::Value& value);
  void LearnSecret(const std::string& secret);

  Choice choice_;
  std::array<unsigned char, 32> key_{};
  std::set<std::string> secrets_;
  /// SSIDs and names of devices as they may stand in a text, with their digests.
  std::map<std::string, std::string> persons_;
};

/// Whether a legacy key or a document's member of that name holds a secret.
bool IsSecretKey(std::string_view key);

}  // namespace lab
