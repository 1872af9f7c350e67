#pragma once

namespace testing_support {

/// While this lives asking for the device's model throws something that is no std::exception; the linker puts
/// this between the handler and the question. One at a time.
class FailingFacts {
 public:
  FailingFacts();
  FailingFacts(const FailingFacts&) = delete;
  FailingFacts& operator=(const FailingFacts&) = delete;
  ~FailingFacts();
};

}  // namespace testing_support
