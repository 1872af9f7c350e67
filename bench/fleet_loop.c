// Enters laid-out devices by chroot, one after another, and runs the program there: what a fleet cannot do
// without. Prints nothing; exit status 1 where a device could not be entered.

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argument_count, char* arguments[]) {
  if (argument_count != 5) {
    fprintf(stderr, "usage: bench-fleet-loop FOLDER COUNT PROGRAM BUILD\n");
    return 2;
  }
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  const long count = strtol(arguments[2], NULL, 10);
  for (long device = 1; device <= count; ++device) {
    char path[4096];
    snprintf(path, sizeof path, "%s/%ld", arguments[1], device);
    const pid_t child = vfork();
    if (child < 0) return 1;
    if (child == 0) {
      if (dup2(nothing, 0) < 0 || dup2(nothing, 1) < 0 || dup2(nothing, 2) < 0) _exit(126);
      if (chroot(path) != 0 || chdir("/") != 0) _exit(126);
      execl(arguments[3], arguments[3], "--update-config", arguments[4], (char*)NULL);
      _exit(126);
    }
    int status = 0;
    if (waitpid(child, &status, 0) < 0 || (WIFEXITED(status) && WEXITSTATUS(status) == 126)) return 1;
  }
  return 0;
}
