#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/support/log_lines.h"

namespace testing_support {

/// Key and value of a legacy file, in file order.
using Entries = std::vector<std::pair<std::string, std::string>>;

/// A device that tests lay out from outside and run the program's operations on.
class TestDevice {
 public:
  /// The device's files. Only to be touched while nothing runs on the device.
  lab::PrivateRoot& Files() { return files_; }

  void WriteEntries(const std::string& path, const Entries& entries);
  /// The information store.
  void WriteInfo(const Entries& entries);
  /// A kernel entry: twelve digits, as the kernel prints them.
  void WriteKernelMAC(int number, std::string_view digits);

  /// Calls `operation` on the device and gives its result or throws its exception. Log() then has the lines
  /// that it logged.
  template <typename Operation>
  auto Run(Operation operation) {
    lab::InRoot inside(files_);
    struct KeepLog {
      lab::InRoot& inside;
      LogLines& log;
      ~KeepLog() { log = PrintLog(inside.Log()); }
    } keep_log{inside, log_};
    return operation();
  }

  /// As Run, for an operation that is to throw an E: its what(), "nothing thrown" when it throws nothing. Any
  /// other exception passes on and fails the test.
  template <typename E, typename Operation>
  std::string RunThrowing(Operation operation) {
    std::string what;
    try {
      Run(operation);
      what = "nothing thrown";
    } catch (const E& error) {
      what = error.what();
    }
    return what;
  }

  const LogLines& Log() const { return log_; }

 private:
  lab::PrivateRoot files_;
  LogLines log_;
};

}  // namespace testing_support
