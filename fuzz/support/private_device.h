#pragma once

#include <string>
#include <string_view>

namespace fuzz {

/// An empty device: a file system in memory that only this process sees and that is gone with it. To be made
/// before any thread is (in LLVMFuzzerInitialize).
///
/// Lighter than the lab's private root, which makes a new folder for each test: a fuzzer enters the same one
/// a thousand times a second.
class PrivateDevice {
 public:
  PrivateDevice();
  PrivateDevice(const PrivateDevice&) = delete;
  PrivateDevice& operator=(const PrivateDevice&) = delete;
  ~PrivateDevice();

  /// For as long as it lives absolute paths are the device's. Relative ones still start at the working folder
  /// outside: there the fuzzer puts the input of a crash.
  class Entered {
   public:
    explicit Entered(const PrivateDevice& device);
    Entered(const Entered&) = delete;
    Entered& operator=(const Entered&) = delete;
    ~Entered();

   private:
    const PrivateDevice& device_;
  };

 private:
  int root_;
  int host_root_;
  int working_folder_;
};

/// The file at `path`, with its contents replaced; made with its parents where it is missing. For use on an
/// entered device. False when that cannot be done.
bool WriteFile(const std::string& path, std::string_view bytes);

/// Removes all that stands under "/". For use on an entered device.
void ClearDevice();

}  // namespace fuzz
