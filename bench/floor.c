// What the work itself costs: reads files, writes documents and renames files, as its arguments say one after
// the other, and decides nothing.
//
//   read PATH                 reads a file once
//
//   write PATH BYTES          puts a document in its place: all or nothing, for its owner alone
//
//   make DIRECTORY PARENT     makes a directory and flushes the one that it stands in
//
//   move FROM TO              renames a file
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

static int Failed(const char* what) {
  perror(what);
  return 0;
}

static int Read(const char* path) {
  static char bytes[65536];
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return Failed(path);
  ssize_t got;
  do {
    got = read(file, bytes, sizeof bytes);
  } while (got > 0);
  close(file);
  return got == 0 || Failed(path);
}

static int Write(const char* path, const char* bytes) {
  char temporary[256];
  snprintf(temporary, sizeof temporary, "%s.new", path);
  const size_t size = strlen(bytes);
  const int file = open(temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  const int written = file >= 0 && fchmod(file, 0600) == 0 && write(file, bytes, size) == (ssize_t)size &&
                      fsync(file) == 0 && close(file) == 0 && rename(temporary, path) == 0;
  return written || Failed(path);
}

static int Make(const char* directory, const char* parent_path) {
  if (mkdir(directory, 0755) != 0 && errno != EEXIST) return Failed(directory);
  const int parent = open(parent_path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (parent < 0) return Failed(parent_path);
  const int flushed = fsync(parent) == 0;
  close(parent);
  return flushed || Failed(parent_path);
}

static int Move(const char* from, const char* to) {
  return rename(from, to) == 0 || Failed(from);
}

int main(int argument_count, char** arguments) {
  char** const end = arguments + argument_count;
  char** next = arguments + 1;
  while (next < end) {
    const char* const step = *next++;
    int done = 0;
    if (strcmp(step, "read") == 0 && end - next >= 1) {
      done = Read(next[0]);
      next += 1;
    } else if (strcmp(step, "write") == 0 && end - next >= 2) {
      done = Write(next[0], next[1]);
      next += 2;
    } else if (strcmp(step, "make") == 0 && end - next >= 2) {
      done = Make(next[0], next[1]);
      next += 2;
    } else if (strcmp(step, "move") == 0 && end - next >= 2) {
      done = Move(next[0], next[1]);
      next += 2;
    }
    if (!done) return 1;
  }
  return 0;
}
