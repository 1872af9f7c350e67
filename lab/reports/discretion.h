#pragma once

#include <json/value.h>

#include <array>
#include <string>
#include <string_view>

#include "lab/images/tree.h"
#include "lab/reports/known_texts.h"
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
  /// An SSID that holds a secret is masked like any text.
  std::string Ssid(const std::string& ssid) const;
  /// A stored SSID, in base64.
  std::string StoredSsid(const std::string& stored) const;
  std::string Name(const std::string& name) const;
  /// Mail addresses with commas between them; what stands there without being an address is treated as one.
  std::string Mails(std::string_view mails) const;

  /// Any text: known secrets in it are masked, and personal things have their digests.
  std::string Text(std::string_view text) const;
  /// The value of a legacy key, by what the key says that it is.
  std::string Value(std::string_view key, const std::string& value) const;
  /// A line with a key and a value in it ("wifi_ap_...: guest_ssid=R3Vlc3Rz"), the value by what the key says
  /// that it is; any other line as Text.
  std::string Entry(std::string_view line) const;
  /// A line of the log, those with stored texts in them masked.
  std::string LogText(const NumberedLine& line) const;
  /// The same with its number before it, as it was sent.
  std::string LogLineText(const LogLine& line) const;
  /// A document or a part of one.
  Json::Value Document(const Json::Value& value) const;
  /// A document's member by its name.
  Json::Value Member(const std::string& name, const Json::Value& value) const;
  /// The content of the device's file at `path`, as a person reads it.
  std::string FileText(const std::string& path, std::string_view content) const;

 private:
  std::string Digest(const char* kind, std::string_view value) const;
  std::string MailDigest(std::string_view mail) const;
  /// None where the address stands for no device.
  std::string MacDigest(const std::string& common, std::string_view spelled) const;
  bool HoldsSecret(const std::string& text) const;
  std::string WithoutSecrets(std::string_view text) const;
  std::string WithoutPersons(std::string_view text) const;
  Json::Value SecretValue(const Json::Value& value) const;
  std::string JsonFileText(std::string_view content) const;

  void LearnText(std::string_view text);
  void LearnEntry(std::string_view key, const std::string& value);
  void LearnDocument(const Json::Value& value);
  void LearnSecret(const std::string& secret);
  void LearnSecretsIn(const Json::Value& value);
  void LearnPerson(const std::string& text, const std::string& digest);

  Choice choice_;
  std::array<unsigned char, 32> key_{};
  KnownTexts secrets_;
  /// SSIDs, names of devices and malformed addresses as they may stand in a text.
  KnownTexts persons_;
};

}  // namespace lab
