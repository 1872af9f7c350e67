#pragma once

#include <optional>
#include <string>

namespace lab {

/// Lets this process enter private roots and run programs in them, the full way or, as root where that is
/// refused, the plain one (lab/plain/plain_way.h): it tries what the full way takes. Called first thing in
/// main, before any thread exists. In the full way root needs nothing and gets nothing; an ordinary user's
/// process goes on as root of a user namespace of its own, where it may do the same with the user's own
/// files. Throws std::runtime_error with the text of WhyNotPossible().
void EnterNamespaces();

/// Nothing when private roots can be entered on this host. Otherwise a text for a person, of three lines at
/// most: what is missing and what to do about it.
std::optional<std::string> WhyNotPossible();

/// Whether this process may mount and chroot as it is.
bool MayMount();

/// Moves the calling process, which must have one thread, into a user namespace of its own, as its root.
/// Throws std::system_error.
void EnterUserNamespace();

/// Moves the calling process into a mount namespace of its own, from which no mount spreads. The current
/// folder stays what it is; open folders are those of the former namespace. Throws std::system_error.
void EnterMountNamespace();

/// Gives this process and those that it starts from here on a folder for temporary files that nobody else
/// sees and that goes away with the last of them, whatever ends it: a file system in memory, mounted over
/// /sys in a mount namespace of their own and named by TMPDIR. In the plain way it is that of
/// GuardTemporaryFiles(). Called behind EnterNamespaces() and before any thread exists. Throws
/// std::runtime_error.
void KeepTemporaryFilesToThisProcess();

}  // namespace lab
