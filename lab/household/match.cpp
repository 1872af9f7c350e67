#include "lab/household/match.h"

#include <sodium.h>

#include <algorithm>
#include <optional>
#include <string>

#include "lab/household/legacy_words.h"
#include "lab/household/rotation_date.h"
#include "lab/text/ascii.h"
#include "lab/text/base64.h"

namespace lab {
namespace {

/// What was meant is there: it was read, or it happens to be what stands in for any other value.
Match AsMeant(bool is_spelled_so) {
  return is_spelled_so ? Match::AsMeant : Match::ByLuck;
}

bool IsSpelled(const StoredValue& stored, std::initializer_list<std::string_view> words) {
  return stored.is_key_exact && stored.value &&
         std::ranges::any_of(words, [&](std::string_view word) { return *stored.value == word; });
}

Match MatchFlag(const StoredValue& stored, const Json::Value& now) {
  if (!now.isBool()) return Match::AsMeant;
  if (!stored.value) return Match::NotStored;
  if (LooksOff(*stored.value) == now.asBool()) return Match::Lost;
  return AsMeant(stored.Word().empty() || IsSpelled(stored, {"yes", "no"}));
}

/// A word that is neither yes nor no may have been meant to refuse.
Match MatchRefusal(const StoredValue& stored, const Json::Value& now) {
  if (!now.isBool()) return Match::AsMeant;
  if (stored.Word().empty()) return Match::NotStored;
  if (LooksOn(*stored.value) == now.asBool()) return Match::Lost;
  return AsMeant(IsSpelled(stored, {"yes", "no"}));
}

Match MatchNumber(const StoredValue& stored, const Json::Value& now) {
  if (!now.isInt()) return Match::AsMeant;
  if (stored.Word().empty()) return Match::NotStored;
  if (!IsExactNumber(stored.Word(), now.asInt())) return Match::Lost;
  return AsMeant(stored.is_key_exact);
}

/// "auto" is how the legacy files write the channel 0.
Match MatchChannel(const StoredValue& stored, const Json::Value& now) {
  const bool is_automatic = now == 0 && NormalizeValue(stored.Word()) == "auto";
  return is_automatic ? AsMeant(stored.is_key_exact) : MatchNumber(stored, now);
}

Match MatchWord(const KELP::Wifi::Updater::Vocabulary& vocabulary, const StoredValue& stored,
                const Json::Value& now) {
  if (!now.isInt()) return Match::AsMeant;
  const std::string word = NormalizeValue(stored.Word());
  if (word.empty()) return Match::NotStored;
  for (const auto& known : vocabulary.words) {
    if (ToLowerAscii(known.word) != word || known.value != now.asInt()) continue;
    return AsMeant(IsSpelled(stored, {known.word}));
  }
  return Match::Lost;
}

Match MatchCountry(const StoredValue& stored, const Json::Value& now) {
  if (!now.isString()) return Match::AsMeant;
  if (stored.Word().empty()) return Match::NotStored;
  if (ToLowerAscii(stored.Word()) != ToLowerAscii(now.asString())) return Match::Lost;
  return AsMeant(IsSpelled(stored, {now.asString()}));
}

Match MatchTopology(const StoredValue& stored, const Json::Value& now) {
  if (!now.isString()) return Match::AsMeant;
  const std::string word = NormalizeValue(stored.Word());
  if (word.empty()) return Match::NotStored;
  if (word == "router" ? now != "default" : word != "bridge" || now != "bridge") return Match::Lost;
  return AsMeant(IsSpelled(stored, {word}));
}

Match MatchName(const StoredValue& stored, const Json::Value& now) {
  if (!now.isString()) return Match::AsMeant;
  if (stored.Word().empty()) return Match::NotStored;
  const std::optional<std::string> name = FromBase64(stored.Word());
  if (name ? now != *name : now != stored.Word()) return Match::Lost;
  return AsMeant(stored.is_key_exact);
}

/// An empty text that was encrypted: nothing but what goes with every secret.
bool IsEncryptedNothing(const std::string& word) {
  const std::optional<std::string> bytes = FromBase64(word);
  return bytes && bytes->size() == crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES;
}

/// What is encrypted cannot be compared.
Match MatchSecret(const StoredValue& stored, const Json::Value& now) {
  if (!now.isString()) return Match::AsMeant;
  if (!now.asString().empty() || IsEncryptedNothing(stored.Word())) return Match::AsMeant;
  return stored.Word().empty() ? Match::NotStored : Match::Lost;
}

Match MatchText(const StoredValue& stored, const Json::Value& now) {
  if (!now.isString()) return Match::AsMeant;
  if (stored.Word().empty()) return Match::NotStored;
  if (now != stored.Word()) return Match::Lost;
  return AsMeant(stored.is_key_exact);
}

Match MatchDate(const StoredValue& stored, const Json::Value& now) {
  if (!now.isString()) return Match::AsMeant;
  if (stored.Word().empty()) return Match::NotStored;
  return IsOtherDate(stored.Word(), now.asString()) ? Match::Lost : AsMeant(stored.is_key_exact);
}

Match MatchTime(Form form, const StoredValue& stored, const Json::Value& now) {
  if (!now.isString()) return Match::AsMeant;
  if (stored.Word().empty()) return Match::NotStored;
  const std::optional<RotationTime> time = TimeIn(now.asString());
  const bool is_kept = time && IsExactNumber(stored.Word(), form == Form::Hour ? time->hour : time->minute);
  return is_kept ? AsMeant(stored.is_key_exact) : Match::Lost;
}

/// The days are numbers from 0 to 6, with whatever between them.
Match MatchDays(const StoredValue& stored, const Json::Value& now) {
  if (!now.isString()) return Match::AsMeant;
  if (stored.Word().empty()) return Match::NotStored;
  return now.asString().find_first_of("0123456") == std::string::npos ? Match::Lost : Match::AsMeant;
}

bool IsMailAddress(const Json::Value& address) {
  return address.isString() && !address.asString().empty() &&
         address.asString().find_first_of(" \t\r\n\v\f;") == std::string::npos;
}

Match MatchMails(const StoredValue& stored, const Json::Value& now) {
  if (!now.isArray()) return Match::AsMeant;
  if (stored.Word().empty()) return Match::NotStored;
  const bool is_list = !now.empty() && std::all_of(now.begin(), now.end(), IsMailAddress);
  return is_list ? Match::AsMeant : Match::Lost;
}

}  // namespace

Match MatchOf(const SettingRow& row, const StoredValue& stored, const Json::Value& now) {
  switch (row.form) {
    case Form::Flag:
      return MatchFlag(stored, now);
    case Form::Refusal:
      return MatchRefusal(stored, now);
    case Form::Number:
      return MatchNumber(stored, now);
    case Form::Channel:
      return MatchChannel(stored, now);
    case Form::Word:
      return MatchWord(*row.vocabulary, stored, now);
    case Form::Country:
      return MatchCountry(stored, now);
    case Form::Topology:
      return MatchTopology(stored, now);
    case Form::Name:
      return MatchName(stored, now);
    case Form::Secret:
      return MatchSecret(stored, now);
    case Form::Text:
      return MatchText(stored, now);
    case Form::Date:
      return MatchDate(stored, now);
    case Form::Hour:
    case Form::Minute:
      return MatchTime(row.form, stored, now);
    case Form::Days:
      return MatchDays(stored, now);
    case Form::Mails:
      return MatchMails(stored, now);
    case Form::Rule:
    case Form::Fixed:
      break;
  }
  return Match::AsMeant;
}

}  // namespace lab
