#pragma once

#include <functional>
#include <string>

namespace testing_support {

/// What `operation` gives in a child process, or the text of its exception.
std::string InChild(const std::function<std::string()>& operation);

/// Runs a test's body, expectations and all, in a child process, with a HangGuard: for one that uses up what
/// the process has only once, such as the time for waiting.
void ExpectInChild(const std::function<void()>& body);

/// As InChild, as a user without any privilege. Only root can become one: see MayBecomeOrdinaryUser().
std::string AsOrdinaryUser(const std::function<std::string()>& operation);

/// Whether this process is root of the host, not only of a user namespace.
bool MayBecomeOrdinaryUser();

struct ShellResult {
  int status = -1;
  /// Both streams.
  std::string output;
};

ShellResult Shell(const std::string& command);

}  // namespace testing_support
