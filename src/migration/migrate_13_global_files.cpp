#include "migration/migrate_13_global_files.h"
#include <json/value.h>

#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>

#include "base/atomic_file.h"
#include "base/file_cache.h"
#include "legacy/device_facts.h"
#include "legacy/enumeration_text.h"
#include "legacy/legacy_value.h"
#include "legacy/update_context.h"
#include "migration/document_paths.h"
#include "migration/global_values.h"
#include "platform/json_serializer.h"
#include "platform/json_util.h"
#include "platform/records/country_code.h"
#include "platform/records/global_data.h"
#include "platform/records/supported_model.h"

namespace KELP::Wifi::Updater {
namespace {

using Util::SupportedModel;

constexpr const char* kModelFile = "/usr/kelp/etc/wifi/model.json";
constexpr const char* kCountryFile = "/usr/kelp/etc/wifi/country.json";
constexpr const char* kBackhaulFile = "/usr/kelp/etc/wifi/backhaul.json";
constexpr const char* kMeshRoleFile = "/usr/kelp/etc/mesh/mesh_role.conf";

void RequireOldFiles() {
  for (const char* file : {kModelFile, kCountryFile, kBackhaulFile}) {
    if (!std::filesystem::exists(file)) throw std::runtime_error("some old config files are not existed.");
  }
}

std::set<SupportedModel> ReadConnectedModels() {
  const Json::Value names =
      Util::JsonUtil::GetArray(Util::JsonUtil::LoadJsonFromFile(kModelFile), "connected_models");
  std::set<SupportedModel> models;
  for (const Json::Value& name : names) models.insert(ToSupportedModel(name.asString()));
  return models;
}

CountryCode ReadCountryCode() {
  return ToCountryCode(
      Util::JsonUtil::GetString(Util::JsonUtil::LoadJsonFromFile(kCountryFile), "country_code"));
}

bool ReadBackhaulSwap() {
  const Json::Value bands =
      Util::JsonUtil::GetArray(Util::JsonUtil::LoadJsonFromFile(kBackhaulFile), "radio_frequencies");
  for (const Json::Value& band : bands) {
    const std::string name = band.asString();
    if (name == "Band5GHz_2") return true;
    if (name == "Band5GHz_1") return false;
  }
  return false;
}

}  // namespace

void Migrate13GlobalFiles(const UpdateContext& /*context*/) {
  RequireOldFiles();
  const std::set<SupportedModel> connected_models = ReadConnectedModels();
  const CountryCode country = ReadCountryCode();
  const bool backhaul_swapped = ReadBackhaulSwap();

  Daemon::GlobalData data;
  data.SetLogLevel(kMigratedLogLevel);
  data.SetDefaultModel(GetSupportedModel());
  MeshInfo mesh;
  mesh.connectedModels = connected_models;
  mesh.isRepeater = ReadLegacyValue(kMeshRoleFile, "role", "") == "re";
  data.SetMeshInfo(mesh);
  data.SetCountryCodeSetting(SettingOf(country));
  data.SetBackhaulSwapped(backhaul_swapped);
  Util::JsonUtil::SaveJsonToFile(kGlobalDocument, Util::JsonSerializer::Serialize<Daemon::GlobalData>(data));

  FlushDirectory(kDocumentFolder);  // before what the document was made from goes
  InvalidateFileCache();
  std::filesystem::remove(kModelFile);
  std::filesystem::remove(kCountryFile);
}

}  // namespace KELP::Wifi::Updater
