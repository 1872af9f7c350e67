#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace testing_support {

/// What calls of the C library, and of the other libraries that the program links, do while this lives. Only
/// calls that are made by name are reached, and of those the ones that the build lists for wrapping. One at a
/// time.
class FailingCalls {
 public:
  FailingCalls();
  FailingCalls(const FailingCalls&) = delete;
  FailingCalls& operator=(const FailingCalls&) = delete;
  ~FailingCalls();

  /// The `nth` call of `name` from now on (1 for the next) fails with `error` (0: without one, errno stays as
  /// it was); `times` calls in a row do.
  void Fail(const std::string& name, int error, int nth = 1, int times = 1);
  /// Every write takes at most `size` bytes.
  void WriteAtMost(std::size_t size);

  /// The names of the calls made since this was made, in order, of those that stand in `names`.
  std::vector<std::string> Made(const std::vector<std::string>& names) const;

  /// For the wrappers: notes the call; true, with errno set, when it has to fail.
  bool MustFail(const char* name);
  std::size_t LargestWrite() const { return largest_write_; }

  static FailingCalls* Current();

 private:
  struct Failure {
    int error;
    int calls_before;
    int times;
  };

  std::map<std::string, Failure> failures_;
  std::vector<std::string> made_;
  std::size_t largest_write_ = static_cast<std::size_t>(-1);
  bool busy_ = false;
};

/// While this lives the C library reports an error for each of the calling thread's formats that start with
/// `start` (a literal). One at a time.
class FailingFormat {
 public:
  explicit FailingFormat(std::string_view start);
  FailingFormat(const FailingFormat&) = delete;
  FailingFormat& operator=(const FailingFormat&) = delete;
  ~FailingFormat();
};

}  // namespace testing_support
