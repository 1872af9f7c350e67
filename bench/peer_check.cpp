#include "bench/peer_check.h"

#include <json/reader.h>
#include <json/value.h>

#include <algorithm>
#include <array>
#include <memory>
#include <set>
#include <stdexcept>
#include <string_view>

namespace bench {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr const char* kDocuments = "/usr/kelp/etc/wifi/";

bool IsContinuation(unsigned char byte) {
  return (byte & 0xC0U) == 0x80U;
}

/// The length of the character that `bytes` starts with; 0 where it starts with none. Surrogates, overlong
/// forms and numbers beyond Unicode's are none.
std::size_t CharacterLength(std::string_view bytes) {
  struct Form {
    unsigned char first, last;  // of the first byte
    std::size_t length;
    unsigned char second_first, second_last;  // of the second byte
  };
  constexpr std::array kForms{
      Form{0x00, 0x7F, 1, 0, 0},       Form{0xC2, 0xDF, 2, 0x80, 0xBF}, Form{0xE0, 0xE0, 3, 0xA0, 0xBF},
      Form{0xE1, 0xEC, 3, 0x80, 0xBF}, Form{0xED, 0xED, 3, 0x80, 0x9F}, Form{0xEE, 0xEF, 3, 0x80, 0xBF},
      Form{0xF0, 0xF0, 4, 0x90, 0xBF}, Form{0xF1, 0xF3, 4, 0x80, 0xBF}, Form{0xF4, 0xF4, 4, 0x80, 0x8F}};
  const auto byte = [&](std::size_t place) { return static_cast<unsigned char>(bytes[place]); };
  const auto* const form = std::find_if(kForms.begin(), kForms.end(), [&](const Form& candidate) {
    return byte(0) >= candidate.first && byte(0) <= candidate.last;
  });
  if (form == kForms.end() || form->length > bytes.size()) return 0;
  if (form->length > 1 && (byte(1) < form->second_first || byte(1) > form->second_last)) return 0;
  for (std::size_t place = 2; place < form->length; ++place) {
    if (!IsContinuation(byte(place))) return 0;
  }
  return form->length;
}

Json::Value Parse(const std::string& text) {
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  Json::Value document;
  std::string errors;
  if (!reader->parse(text.data(), text.data() + text.size(), &document, &errors)) {
    throw std::runtime_error("no JSON: " + errors);
  }
  return document;
}

std::string Print(const Json::Value& value) {
  std::string text = value.toStyledString();
  text.pop_back();
  return text;
}

class Comparison {
 public:
  std::vector<std::string> differences;

  void Compare(const std::string& place, const Json::Value& program, const Json::Value& peer) {
    if (program.isObject() && peer.isObject()) return CompareMembers(place, program, peer);
    if (program.isArray() && peer.isArray() && program.size() == peer.size()) {
      for (Json::ArrayIndex i = 0; i < program.size(); ++i) {
        Compare(place + "/" + std::to_string(i), program[i], peer[i]);
      }
      return;
    }
    const bool same = program.isString() && peer.isString()
                          ? OnlyUtf8(program.asString()) == OnlyUtf8(peer.asString())
                          : program == peer;
    if (!same) differences.push_back(place + ": " + Print(program) + " became " + Print(peer));
  }

 private:
  void CompareMembers(const std::string& place, const Json::Value& program, const Json::Value& peer) {
    std::set<std::string> names;
    for (const Json::Value* object : {&program, &peer}) {
      for (const std::string& name : object->getMemberNames()) names.insert(name);
    }
    names.erase("password");
    for (const std::string& name : names) {
      const std::string member = place + "/" + name;
      if (!program.isMember(name) || !peer.isMember(name)) {
        differences.push_back(member + ": in one of the two only");
      } else {
        Compare(member, program[name], peer[name]);
      }
    }
  }
};

bool IsDocument(const std::string& path, const lab::Entry& entry) {
  return entry.kind == lab::Entry::Kind::File && path.starts_with(kDocuments) &&
         path.find(".json") != std::string::npos;
}

}  // namespace

std::string OnlyUtf8(const std::string& bytes) {
  std::string text;
  std::string_view rest = bytes;
  bool in_run = false;
  while (!rest.empty()) {
    const std::size_t length = CharacterLength(rest);
    const bool is_character = length > 0 && rest.substr(0, length) != kReplacement;
    if (is_character) {
      text += rest.substr(0, length);
    } else if (!in_run) {
      text += kReplacement;
    }
    in_run = !is_character;
    rest.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text;
}

std::vector<std::string> DocumentDifferences(const lab::Tree& program, const lab::Tree& peer) {
  Comparison comparison;
  std::set<std::string> documents;
  for (const lab::Tree* tree : {&program, &peer}) {
    for (const auto& [path, entry] : *tree) {
      if (IsDocument(path, entry)) documents.insert(path);
    }
  }
  for (const std::string& path : documents) {
    const auto of_program = program.find(path);
    const auto of_peer = peer.find(path);
    if (of_program == program.end() || of_peer == peer.end()) {
      comparison.differences.push_back(path + ": written by one of the two only");
    } else {
      comparison.Compare(path, Parse(of_program->second.content), Parse(of_peer->second.content));
    }
  }
  return comparison.differences;
}

}  // namespace bench
