#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "lab/sweeps/migration_run.h"

namespace lab::sweeps {

/// The boot behind a power cut, at which a script calls the program, as packaging/first-boot/kelp-first-boot
/// does: with what that script had on record when the power went, and with the household's undisturbed
/// migration as what has to come of it.
class NextBoot {
 public:
  /// `undisturbed` is what the bare program makes of the device. Lets the script run on the device up to
  /// where it calls the program. Throws std::runtime_error when it does not get there.
  NextBoot(const std::filesystem::path& script, const Device& device, Programs programs, Outcome undisturbed);

  /// What is wrong with what the script makes of a device that a power cut in the program left in `state`, in
  /// words.
  std::optional<std::string> FindWrong(const Tree& state) const;

 private:
  Outcome Boot(Tree files, const std::string& settings) const;

  std::string script_;  // its text
  int build_number_;
  Programs programs_;
  Outcome undisturbed_;
  Tree records_;
};

}  // namespace lab::sweeps
