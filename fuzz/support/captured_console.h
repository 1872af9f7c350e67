#pragma once

#include <string>

namespace fuzz {

/// For as long as it lives, what the code under test writes to standard error is kept here instead; the
/// fuzzer's and the sanitizers' own reports are not touched. One at a time; for targets linked with a write
/// of their own.
class CapturedStandardError {
 public:
  CapturedStandardError();
  CapturedStandardError(const CapturedStandardError&) = delete;
  CapturedStandardError& operator=(const CapturedStandardError&) = delete;
  ~CapturedStandardError();

  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace fuzz
