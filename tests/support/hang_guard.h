#pragma once

#include <csignal>
#include <string>

namespace testing_support {

/// Ends the process, and says that `what` hung, unless this goes out of scope within a minute: for calls that
/// would wait for ever if the code under test were wrong. While one lives in a process others do nothing; a
/// child begins with none.
class HangGuard {
 public:
  explicit HangGuard(const std::string& what);
  HangGuard(const HangGuard&) = delete;
  HangGuard& operator=(const HangGuard&) = delete;
  ~HangGuard();

 private:
  bool is_first_;
  struct sigaction earlier_ {};
};

}  // namespace testing_support
