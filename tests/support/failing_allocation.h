#pragma once

namespace testing_support {

/// The calling thread's allocations fail while this lives, from the one after the next `succeeding` on.
class FailingAllocation {
 public:
  explicit FailingAllocation(int succeeding = 0);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  /// How many allocations failed so far.
  static int Failed();
};

}  // namespace testing_support
