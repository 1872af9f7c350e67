#include "lab/page/page.h"

#include <json/value.h>
#include <sodium.h>

#include <array>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "lab/household/findings.h"
#include "lab/household/message_kinds.h"
#include "lab/page/page_text.h"
#include "lab/page/script_data.h"
#include "lab/runs/outcome.h"
#include "lab/text/base64.h"

namespace lab::page {
namespace {

const char* KindName(Kind kind) {
  switch (kind) {
    case Kind::Household:
      return "household";
    case Kind::Fleet:
      return "fleet";
    case Kind::Comparison:
      break;
  }
  return "comparison";
}

/// What the ids and numbers in the records mean.
Json::Value Meanings() {
  Json::Value meanings;
  for (const Outcome outcome : AllOutcomes()) meanings["outcomes"].append(std::string(OutcomeName(outcome)));
  for (const FindingKind& kind : FindingKinds()) {
    Json::Value& entry = meanings["findings"].append(Json::Value(Json::objectValue));
    entry["id"] = std::string(kind.id);
    entry["title"] = std::string(kind.title);
    entry["severity"] = std::string(SeverityName(kind.severity));
    entry["meaning"] = std::string(kind.meaning);
    entry["remedy"] = std::string(kind.remedy);
  }
  for (const MessageKind& kind : MessageKinds()) {
    Json::Value& entry = meanings["messages"].append(Json::Value(Json::objectValue));
    entry["number"] = kind.number;
    entry["cause"] = std::string(kind.cause);
    entry["effect"] = std::string(kind.effect);
    entry["remedy"] = std::string(kind.remedy);
  }
  return meanings;
}

/// The name by which a page's policy lets in a style or a script that stands in the page: "'sha256-...'".
std::string PolicySource(std::string_view text) {
  std::array<unsigned char, crypto_hash_sha256_BYTES> hash{};
  crypto_hash_sha256(hash.data(), reinterpret_cast<const unsigned char*>(text.data()), text.size());
  return "'sha256-" + ToBase64({reinterpret_cast<const char*>(hash.data()), hash.size()}) + "'";
}

std::string Script() {
  std::string script;
  for (const char* const name :
       {"data.js", "elements.js", "household.js", "comparison.js", "devices.js", "overview.js", "main.js"}) {
    script += PageText(name);
  }
  return script;
}

}  // namespace

void Page::Add(std::string_view json) {
  const std::optional<std::string> device = shared_.Share(json);
  if (!device || !device->starts_with('{')) throw std::invalid_argument("a page takes JSON objects");
  devices_ += (devices_.empty() ? "" : ",\n") + *device;
}

std::string Page::Data() const {
  std::string shared;
  for (const std::string& text : shared_.Texts()) shared += (shared.empty() ? "\n" : ",\n") + text;
  return R"({"kind":")" + std::string(KindName(kind_)) + R"(","unchanged":)" + std::to_string(unchanged_) +
         R"(,"meanings":)" + ScriptData(Meanings()) + R"(,"shared":[)" + shared + R"(],"devices":[)" +
         devices_ + "]}";
}

std::string Page::Html() const {
  const std::string_view style = PageText("page.css");
  const std::string script = Script();
  const std::array<std::pair<std::string_view, std::string>, 4> parts{{
      {"@policy@", "default-src 'none'; style-src " + PolicySource(style) + "; script-src " +
                       PolicySource(script) + "; base-uri 'none'; form-action 'none'"},
      {"@style@", std::string(style)},
      {"@data@", Data()},
      {"@script@", script},
  }};
  // In the order in which they stand there: what is put in is not looked through.
  std::string html;
  std::string_view rest = PageText("page.html");
  for (const auto& [name, text] : parts) {
    const std::size_t place = rest.find(name);
    html += rest.substr(0, place);
    html += text;
    rest.remove_prefix(place + name.size());
  }
  html += rest;
  return html;
}

}  // namespace lab::page
