#include "lab/reports/discretion.h"

#include <sodium.h>

#include <algorithm>
#include <optional>
#include <set>
#include <stdexcept>

#include "lab/reports/masks.h"
#include "lab/reports/personal_keys.h"
#include "lab/text/addresses.h"
#include "lab/text/base64.h"
#include "lab/text/json.h"

namespace lab {
namespace {

/// Texts that are shorter would be found in every other word.
constexpr std::size_t kShortestSought = 4;

constexpr std::string_view kBlanks = " \t\r\n";

/// Addresses that stand for no device.
const std::set<std::string_view> kNobodysAddresses{"00:00:00:00:00:00", "11:11:11:11:11:11"};

/// Names that every household's documents have.
const std::set<std::string_view> kNobodysNames{"Primary Network",         "Guest Network",
                                               "Primary Network - Deny",  "Guest Network - Deny",
                                               "Primary Network - Allow", "Guest Network - Allow"};

/// The text as it stands between the quotes of a JSON text.
std::string JsonEscaped(const std::string& text, bool as_utf8) {
  const std::string quoted = as_utf8 ? DocumentJson(text) : JsonLine(text);
  return quoted.substr(1, quoted.rfind('"') - 1);
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t start = std::min(text.find_first_not_of(kBlanks), text.size());
  text.remove_prefix(start);
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string_view Unquoted(std::string_view text) {
  const bool is_quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return is_quoted ? text.substr(1, text.size() - 2) : text;
}

/// "[...]", as sections of a file begin.
bool IsSectionName(std::string_view line) {
  return line.size() >= 2 && line.front() == '[' && line.back() == ']';
}

/// Whether the content is meant for JSON: the name says so, or the beginning, which for an array looks like
/// that of a file of sections.
bool LooksLikeJson(const std::string& path, std::string_view content) {
  const std::size_t start = content.find_first_not_of(kBlanks);
  if (start == std::string_view::npos) return false;
  content.remove_prefix(start);
  if (content.front() == '{') return true;
  if (content.front() != '[') return false;
  const bool is_named = path.find(".json") != std::string::npos;
  return is_named || !IsSectionName(Trimmed(content.substr(0, content.find('\n'))));
}

bool IsKeyFile(const std::string& path) {
  return path.ends_with("/secret.key");
}

/// Calls `treat` for each line and gives what it makes of them, the line ends of any system between them.
template <typename Treat>
std::string EachLine(std::string_view text, Treat treat) {
  std::string treated;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    treated += treat(text.substr(0, end));
    if (end < text.size()) treated += text[end];
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return treated;
}

/// Where the sign between a key and its value stands.
std::size_t SignIn(std::string_view line) {
  const std::size_t equals = line.find('=');
  return equals != std::string_view::npos ? equals : line.find(':');
}

/// The word before the sign, without what stands before it in the line.
std::string_view KeyBefore(std::string_view line, std::size_t sign) {
  std::string_view key = Trimmed(line.substr(0, sign));
  const std::size_t before = key.find_last_of(" \t:,{");
  if (before != std::string_view::npos) key.remove_prefix(before + 1);
  return key;
}

}  // namespace

Discretion::Discretion(Choice choice, const Tree& device) : choice_(choice) {
  if (sodium_init() < 0) throw std::runtime_error("libsodium cannot be initialised");
  randombytes_buf(key_.data(), key_.size());
  Learn(device);
}

void Discretion::Learn(const Tree& device) {
  for (const auto& [path, entry] : device) {
    if (entry.kind != Entry::Kind::File) continue;
    if (IsKeyFile(path)) LearnSecret(entry.content.substr(0, entry.content.find_first_of("\r\n")));
    // A forgiving reader would pass over what could hold a secret: a comment, a member that comes twice.
    std::optional<Json::Value> document;
    if (LooksLikeJson(path, entry.content)) document = ParseJson(entry.content);
    if (document) {
      LearnDocument(*document);
    } else {
      LearnText(entry.content);
    }
  }
}

void Discretion::LearnSecret(const std::string& secret) {
  for (const std::string_view text : {std::string_view(secret), Trimmed(secret)}) {
    if (text.size() < kShortestSought) continue;
    secrets_.Add(text, kMask);
    const bool is_plain = std::ranges::all_of(
        text, [](unsigned char byte) { return byte >= ' ' && byte < 0x7F && byte != '"' && byte != '\\'; });
    if (is_plain) continue;
    secrets_.Add(JsonEscaped(std::string(text), true), kMask);
    secrets_.Add(JsonEscaped(std::string(text), false), kMask);
  }
}

void Discretion::LearnSecretsIn(const Json::Value& value) {
  if (value.isObject() || value.isArray()) {
    for (const Json::Value& element : value) LearnSecretsIn(element);
  } else if (value.isString() || value.isNumeric()) {
    LearnSecret(value.asString());
  }
}

void Discretion::LearnPerson(const std::string& text, const std::string& digest) {
  if (choice_.anonymous && text.size() >= kShortestSought) persons_.Add(text, digest);
}

void Discretion::LearnEntry(std::string_view key, const std::string& value) {
  if (IsSecretKey(key)) {
    LearnSecret(value);
  } else if (IsStoredSsidKey(key)) {
    LearnPerson(value, StoredSsid(value));
  } else if (IsSsidKey(key)) {
    LearnPerson(value, Ssid(value));
  } else if (IsNameKey(key)) {
    LearnPerson(value, Name(value));
  } else if (IsMacKey(key) && !value.empty() && !MacAt(value, 0)) {
    LearnPerson(value, Digest("mac", value));
  }
}

void Discretion::LearnText(std::string_view text) {
  EachLine(text, [&](std::string_view line) {
    if (choice_.anonymous && IsSectionName(line)) {
      const std::string name(line.substr(1, line.size() - 2));
      LearnPerson(name, Name(name));
    }
    const std::size_t sign = SignIn(line);
    if (sign == std::string_view::npos) return "";
    // Behind a colon a blank is none of the value.
    const std::string_view behind = line.substr(sign + 1);
    LearnEntry(KeyBefore(line, sign), std::string(Unquoted(line[sign] == '=' ? behind : Trimmed(behind))));
    return "";
  });
}

void Discretion::LearnDocument(const Json::Value& value) {
  if (value.isArray()) {
    for (const Json::Value& element : value) LearnDocument(element);
  }
  if (!value.isObject()) return;
  for (const std::string& name : value.getMemberNames()) {
    const Json::Value& member = value[name];
    LearnDocument(member);
    if (IsSecretKey(name)) LearnSecretsIn(member);
    if (!member.isString()) continue;
    const std::string text = member.asString();
    if (IsSsidKey(name)) {
      LearnPerson(text, Ssid(text));
    } else if (IsNameKey(name) && !kNobodysNames.contains(text)) {
      LearnPerson(text, Name(text));
    }
  }
}

std::string Discretion::Digest(const char* kind, std::string_view value) const {
  std::array<unsigned char, crypto_generichash_BYTES> hash{};
  crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char*>(value.data()),
                     value.size(), key_.data(), key_.size());
  std::array<char, 9> hex{};
  sodium_bin2hex(hex.data(), hex.size(), hash.data(), 4);
  return std::string(kind) + "-" + hex.data();
}

std::string Discretion::MailDigest(std::string_view mail) const {
  const auto address = MailAt(mail, 0);
  return Digest("mail", address && address->size == mail.size() ? address->common : std::string(mail));
}

std::string Discretion::MacDigest(const std::string& common, std::string_view spelled) const {
  return kNobodysAddresses.contains(common) ? std::string(spelled) : Digest("mac", common);
}

bool Discretion::HoldsSecret(const std::string& text) const {
  return !choice_.show_secrets && secrets_.AreIn(text);
}

std::string Discretion::Secret(const std::string& secret) const {
  return choice_.show_secrets || secret.empty() ? secret : kMask;
}

std::string Discretion::Ssid(const std::string& ssid) const {
  return choice_.anonymous && !ssid.empty() ? Digest("ssid", ssid) : WithoutSecrets(ssid);
}

std::string Discretion::StoredSsid(const std::string& stored) const {
  const std::optional<std::string> ssid = FromBase64(stored);
  if (choice_.anonymous && !stored.empty()) return Digest("ssid", ssid.value_or(stored));
  return HoldsSecret(stored) || HoldsSecret(ssid.value_or("")) ? kMask : stored;
}

std::string Discretion::Name(const std::string& name) const {
  return choice_.anonymous && !name.empty() ? Digest("name", name) : WithoutSecrets(name);
}

std::string Discretion::Mails(std::string_view mails) const {
  if (!choice_.anonymous) return WithoutSecrets(mails);
  std::string shown;
  while (true) {
    const std::size_t comma = mails.find(',');
    const std::string_view field = mails.substr(0, comma);
    const std::string_view mail = Trimmed(field);
    const std::size_t start =
        mail.empty() ? field.size() : static_cast<std::size_t>(mail.data() - field.data());
    shown += field.substr(0, start);
    if (!mail.empty()) shown.append(MailDigest(mail)).append(field.substr(start + mail.size()));
    if (comma == std::string_view::npos) return shown;
    shown += ',';
    mails.remove_prefix(comma + 1);
  }
}

std::string Discretion::WithoutSecrets(std::string_view text) const {
  return choice_.show_secrets ? std::string(text) : secrets_.Replaced(text);
}

std::string Discretion::WithoutPersons(std::string_view text) const {
  if (!choice_.anonymous) return std::string(text);
  std::string shown;
  for (std::size_t place = 0; place < text.size();) {
    std::string digest;
    std::size_t size = 0;
    if (const auto mail = MailAt(text, place)) {
      size = mail->size;
      digest = Digest("mail", mail->common);
    } else {
      if (const auto mac = MacAt(text, place)) {
        size = mac->size;
        digest = MacDigest(mac->common, text.substr(place, size));
      }
      const auto* const known = persons_.LongestAt(text.substr(place));
      if (known != nullptr && known->first.size() > size) {
        size = known->first.size();
        digest = known->second;
      }
    }
    shown += size == 0 ? text.substr(place, 1) : std::string_view(digest);
    place += std::max<std::size_t>(size, 1);
  }
  return shown;
}

std::string Discretion::Text(std::string_view text) const {
  return WithoutPersons(WithoutSecrets(text));
}

std::string Discretion::Value(std::string_view key, const std::string& value) const {
  if (value.empty()) return value;
  if (IsSecretKey(key)) return Secret(value);
  if (IsStoredSsidKey(key)) return StoredSsid(value);
  if (IsSsidKey(key)) return Ssid(value);
  if (IsMailKey(key) && choice_.anonymous && value != "yes" && value != "no") return Mails(value);
  if (IsMacKey(key) && choice_.anonymous && value.find(' ') == std::string::npos) {
    const auto mac = MacAt(value, 0);
    return mac && mac->size == value.size() ? MacDigest(mac->common, value) : Digest("mac", value);
  }
  return IsNameKey(key) && !kNobodysNames.contains(value) ? Name(value) : Text(value);
}

std::string Discretion::Entry(std::string_view line) const {
  if (choice_.anonymous && IsSectionName(line)) {
    return "[" + Name(std::string(line.substr(1, line.size() - 2))) + "]";
  }
  const std::size_t sign = SignIn(line);
  if (sign == std::string_view::npos) return Text(line);
  const std::string_view behind = line.substr(sign + 1);
  const std::string_view value = Unquoted(Trimmed(behind));
  const std::string_view key = KeyBefore(line, sign);
  const bool is_told =
      IsSecretKey(key) || IsSsidKey(key) || IsNameKey(key) || IsMacKey(key) || IsMailKey(key);
  if (value.empty() || !is_told) return Text(line);
  if (choice_.show_secrets && !choice_.anonymous) return std::string(line);
  const std::size_t start = static_cast<std::size_t>(Trimmed(behind).data() - behind.data());
  return Text(line.substr(0, sign + 1)) + std::string(behind.substr(0, start)) +
         Value(key, std::string(value));
}

std::string Discretion::LogText(const NumberedLine& line) const {
  return Text(choice_.show_secrets ? line.text : MaskedLogText(line));
}

std::string Discretion::LogLineText(const LogLine& line) const {
  const NumberedLine numbered = ParseNumberedLine(line);
  const std::string start = line.message.substr(0, line.message.size() - numbered.text.size());
  return start + LogText(numbered);
}

Json::Value Discretion::SecretValue(const Json::Value& value) const {
  const bool is_nothing = value.isBool() || value.empty() || (value.isString() && value.asString().empty());
  return choice_.show_secrets || is_nothing ? value : Json::Value(kMask);
}

Json::Value Discretion::Member(const std::string& name, const Json::Value& value) const {
  if (IsSecretKey(name)) return SecretValue(value);
  if (value.isArray() && IsMailKey(name)) {
    Json::Value shown(Json::arrayValue);
    for (const Json::Value& mail : value)
      shown.append(mail.isString() ? Mails(mail.asString()) : Document(mail));
    return shown;
  }
  if (!value.isString()) return Document(value);
  // A document has the name itself where a legacy file has base64.
  return IsStoredSsidKey(name) ? Ssid(value.asString()) : Value(name, value.asString());
}

Json::Value Discretion::Document(const Json::Value& value) const {
  Json::Value shown = value;
  if (value.isArray()) {
    for (Json::ArrayIndex place = 0; place < value.size(); ++place) shown[place] = Document(value[place]);
  } else if (value.isObject()) {
    for (const std::string& name : value.getMemberNames()) shown[name] = Member(name, value[name]);
  } else if (value.isString()) {
    shown = Text(value.asString());
  }
  return shown;
}

std::string Discretion::JsonFileText(std::string_view content) const {
  const auto value = ParseJson(content);
  if (!value) return "(not shown, since it is no whole JSON and may hold secrets; --show-secrets shows it)\n";
  const Json::Value shown = Document(*value);
  return shown == *value ? std::string(content) : DocumentJson(shown);
}

std::string Discretion::FileText(const std::string& path, std::string_view content) const {
  if (choice_.show_secrets && !choice_.anonymous) return std::string(content);
  if (IsKeyFile(path)) return Secret(std::string(content)) + (choice_.show_secrets ? "" : "\n");
  if (LooksLikeJson(path, content)) return JsonFileText(content);
  return EachLine(content, [&](std::string_view line) { return Entry(line); });
}

}  // namespace lab
