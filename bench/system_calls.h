#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "bench/contestant.h"

namespace bench {

/// System calls by their names.
using CallCounts = std::map<std::string, int>;

int Total(const CallCounts& counts);
/// Those that wait until bytes are on the disk.
int Flushes(const CallCounts& counts);

bool CanCountSystemCalls();

/// All of one run's, with those of the loader and of child processes, as strace counts them.
CallCounts CountSystemCalls(const std::filesystem::path& image, const Contestant& contestant);

/// What the program's run looks like from outside.
struct Recording {
  CallCounts from_main;                // without what the loader does
  std::map<std::string, int> opens;    // of each input file, by its path
  std::vector<std::string> inputs;     // in the order of their first opens
  std::vector<std::string> libraries;  // what the loader opened
  lab::RunResult run;
};

/// Records a run of the program.
Recording Record(const std::filesystem::path& image, const Contestant& program);

}  // namespace bench
