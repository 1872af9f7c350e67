#pragma once

#include <set>
#include <string>
#include <vector>

#include "lab/sweeps/migration_run.h"

namespace lab::sweeps {

/// What the migration's rules make of a device when everything works, and when one service of the platform or
/// of the file system library fails: one outcome for each call of a service in the run.
struct RulesOracle {
  /// What comes out when one of the services that are about one of these places fails.
  struct FailedService {
    std::set<std::string> places;  // the files and folders that a failed one was about
    Outcome outcome;
  };

  Outcome undisturbed;
  std::vector<FailedService> with_failed_service;  // each outcome once
  std::vector<Tree> without_a_file;  // what a run leaves where one of the device's files is missing

  /// Whether the rules can give `outcome` when something fails that is about the file or folder `place`. What
  /// no service names is the boot environment's, which the library behind it looks after.
  bool Allows(const Outcome& outcome, const std::string& place) const;

  /// The file trees of all outcomes, the undisturbed one first.
  std::vector<const Tree*> Trees() const;
};

/// Throws std::runtime_error when the two programs do not agree about the undisturbed run.
RulesOracle AskRules(const Device& device, const Programs& programs, unsigned workers);

/// The outcome without what the rules leave open: what a line says about the cause of a failure, and how far
/// the writing of a document had come whose leftover an earlier run had left.
Outcome AsRulesSeeIt(Outcome outcome);

}  // namespace lab::sweeps
