#pragma once

#include <sys/types.h>

namespace lab {

/// Makes a copy of this process, as fork(2) does, that is shut off: it is the first of a process namespace,
/// so that nothing that it starts outlives it or gets away from it; it has mounts of its own, which go away
/// with it; and it is killed when this process ends. Its umask is 022, and it dumps no core. Gives its number
/// here, and 0 in the copy. Needs a process with one thread that may mount (EnterNamespaces()). Throws
/// std::system_error.
///
/// In the plain way it is no more than a process that adopts what its children leave behind: EndSealed()
/// takes them along, and where it is killed otherwise, GuardTemporaryFiles().
pid_t ForkSealed();

/// Ends it, and all that it started, and waits for that.
void EndSealed(pid_t process);

/// In such a copy: kills all that it has started and all that those started. Gives the end of `child`, as
/// waitpid(2) does.
int KillAll(pid_t child);

}  // namespace lab
