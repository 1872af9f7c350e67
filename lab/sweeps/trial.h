#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace lab::sweeps {

/// How a trial ended: well or not, and in either case what is to be said about it.
struct TrialResult {
  bool is_well = false;
  std::string text{};
};

TrialResult Well();
TrialResult Wrong(std::string what);

/// One disturbed run of the program.
struct Trial {
  std::string name;     // to ask for it again
  std::string kind;     // by which it is counted
  std::string command;  // what is put before the program; empty where no command does it
  std::function<TrialResult()> run;
};

/// Makes the trials, so many at a time, and gives their results in order.
std::vector<TrialResult> Make(const std::vector<Trial>& trials, unsigned workers);

/// A sample of the trials, as DrawSample draws it.
std::vector<Trial> Sample(const std::vector<Trial>& trials, std::size_t count, std::uint64_t seed);

/// Those with the names, in order. Throws std::runtime_error for a name that none has.
std::vector<Trial> Named(const std::vector<Trial>& trials, const std::vector<std::string>& names);

/// Prints how many trials of each kind were made and how many ended well, with what is to be said about
/// those. Gives whether all did.
bool PrintCounts(const std::vector<Trial>& trials, const std::vector<TrialResult>& results);

}  // namespace lab::sweeps
