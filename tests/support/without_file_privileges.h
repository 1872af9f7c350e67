#pragma once

#include <cstdint>

namespace testing_support {

/// Takes the right to read and write every file whatever its mode from the calling thread, as an ordinary
/// user lacks it, until it goes out of scope.
class WithoutFilePrivileges {
 public:
  WithoutFilePrivileges();
  WithoutFilePrivileges(const WithoutFilePrivileges&) = delete;
  WithoutFilePrivileges& operator=(const WithoutFilePrivileges&) = delete;
  ~WithoutFilePrivileges();

 private:
  std::uint32_t effective_;
};

}  // namespace testing_support
