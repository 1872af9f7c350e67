#include "tests/support/failing_allocation.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool is_active = false;
thread_local int left = 0;
thread_local int to_fail = 0;
thread_local int failed = 0;

void* Allocate(std::size_t size) noexcept {
  if (is_active) {
    if (left > 0) {
      --left;
    } else if (failed < to_fail) {
      ++failed;
      return nullptr;
    }
  }
  return std::malloc(size == 0 ? 1 : size);
}

void* AllocateOrThrow(std::size_t size) {
  void* const memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

namespace testing_support {

FailingAllocation::FailingAllocation(int succeeding, int failing) {
  left = succeeding;
  to_fail = failing;
  failed = 0;
  is_active = true;
}

FailingAllocation::~FailingAllocation() {
  is_active = false;
}

int FailingAllocation::Failed() {
  return failed;
}

}  // namespace testing_support

// Every allocation of the program comes here, the standard library's own too.
void* operator new(std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
