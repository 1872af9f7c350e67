#include "migration/global_settings.h"

#include <exception>

#include "base/log.h"
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
#include "platform/sdk_utils.h"

namespace KELP::Wifi::Updater {
namespace {

CountryCode ReadCountryCode() {
  try {
    return ToCountryCode(Util::SDKUtils::InfoGetKeyValue("country_code"));
  } catch (const std::exception& error) {
    Log(LOG_ERR, "%s:%d Failed to country code, use US to instead. error: %s", 280, error.what());
    return CountryCode::US;
  }
}

bool ReadBackhaulSwap() {
  try {
    return IsYes(Util::SDKUtils::InfoGetKeyValue("mesh_swap_backhaul_band"));
  } catch (const std::exception& error) {
    Log(LOG_ERR, "%s:%d Failed to get backhaul swap, default false: %s", 300, error.what());
    return false;
  }
}

MeshInfo MeshInfoOf(MeshRole role) {
  MeshInfo info;
  if (role != MeshRole::Standalone) info.connectedModels.insert(Util::SupportedModel::LOTUS);
  info.isRepeater = role == MeshRole::Repeater;
  return info;
}

}  // namespace

void MigrateGlobalSettings(const UpdateContext& context) {
  const CountryCode country = ReadCountryCode();

  Daemon::GlobalData data;
  data.SetLogLevel(kMigratedLogLevel);
  data.SetDefaultModel(context.model);
  data.SetMeshInfo(MeshInfoOf(context.meshRole));
  data.SetCountryCodeSetting(SettingOf(country));
  data.SetBackhaulSwapped(ReadBackhaulSwap());

  Util::JsonUtil::SaveJsonToFile(kGlobalDocument, Util::JsonSerializer::Serialize<Daemon::GlobalData>(data));
}

}  // namespace KELP::Wifi::Updater
