#include "platform/json_util.h"

#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "base/atomic_file.h"
#include "base/file_cache.h"
#include "base/file_content.h"
#include "platform/stand_in/json/plain_json.h"

namespace KELP::Wifi::Util::JsonUtil {
namespace {

constexpr std::size_t kLargestDocument = 1024 * 1024;

std::runtime_error Malformed(const std::string& path, std::string reason) {
  std::replace(reason.begin(), reason.end(), '\n', ' ');  // what is reported becomes one line of a log
  return std::runtime_error("malformed JSON in " + path + ": " + reason);
}

const Json::Value& GetMember(const Json::Value& value, const std::string& name, Json::ValueType type,
                             const char* kind) {
  if (!value.isObject()) throw std::runtime_error("no object to take the member " + name + " from");
  const Json::Value* member = value.find(name.data(), name.data() + name.size());
  if (member == nullptr) throw std::runtime_error("missing member " + name);
  if (member->type() != type) throw std::runtime_error("member " + name + " is no " + kind);
  return *member;
}

/// Members in byte order, one a line; an array of plain values on one line where it is short enough. Set up
/// once for all documents.
Json::StreamWriter& Writer() {
  static const std::unique_ptr<Json::StreamWriter> writer = [] {
    Json::StreamWriterBuilder builder;
    builder.settings_["commentStyle"] = "None";
    builder.settings_["emitUTF8"] = true;
    return std::unique_ptr<Json::StreamWriter>(builder.newStreamWriter());
  }();
  return *writer;
}

}  // namespace

Json::Value LoadJsonFromFile(const std::string& path) {
  const std::string text = ReadRegularFile(path, kLargestDocument);
  try {
    RequirePlainJson(text);
  } catch (const std::runtime_error& error) {
    throw Malformed(path, error.what());
  }

  // Releases of the library differ in what they let pass, and in how deep. What passed above they read alike;
  // what is left to them is to refuse repeated members.
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder.settings_["stackLimit"] = static_cast<Json::UInt>(kDeepestJson + 1);
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value document;
  std::string errors;
  if (!reader->parse(text.data(), text.data() + text.size(), &document, &errors)) {
    throw Malformed(path, errors);
  }
  return document;
}

void SaveJsonToFile(const std::string& path, const Json::Value& document) {
  InvalidateFileCache();
  std::ostringstream text;
  text.exceptions(std::ios::badbit);  // or it would leave out, without a word, what there is no memory for
  Writer().write(document, &text);
  text << '\n';
  WriteFileAtomically(path, text.str());
}

std::string GetString(const Json::Value& value, const std::string& name) {
  return GetMember(value, name, Json::stringValue, "string").asString();
}

Json::Value GetArray(const Json::Value& value, const std::string& name) {
  return GetMember(value, name, Json::arrayValue, "array");
}

}  // namespace KELP::Wifi::Util::JsonUtil
