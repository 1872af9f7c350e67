#pragma once

#include <limits>

namespace testing_support {

/// While this lives the calling thread's allocations fail behind the next `succeeding` ones: so many as
/// `failing` says, all of them unless told otherwise.
class FailingAllocation {
 public:
  explicit FailingAllocation(int succeeding = 0, int failing = std::numeric_limits<int>::max());
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  /// How many allocations failed so far.
  static int Failed();
};

}  // namespace testing_support
