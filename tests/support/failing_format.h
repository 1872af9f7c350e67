#pragma once

#include <string_view>

namespace testing_support {

/// While this lives the C library reports an error for each of the calling thread's formats that start with
/// `start` (a literal). The program must wrap vsnprintf and __vsnprintf_chk. One at a time.
class FailingFormat {
 public:
  explicit FailingFormat(std::string_view start);
  FailingFormat(const FailingFormat&) = delete;
  FailingFormat& operator=(const FailingFormat&) = delete;
  ~FailingFormat();
};

}  // namespace testing_support
