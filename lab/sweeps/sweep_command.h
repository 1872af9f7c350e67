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

/// What a sweep's main gives: the status of `command`; 2, with the reason on standard error, for an
/// exception.
int RunCommand(const char* name, const std::function<int()>& command);

}  // namespace lab::sweeps
