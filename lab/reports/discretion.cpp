#include "lab/reports/discretion.h"

#include <json/reader.h>
#include <json/writer.h>
#include <sodium.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <optional>
#include <regex>
#include <stdexcept>
#include <vector>

#include "lab/households/legacy_text.h"
#include "lab/reports/masks.h"

namespace lab {
namespace {

/// Texts that are shorter would be found in every other word.
constexpr std::size_t kShortestSought = 4;

/// Addresses that stand for no device.
constexpr const char* kAllBandsAddress = "00:00:00:00:00:00";
constexpr const char* kPlaceholderAddress = "11:11:11:11:11:11";

std::string InLowerCase(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](unsigned char byte) { return std::tolower(byte); });
  return lower;
}

void ReplaceAll(std::string& text, const std::string& sought, const std::string& by) {
  for (std::size_t place = text.find(sought); place != std::string::npos;
       place = text.find(sought, place + by.size())) {
    text.replace(place, sought.size(), by);
  }
}

/// The text with `change` made to each part that matches.
template <typename Change>
std::string Replaced(const std::string& text, const std::regex& pattern, Change change) {
  std::string result;
  auto rest = text.begin();
  for (auto match = std::sregex_iterator(text.begin(), text.end(), pattern); match != std::sregex_iterator();
       ++match) {
    result.append(rest, (*match)[0].first);
    result += change((*match)[0].str());
    rest = (*match)[0].second;
  }
  return result.append(rest, text.end());
}

std::optional<std::string> DecodedBase64(const std::string& text) {
  std::string bytes(text.size(), '\0');
  std::size_t size = 0;
  const int result =
      sodium_base642bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), text.data(),
                        text.size(), nullptr, &size, nullptr, sodium_base64_VARIANT_ORIGINAL);
  if (result != 0) return std::nullopt;
  bytes.resize(size);
  return bytes;
}

std::optional<Json::Value> ParseJson(std::string_view text) {
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  Json::Value value;
  std::string errors;
  try {
    if (reader->parse(text.data(), text.data() + text.size(), &value, &errors)) return value;
  } catch (const Json::Exception&) {
  }
  return std::nullopt;
}

std::string JsonText(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "\t";
  builder["emitUTF8"] = true;
  return Json::writeString(builder, value) + "\n";
}

bool IsSsidKey(std::string_view key) {
  return key == "ssid" || key == "guest_ssid";
}

bool IsNameKey(std::string_view key) {
  return key == "desc";
}

bool LooksLikeJson(const std::string& path, std::string_view content) {
  const std::size_t start = content.find_first_not_of(" \t\r\n");
  const bool is_named = path.find(".json") != std::string::npos;
  return is_named && start != std::string_view::npos && (content[start] == '{' || content[start] == '[');
}

bool IsKeyFile(const std::string& path) {
  return path.ends_with("/secret.key");
}

}  // namespace

bool IsSecretKey(std::string_view key) {
  const std::string lower = InLowerCase(key);
  static const std::vector<std::string> kParts{"password", "passphrase", "passwd",
                                               "secret",   "psk",        "wep_key"};
  const bool has_part = std::ranges::any_of(
      kParts, [&](const std::string& part) { return lower.find(part) != std::string::npos; });
  return has_part || lower == "pin" || lower.ends_with("_pin");
}

Discretion::Discretion(Choice choice, const Tree& device) : choice_(choice) {
  if (sodium_init() < 0) throw std::runtime_error("libsodium cannot be initialised");
  randombytes_buf(key_.data(), key_.size());
  Learn(device);
}

void Discretion::Learn(const Tree& device) {
  for (const auto& [path, entry] : device) {
    if (entry.kind != Entry::Kind::File) continue;
    if (LooksLikeJson(path, entry.content)) {
      if (const auto value = ParseJson(entry.content)) LearnDocument(*value);
    } else if (IsKeyFile(path)) {
      LearnSecret(entry.content.substr(0, entry.content.find_first_of("\r\n")));
    } else {
      LearnText(entry.content);
    }
  }
}

void Discretion::LearnSecret(const std::string& secret) {
  if (secret.size() >= kShortestSought) secrets_.insert(secret);
}

void Discretion::LearnText(std::string_view text) {
  for (const LegacyEntry& entry : ParseKeyValueText(text)) {
    if (IsSecretKey(entry.key)) LearnSecret(entry.value);
    if (entry.value.size() < kShortestSought) continue;
    if (IsSsidKey(entry.key)) persons_[entry.value] = StoredSsid(entry.value);
    if (IsNameKey(entry.key)) persons_[entry.value] = Name(entry.value);
  }
}

