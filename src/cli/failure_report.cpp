#include "cli/failure_report.h"

#include <algorithm>
#include <string_view>

#include "base/log.h"
#include "cli/console.h"

namespace KELP::Wifi::Updater {
namespace {

LogResult LogReason(std::string_view reason, std::string_view build_number) noexcept {
  return LogReport("%s:%d Failed to update config, error: %.*s, buildNumber: %.*s", 954,
                   static_cast<int>(reason.size()), reason.data(), static_cast<int>(build_number.size()),
                   build_number.data());
}

/// Whether the log needs no second try.
bool ReportToLog(std::string_view reason, std::string_view build_number) noexcept {
  LogResult result = LogReason(reason, build_number);
  if (result == LogResult::TooLong) {
    constexpr std::string_view kFrame = "kelpwifiupdater:954 Failed to update config, error: , buildNumber: ";
    constexpr std::size_t kRoom = kMaxLogLine - kFrame.size();
    // Half of the room for each, and what the other leaves of its half.
    const std::size_t number_shown =
        std::min(build_number.size(), std::max(kRoom / 2, kRoom - std::min(reason.size(), kRoom)));
    result = LogReason(reason.substr(0, kRoom - number_shown), build_number.substr(0, number_shown));
  }
  return result != LogResult::NoRoom;
}

}  // namespace

void ReportFailure(const char* reason, const char* build_number) noexcept {
  const bool is_logged = ReportToLog(reason, build_number);
  WriteToStandardError({"Failed to update config, error: ", reason, "\n"});
  if (!is_logged) ReportToLog(reason, build_number);
}

}  // namespace KELP::Wifi::Updater
