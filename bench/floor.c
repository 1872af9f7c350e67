// What the work itself costs: reads files, writes documents and renames files, as the words of the file that
// it is given say one after the other, each ended by a NUL, and decides nothing.
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
  static char words[1 << 20];
  const int file = argument_count == 2 ? open(arguments[1], O_RDONLY | O_CLOEXEC) : -1;
  const ssize_t size = read(file, words, sizeof words);
  close(file);
  if (size < 0) return 2;

  const char* next = words;
  const char* const end = words + size;
  while (next < end) {
    const char* word[3];
    const int count = *next == 'r' ? 2 : 3;  // a step has two words, or three
    for (int i = 0; i < count; ++i, next += strlen(next) + 1) word[i] = next;
    int done = 0;
    if (strcmp(word[0], "read") == 0) done = Read(word[1]);
    if (strcmp(word[0], "write") == 0) done = Write(word[1], word[2]);
    if (strcmp(word[0], "make") == 0) done = Make(word[1], word[2]);
    if (strcmp(word[0], "move") == 0) done = Move(word[1], word[2]);
    if (!done) return 1;
  }
  return 0;
}
