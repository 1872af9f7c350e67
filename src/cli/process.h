#pragma once

namespace KELP::Wifi::Updater {

/// Lets a write to a pipe that nobody holds open, and one beyond the allowed size of files, fail like any
/// other instead of ending the process (SIGPIPE, SIGXFSZ).
void LetWritesFail() noexcept;

/// From now on a std::exception that nobody catches, and a failure for which there is not even memory to
/// throw it, end the process with a report and status 1. `build_number` (as typed, to stay where it is)
/// becomes part of it. Anything else that is thrown still ends the process abnormally.
void ReportWhatNobodyCatches(const char* build_number) noexcept;

}  // namespace KELP::Wifi::Updater
