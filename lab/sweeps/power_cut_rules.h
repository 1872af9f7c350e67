#pragma once

#include <optional>
#include <string>
#include <vector>

#include "lab/sweeps/file_operations.h"
#include "lab/sweeps/migration_run.h"

namespace lab::sweeps {

/// What holds for a device at every instant of its migration, whenever the power is cut.
class PowerCutRules {
 public:
  /// `undisturbed` is what a whole run makes of the device, `operations` what that run did.
  PowerCutRules(Device device, Outcome undisturbed, const std::vector<FileOperation>& operations);

  /// What is wrong with the device as the power cut left it, in words: a document that is not whole, a file
  /// that is lost, a file that went to the archive before every document was durable.
  std::optional<std::string> FindWrongState(const Tree& state) const;

  /// What is wrong with a run that found the device in `state`, in words.
  std::optional<std::string> FindWrongRun(const Tree& state, const Outcome& outcome) const;

 private:
  /// What the run has to leave and to answer.
  struct Expected {
    int status;
    const Tree* files;
    // Of a run that does not migrate: a text of its last log line.
    const char* log;
  };
  Expected ExpectedOn(const Tree& state) const;
  std::optional<std::string> FindWrongWords(const Expected& expected, const Outcome& outcome) const;
  bool IsNew(const std::string& document, const Tree& state) const;

  Device device_;
  Outcome undisturbed_;
  std::vector<std::string> documents_;  // that the run writes
};

}  // namespace lab::sweeps
