// Runs a command and appends to a file what it took: seconds by the clock, seconds of processor time of all
// its processes, and the most memory that one of them had, in KiB.

#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static double Seconds(struct timeval time) {
  return (double)time.tv_sec + (double)time.tv_usec / 1e6;
}

int main(int argument_count, char* arguments[]) {
  if (argument_count < 3) {
    fprintf(stderr, "usage: bench-usage FILE COMMAND [ARGUMENT...]\n");
    return 2;
  }
  struct timespec start;
  struct timespec end;
  clock_gettime(CLOCK_MONOTONIC, &start);
  const pid_t child = fork();
  if (child < 0) return 126;
  if (child == 0) {
    execvp(arguments[2], arguments + 2);
    perror(arguments[2]);
    _exit(127);
  }
  int status = 0;
  struct rusage usage;
  if (wait4(child, &status, 0, &usage) < 0) return 126;
  clock_gettime(CLOCK_MONOTONIC, &end);
  FILE* const file = fopen(arguments[1], "a");
  if (file == NULL) {
    perror(arguments[1]);
    return 126;
  }
  fprintf(file, "%.3f %.3f %ld\n",
          (double)(end.tv_sec - start.tv_sec) + (double)(end.tv_nsec - start.tv_nsec) / 1e9,
          Seconds(usage.ru_utime) + Seconds(usage.ru_stime), usage.ru_maxrss);
  if (fclose(file) != 0) return 126;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 125;
}
