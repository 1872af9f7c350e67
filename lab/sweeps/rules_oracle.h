#pragma once

#include <string>
#include <vector>

#include "lab/sweeps/migration_run.h"

namespace lab::sweeps {

/// What the migration's rules make of a device when everything works, and when one service of the platform or
/// of the file system library fails: one outcome for each call of a service in the run.
struct RulesOracle {
  Outcome undisturbed;
  std::vector<Outcome> with_failed_service;  // each of them once

  /// Whether the rules can give `outcome`; what a line says about the cause of a failure is left out of the
  /// comparison.
  bool Allows(const Outcome& outcome) const;

  /// The file trees of all outcomes, the undisturbed one first.
  std::vector<const Tree*> Trees() const;
};

/// Throws std::runtime_error when the two programs do not agree about the undisturbed run.
RulesOracle AskRules(const Device& device, const Programs& programs, unsigned workers);

/// The outcome with the causes cut from the lines that tell one.
Outcome WithoutCauses(Outcome outcome);

}  // namespace lab::sweeps
