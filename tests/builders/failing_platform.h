#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>

namespace testing_support {

/// While this lives the platform's operations do as it says; the linker puts this between the builders and
/// them. One at a time.
class FailingPlatform {
 public:
  FailingPlatform();
  FailingPlatform(const FailingPlatform&) = delete;
  FailingPlatform& operator=(const FailingPlatform&) = delete;
  ~FailingPlatform();

  static FailingPlatform* Current();

  bool list_allocation_fails = false;
  bool table_allocation_fails = false;
  std::optional<int> section_count;          // what counting the sections of a file gives
  std::set<std::string> sections_that_fail;  // loading them gives `section_result`
  int section_result = -1;
  std::optional<int> usb3_disabled;  // what the boot environment answers
  bool legacy_reads_throw = false;   // something that is no std::exception

  int usb3_calls = 0;
  int lists = 0;  // allocated and not released
  int tables = 0;
  std::size_t list_capacity = 0;
  std::size_t table_capacity = 0;
};

}  // namespace testing_support
