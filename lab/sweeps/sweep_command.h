#pragma once

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace lab::sweeps {

/// What a sweep is to be made of.
struct Subject {
  std::string image;     // folder
  int build_number = 0;  // that the device is updated from
  unsigned workers = 2;  // processes at a time
};

/// Lets the command line name the subject.
void AddSubject(CLI::App& app, Subject& subject);

/// Makes the sweep and gives its exit status: 0 when it gave true, 1 for false, and 2, with the reason on
/// standard error, when it could not be made.
int RunSweep(const char* name, const std::function<bool()>& sweep);

}  // namespace lab::sweeps
