#include "cli/update_handler.h"

#include <cstdint>
#include <exception>
#include <string>

#include "base/file_cache.h"
#include "base/log.h"
#include "cli/failure_report.h"
#include "legacy/device_facts.h"
#include "legacy/update_context.h"
#include "migration/migrate_125_to_13.h"
#include "migration/migrate_13_global_files.h"

namespace KELP::Wifi::Updater {
namespace {

constexpr std::int32_t kFirstBuildOf13 = 8228;
constexpr std::int32_t kFirstBuildWithNewConfig = 9225;

UpdateContext GatherContext(const std::string& build_number) {
  UpdateContext context;
  context.buildNumber = std::stoi(build_number);
  context.meshRole = GetMeshRole();
  context.model = GetSupportedModel();
  return context;
}

}  // namespace

int UpdateConfig(const std::string& build_number) {
  try {
    const FileCacheScope run;
    DispatchUpdate(GatherContext(build_number));
    return 0;
  } catch (const std::exception& error) {
    ReportFailure(error.what(), build_number.c_str());
    return 1;
  }
}

void DispatchUpdate(const UpdateContext& context) {
  if (context.buildNumber < kFirstBuildOf13) {
    Migrate125To13(context);
  } else if (context.buildNumber < kFirstBuildWithNewConfig) {
    Migrate13GlobalFiles(context);
  } else {
    Log(LOG_WARNING, "%s:%d update nothing from %d.", 120, context.buildNumber);
  }
}

}  // namespace KELP::Wifi::Updater
