#include "fuzz/support/check.h"

#include <cstdio>
#include <cstdlib>

namespace fuzz {

void Fail(const char* condition, const char* file, int line) noexcept {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
  std::abort();
}

}  // namespace fuzz
