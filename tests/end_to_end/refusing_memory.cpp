// Put into a program: memory is refused for good from one allocation on, whoever asks for it, the C++ runtime
// before main included. The environment variable REFUSED_FROM numbers it, from 0; without it nothing is
// refused. What was asked for in all stands in "/tmp/allocations" after a run that ended in the ordinary way.
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace {

long asked = 0;
long refused_from = -2;  // not looked up yet; -1 for never

bool Refuses() {
  if (refused_from == -2) {
    const char* const text = std::getenv("REFUSED_FROM");
    refused_from = text == nullptr ? -1 : std::strtol(text, nullptr, 10);
  }
  const long number = asked++;
  if (refused_from < 0 || number < refused_from) return false;
  errno = ENOMEM;
  return true;
}

[[gnu::destructor]] void WriteNumber() {
  const long number = asked;
  if (std::FILE* const file = std::fopen("/tmp/allocations", "w")) {
    std::fprintf(file, "%ld", number);
    std::fclose(file);
  }
}

}  // namespace

// The program's own come before those of the C library, for every library that it links.
#pragma GCC diagnostic ignored "-Wpragmas"
#pragma GCC diagnostic ignored "-Wreserved-identifier"
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size) {
  return Refuses() ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
  return Refuses() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
  return Refuses() ? nullptr : __libc_realloc(memory, size);
}

}  // extern "C"
