#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lab::sweeps {

/// The errors that sweeps let a system call of this name fail with: those that a local file system, a network
/// file system, a lack of descriptors, of memory or of space, a forbidding mode, a device of odd links or an
/// absent reader make the kernel give. None for calls that cannot fail. Throws std::runtime_error for a call
/// of which it is not known how it can fail: nothing is left out silently.
const std::vector<std::string_view>& ErrorsOf(std::string_view call);

/// What a call that creates a file can meet besides.
const std::vector<std::string_view>& ErrorsOfCreation();

/// Whether a call may be repeated after this error as if nothing had happened.
bool IsInterruption(std::string_view error);

/// Whether the error is the answer of a file that is not there.
bool MeansAbsent(std::string_view error);

/// What the C library says for the error of this name: "Input/output error" for "EIO". Empty for no error.
std::string TextOfError(std::string_view name);

}  // namespace lab::sweeps