void Discretion::LearnDocument(const Json::Value& value) {
  if (value.isArray()) {
    for (const Json::Value& element : value) LearnDocument(element);
  }
  if (!value.isObject()) return;
  for (const std::string& name : value.getMemberNames()) {
    const Json::Value& member = value[name];
    LearnDocument(member);
    if (!member.isString()) continue;
    const std::string text = member.asString();
    if (IsSecretKey(name)) LearnSecret(text);
    if (name == "ssid" && text.size() >= kShortestSought) persons_[text] = Ssid(text);
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

std::string Discretion::Secret(const std::string& secret) const {
  return choice_.show_secrets || secret.empty() ? secret : kMask;
}

std::string Discretion::Ssid(const std::string& ssid) const {
  return choice_.anonymous && !ssid.empty() ? Digest("ssid", ssid) : ssid;
}

std::string Discretion::StoredSsid(const std::string& stored) const {
  return choice_.anonymous && !stored.empty() ? Digest("ssid", DecodedBase64(stored).value_or(stored))
                                              : stored;
}

std::string Discretion::Name(const std::string& name) const {
  return choice_.anonymous && !name.empty() ? Digest("name", name) : name;
}

std::string Discretion::WithoutSecrets(std::string text) const {
  if (choice_.show_secrets) return text;
  for (auto secret = secrets_.rbegin(); secret != secrets_.rend(); ++secret) ReplaceAll(text, *secret, kMask);
  return text;
}

std::string Discretion::WithoutPersons(std::string text) const {
  if (!choice_.anonymous) return text;
  // The longest first: one SSID may begin another.
  std::vector<std::pair<std::string, std::string>> persons(persons_.begin(), persons_.end());
  std::ranges::stable_sort(
      persons, [](const auto& left, const auto& right) { return left.first.size() > right.first.size(); });
  for (const auto& [value, digest] : persons) ReplaceAll(text, value, digest);

  static const std::regex mail("[^\\s,;=\"']+@[^\\s,;\"']+");
  text = Replaced(text, mail, [&](const std::string& address) { return Digest("mail", address); });
  static const std::regex mac("([0-9A-Fa-f]{2}[:-]){5}[0-9A-Fa-f]{2}");
  return Replaced(text, mac, [&](const std::string& address) {
    std::string plain = InLowerCase(address);
    std::ranges::replace(plain, '-', ':');
    if (plain == kAllBandsAddress || plain == kPlaceholderAddress) return address;
    return Digest("mac", plain);
  });
}

std::string Discretion::Text(std::string_view text) const {
  return WithoutPersons(WithoutSecrets(std::string(text)));
}

std::string Discretion::LogText(const NumberedLine& line) const {
  return Text(choice_.show_secrets ? line.text : MaskedLogText(line));
}

std::string Discretion::LogLineText(const LogLine& line) const {
  const NumberedLine numbered = ParseNumberedLine(line);
  const std::string start = line.message.substr(0, line.message.size() - numbered.text.size());
  return start + LogText(numbered);
}

Json::Value Discretion::Member(const std::string& name, const Json::Value& value) const {
  if (!value.isString()) return Document(value);
  const std::string text = value.asString();
  if (IsSecretKey(name)) return Secret(text);
  if (name == "ssid") return Ssid(text);
  return Text(text);
}

Json::Value Discretion::Document(const Json::Value& value) const {
  Json::Value shown = value;
  if (value.isArray()) {
    for (Json::ArrayIndex place = 0; place < value.size(); ++place) shown[place] = Document(value[place]);
  } else if (value.isObject()) {
    for (const std::string& name : value.getMemberNames()) shown[name] = Member(name, value[name]);
    // The object of a filtered device.
    if (value.isMember("mac") && value["name"].isString()) shown["name"] = Name(value["name"].asString());
  } else if (value.isString()) {
    shown = Text(value.asString());
  }
  return shown;
}

std::string Discretion::FileText(const std::string& path, std::string_view content) const {
  if (choice_.show_secrets && !choice_.anonymous) return std::string(content);
  if (IsKeyFile(path)) return Secret(std::string(content)) + (choice_.show_secrets ? "" : "\n");
  if (LooksLikeJson(path, content)) {
    if (const auto value = ParseJson(content)) return JsonText(Document(*value));
    return "(not shown, since it is no whole JSON and may hold secrets; --show-secrets shows it)\n";
  }
  std::string shown;
  std::string_view rest = content;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = rest.substr(0, end);
    const std::size_t equals = line.find('=');
    const bool is_secret =
        equals != std::string_view::npos && equals + 1 < line.size() && IsSecretKey(line.substr(0, equals));
    shown +=
        is_secret && !choice_.show_secrets ? std::string(line.substr(0, equals + 1)) + kMask : Text(line);
    if (end < rest.size()) shown += '\n';
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return shown;
}

}  // namespace lab
