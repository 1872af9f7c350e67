#include "bench/peer_check.h"

#include <algorithm>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "lab/text/json.h"
#include "lab/text/utf8.h"

namespace bench {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr const char* kDocuments = "/usr/kelp/etc/wifi/";

Json::Value Parse(const std::string& text) {
  std::optional<Json::Value> document = lab::ParseJson(text);
  if (!document) throw std::runtime_error("no JSON: " + text);
  return std::move(*document);
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
    const std::size_t length = lab::FirstCharacter(rest).size;
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
