#pragma once

#include <cerrno>
#include <utility>

namespace KELP::Wifi {

/// An open file descriptor, closed when it goes out of scope; -1 stands for none.
class UniqueFd {
 public:
  explicit UniqueFd(int descriptor = -1) : descriptor_(descriptor) {}
  UniqueFd(UniqueFd&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd() { Close(); }

  int Get() const { return descriptor_; }
  bool IsOpen() const { return descriptor_ >= 0; }

  /// False, with errno, when the kernel reports an error at closing; the descriptor is gone either way.
  bool Close() noexcept;

 private:
  int descriptor_;
};

/// Calls `operation` again for as long as a signal interrupts it; gives its result, errno with it.
template <typename Operation>
auto RetryInterrupted(Operation operation) {
  auto result = operation();
  while (result == -1 && errno == EINTR) result = operation();
  return result;
}

/// Writes all of `size` bytes at `data`, however many the kernel takes at a time. False, with errno, on
/// failure; that the kernel takes none at all counts as ENOSPC.
bool WriteAll(int descriptor, const char* data, std::size_t size) noexcept;

}  // namespace KELP::Wifi
