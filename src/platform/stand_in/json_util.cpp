#include "platform/json_util.h"

#include <json/reader.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <stdexcept>

#include "base/durable_file.h"
#include "base/file_content.h"
#include "base/run.h"
#include "platform/stand_in/json/json_text.h"

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

}  // namespace

Json::Value LoadJsonFromFile(const std::string& path) {
  const std::string text = ReadRegularFile(path, kLargestDocument).bytes;

  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value document;
  std::string errors;
  bool parsed = false;
  try {
    parsed = reader->parse(text.data(), text.data() + text.size(), &document, &errors);
  } catch (const Json::Exception& error) {  // nested too deep
    throw Malformed(path, error.what());
  }
  if (!parsed) throw Malformed(path, errors);
  return document;
}

void SaveJsonToFile(const std::string& path, const Json::Value& document) {
  TrustNoFileReadSoFar();
  ReplaceFile(path, ToIndentedText(document) + '\n');
}

std::string GetString(const Json::Value& value, const std::string& name) {
  return GetMember(value, name, Json::stringValue, "string").asString();
}

Json::Value GetArray(const Json::Value& value, const std::string& name) {
  return GetMember(value, name, Json::arrayValue, "array");
}

}  // namespace KELP::Wifi::Util::JsonUtil
