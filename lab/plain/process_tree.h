#pragma once

#include <sys/types.h>

namespace lab {

// Processes that a program starts may leave its process group and its session. Below a process that adopts
// (PR_SET_CHILD_SUBREAPER) they stay descendants of it, whoever their parents were.

/// Lets this process adopt what its descendants leave behind.
void AdoptDescendants();

/// In a process that adopts: kills all of its descendants and waits for their end. Gives the status of
/// `child` as waitpid(2) does.
int KillOwnDescendants(pid_t child);

/// Kills `process`, a child of this one that adopts, and all of its descendants, whose end it waits for. The
/// end of `process` is the caller's to wait for.
void KillTree(pid_t process);

/// Called in a process just made with fork(2) by `starter`. Goes on in a child of it, and gives the number of
/// the process between them. That one adopts, kills what the child leaves behind when it ends, and ends as it
/// did.
pid_t GoOnBelowAdopter(pid_t starter);

/// Kills, whoever started them, all processes whose root folder is below `folder`, as far as this process may
/// see that.
void KillThoseRootedBelow(const char* folder);

}  // namespace lab
