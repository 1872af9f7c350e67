#pragma once

namespace KELP::Wifi::Updater {

/// Reports why the update failed: to the system log first, with the build number as it was typed, then to
/// standard error. A log that has no room for half of ReportWaitBudget is tried again once standard error has
/// had its turn. Where the log does not take the whole line its reason is cut, and the build number where
/// that alone is too long; standard error gets the whole reason. Needs no memory.
void ReportFailure(const char* reason, const char* build_number) noexcept;

}  // namespace KELP::Wifi::Updater
