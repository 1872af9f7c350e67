#include <json/reader.h>
#include <json/writer.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>

#include "platform/exceptions.h"
#include "platform/json_util.h"

namespace KELP::Wifi::Util {
namespace {

constexpr const char* kFolder = "/var/second";
constexpr const char* kSaving = "/var/second/saving";
constexpr const char* kJournal = "/var/second/journal";
constexpr mode_t kMode = 0640;

std::string ToLines(const Json::Value& document) {
  if (!document.isArray()) return document.asString() + '\n';
  std::string lines;
  for (const Json::Value& element : document) lines += ToLines(element);
  return lines;
}

}  // namespace

Json::Value JsonUtil::LoadJsonFromFile(const std::string& path) {
  std::ifstream file(path);
  Json::Value document;
  std::string reasons;
  if (!Json::parseFromStream(Json::CharReaderBuilder(), file, &document, &reasons)) {
    throw RuntimeError("%s makes no sense", path.c_str());
  }
  return document;
}

void JsonUtil::SaveJsonToFile(const std::string& path, const Json::Value& document) {
  ::mkdir(kFolder, S_IRWXU);
  std::ofstream file(kSaving);
  file << ToLines(document);
  file.close();
  if (!file || ::chmod(kSaving, kMode) != 0 || std::rename(kSaving, path.c_str()) != 0) {
    throw RuntimeError("%s is not saved", path.c_str());
  }
  std::ofstream(kJournal, std::ios::app) << path << '\n';
}

std::string JsonUtil::GetString(const Json::Value& object, const std::string& name) {
  if (!object[name].isString()) throw RuntimeError("%s is no text", name.c_str());
  return object[name].asString();
}

const Json::Value& JsonUtil::GetArray(const Json::Value& object, const std::string& name) {
  if (!object[name].isArray()) throw RuntimeError("%s is no list", name.c_str());
  return object[name];
}

}  // namespace KELP::Wifi::Util
