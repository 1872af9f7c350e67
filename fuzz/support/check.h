#pragma once

namespace fuzz {

/// Reports a property that does not hold and aborts, which is what the fuzzer records as a finding.
[[noreturn]] void Fail(const char* condition, const char* file, int line) noexcept;

}  // namespace fuzz

/// Ends the run when a property that every input must have does not hold.
#define FUZZ_CHECK(condition) ((condition) ? void() : fuzz::Fail(#condition, __FILE__, __LINE__))
