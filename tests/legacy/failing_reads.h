#pragma once

#include <string>

namespace testing_support {

/// While this lives the reads that it names throw something that is no std::exception; the linker puts this
/// between the legacy sources and the platform. One at a time.
class FailingReads {
 public:
  FailingReads();
  FailingReads(const FailingReads&) = delete;
  FailingReads& operator=(const FailingReads&) = delete;
  ~FailingReads();

  static FailingReads* Current();

  std::string key;       // of the information store, or of a key=value file
  std::string document;  // the path of a JSON file
};

}  // namespace testing_support
