#pragma once

#include <string>
#include <vector>

#include "tests/end_to_end/device_tree.h"
#include "tests/support/log_lines.h"

namespace end_to_end {

/// What a run on one sample device is to do, as the files of its folder in expected/ say.
class ExpectedRun {
 public:
  explicit ExpectedRun(std::string device);

  /// The lines of the file "log".
  testing_support::LogLines Log() const;

  /// Every document that the file "paths" calls written is on the device, and holds what the document of that
  /// name in the folder holds.
  void ExpectDocuments(const lab::Tree& after) const;

  /// The device has changed as the file "paths" says, which also lists every file that is to be left as it
  /// was.
  void ExpectPaths(const lab::RunResult& run) const;

 private:
  struct Step {
    std::string kind;  // "written", "moved", "removed" or "left"
    std::string path;
    std::string target;  // of what is moved
  };

  std::vector<Step> Steps() const;
  void ExpectAllNamed(const lab::Tree& before) const;

  std::string device_;
};

/// The text of the document `name` in the expected/ folder of `device`.
std::string ExpectedDocument(const std::string& device, const std::string& name);

}  // namespace end_to_end
