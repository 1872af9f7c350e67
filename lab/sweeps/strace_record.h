#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lab::sweeps {

/// One system call of a recorded run.
struct SystemCall {
  std::string name;
  int ordinal = 0;                     // among the calls of this name, from 1, as strace's "when=" counts
  std::vector<std::string> arguments;  // as strace prints them
  std::int64_t result = 0;
  std::string error;  // "ENOENT"; empty for a call that succeeded
  bool injected = false;
};

/// The options that make strace write what ParseRecord reads.
std::vector<std::string> RecordOptions();

/// Reads what strace wrote about a program of one thread. Throws std::runtime_error at a line it does not
/// understand.
std::vector<SystemCall> ParseRecord(std::string_view text);

/// The place of the first call that the program's main makes; what precedes it is the loader's. Throws
/// std::runtime_error when the record has no such call.
std::size_t FirstCallOfMain(const std::vector<SystemCall>& calls);

/// What a call is about, the same in every run: the paths among its arguments, or else the descriptor; empty
/// for a call without either.
std::string SubjectOf(const SystemCall& call);

/// The bytes of a quoted argument. Throws std::runtime_error when it is none.
std::string QuotedBytes(std::string_view argument);

}  // namespace lab::sweeps
