#pragma once

namespace KELP::Wifi::Updater {

/// Reports why the update failed: to the system log first, with the build number as it was typed, then to
/// standard error. Of a line too long for the log the reason is cut, and the build number where that alone
/// is too long; standard error gets the whole reason. Needs no memory.
void ReportFailure(const char* reason, const char* build_number) noexcept;

}  // namespace KELP::Wifi::Updater
