#include "cli/failure_report.h"

#include <algorithm>
#include <string_view>

#include "base/log.h"
#include "cli/console.h"

namespace KELP::Wifi::Updater {

void ReportFailure(const char* reason, const char* build_number) noexcept {
  constexpr std::string_view kFrame = "kelpwifiupdater:954 Failed to update config, error: , buildNumber: ";
  constexpr std::size_t kRoom = kLongestLogLine - kFrame.size();
  const std::size_t reason_length = std::string_view(reason).size();
  const std::size_t number_length = std::string_view(build_number).size();
  // Half of the room for each, and what the other leaves of its half.
  const std::size_t number_shown =
      std::min(number_length, std::max(kRoom / 2, kRoom - std::min(reason_length, kRoom)));
  const std::size_t reason_shown = std::min(reason_length, kRoom - number_shown);
  Log(LOG_ERR, "%s:%d Failed to update config, error: %.*s, buildNumber: %.*s", 954,
      static_cast<int>(reason_shown), reason, static_cast<int>(number_shown), build_number);
  WriteToStandardError({"Failed to update config, error: ", reason, "\n"});
}

}  // namespace KELP::Wifi::Updater
