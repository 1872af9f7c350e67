#include "cli/process.h"

#include <csignal>
#include <cstdlib>
#include <exception>

#include "cli/failure_report.h"

namespace KELP::Wifi::Updater {
namespace {

constexpr int kFailed = 1;

const char* reported_build_number = "";

[[noreturn]] void ReportAndEnd(const char* reason) {
  ReportFailure(reason, reported_build_number);
  std::_Exit(kFailed);  // what would run at an ordinary end may need what is missing
}

[[noreturn]] void AtTermination() {
  // Without an exception there was no memory for one: the first thing that throwing does is to ask for it.
  if (std::current_exception() == nullptr) ReportAndEnd("std::bad_alloc");
  try {
    // cppcheck-suppress rethrowNoCurrentException  ; looked at before
    throw;
  } catch (const std::exception& error) {
    ReportAndEnd(error.what());
  } catch (...) {
  }
  std::abort();
}

}  // namespace

void LetWritesFail() noexcept {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

void ReportWhatNobodyCatches(const char* build_number) noexcept {
  reported_build_number = build_number;
  std::set_terminate(AtTermination);
}

}  // namespace KELP::Wifi::Updater
