#pragma once

#include <string>

namespace testing_support {

/// Takes what the process writes to one of its standard descriptors, until it goes out of scope.
class CapturedStream {
 public:
  explicit CapturedStream(int descriptor);
  CapturedStream(const CapturedStream&) = delete;
  CapturedStream& operator=(const CapturedStream&) = delete;
  ~CapturedStream();

  /// Everything written so far.
  std::string Text() const;

 private:
  int descriptor_;
  int original_;
  int file_;
};

/// What an operation wrote to the console, and its exit status.
struct ConsoleResult {
  int status = -1;
  std::string out;
  std::string err;
};

/// Calls `operation`, which gives an exit status, with both console streams captured.
template <typename Operation>
ConsoleResult RunOnConsole(Operation operation) {
  const CapturedStream out(1);
  const CapturedStream err(2);
  const int status = operation();
  return {status, out.Text(), err.Text()};
}

}  // namespace testing_support
