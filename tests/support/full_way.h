#pragma once

#include <string>

#include "lab/runs/program_run.h"
#include "tests/support/child_process.h"

namespace testing_support {

/// Ends the test that is running as skipped, from wherever this is called.
[[noreturn]] void SkipTest(const std::string& reason);

/// Skips the test where private roots are entered the plain way, for what takes mounts or namespaces itself.
void RequireFullWay();

/// Without what devicelab says once where it takes the plain way.
ShellResult WithoutNotice(ShellResult result);

/// What `run` gives. Skips the test where the plain way cannot run what it asks for.
template <typename Run>
auto RunOrSkip(Run run) {
  try {
    return run();
  } catch (const lab::NeedsMounts& reason) {
    SkipTest(reason.what());
  }
}

}  // namespace testing_support
