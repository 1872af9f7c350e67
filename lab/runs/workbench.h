#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "lab/images/descriptor.h"
#include "lab/images/private_root.h"
#include "lab/plain/lent_files.h"
#include "lab/runs/program_run.h"

namespace lab {

/// A private root in which one device after another is laid out and run at little cost: a file system in
/// memory, with the host's libraries and the program mounted once. For a process made by ForkSealed(), whose
/// end takes all of it away, whatever comes; one at a time. In the plain way it is a folder, into which the
/// program and its libraries are copied for each run, and `size` bounds nothing.
class Workbench {
 public:
  enum class Fittings {
    /// The host's folders are there before the device is laid out. It then must not have anything but folders
    /// where they are (OccupiedPlace).
    First,
    /// The device comes first, and the host's folders go where it has room for them. Good for one device.
    Last,
  };

  /// `size` is how many bytes devices, and what is written there during a run, may take. Throws
  /// std::system_error.
  Workbench(const std::filesystem::path& program, std::uintmax_t size, Fittings fittings = Fittings::First);
  Workbench(const Workbench&) = delete;
  Workbench& operator=(const Workbench&) = delete;
  ~Workbench();

  /// To lay a device out in. Has no path but in the plain way.
  PrivateRoot& Device() { return *device_; }

  /// Runs the program as RunProgram does. Whatever it started is killed when it has ended or was ended.
  RunResult Run(const std::vector<std::string>& arguments, std::chrono::milliseconds limit);

  /// Takes the device away. Gives false where something in place of the host's folders was changed: then a
  /// new workbench is needed.
  bool Clear();

 private:
  void Fit();

  Fittings order_;
  std::filesystem::path program_;
  std::string program_in_root_;
  Descriptor outer_root_;
  Descriptor empty_;
  Descriptor root_;
  std::optional<LentFiles> copies_;  // in the plain way
  std::optional<PrivateRoot> device_;
  bool is_fitted_ = false;
  Tree fittings_;
};

}  // namespace lab
