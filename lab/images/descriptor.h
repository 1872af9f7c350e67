#pragma once

#include <string_view>
#include <utility>

namespace lab {

/// An open file descriptor, closed when it goes out of scope.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { Close(); }

  int Get() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }
  /// Hands the descriptor over: the caller closes it.
  int Release() noexcept { return std::exchange(number_, -1); }
  void Close() noexcept;

 private:
  int number_ = -1;
};

/// Throws the std::system_error of errno: "<action> <path>: <cause>".
[[noreturn]] void ThrowErrno(std::string_view action, std::string_view path);

/// Gives `result`, or throws as ThrowErrno when it is negative.
template <typename Result>
Result Checked(Result result, std::string_view action, std::string_view path) {
  if (result < 0) ThrowErrno(action, path);
  return result;
}

}  // namespace lab
