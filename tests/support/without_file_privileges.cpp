#include "tests/support/without_file_privileges.h"

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace testing_support {
namespace {

constexpr std::uint32_t kFilePrivileges = (1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH);

using Capabilities = std::array<__user_cap_data_struct, 2>;

Capabilities Get() {
  __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
  Capabilities data{};
  if (::syscall(SYS_capget, &header, data.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "capget");
  }
  return data;
}

void Set(const Capabilities& data) {
  __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
  if (::syscall(SYS_capset, &header, data.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "capset");
  }
}

}  // namespace

WithoutFilePrivileges::WithoutFilePrivileges() {
  Capabilities data = Get();
  effective_ = data[0].effective;
  data[0].effective &= ~kFilePrivileges;
  Set(data);
}

WithoutFilePrivileges::~WithoutFilePrivileges() {
  Capabilities data = Get();
  data[0].effective = effective_;
  Set(data);
}

}  // namespace testing_support
