#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "lab/fleets/device_source.h"
#include "lab/images/descriptor.h"
#include "lab/runs/pool.h"

namespace lab::fleets {

/// The devices that a command names, one after another: an image each, or a list of them, "@FILE" or "@-" for
/// standard input, which is read as it comes. A list's relative paths start at the list's folder, those of
/// standard input at the current one.
class DeviceQueue {
 public:
  /// `complain` is told of each line of a list that names no device: "LIST:17: is no JSON".
  DeviceQueue(std::vector<std::string> images, std::string from,
              std::function<void(const std::string&)> complain);

  using State = PoolTasks::State;

  /// Whether Take() has a device. Waiting: the list's next line has not come yet; it is polled for on
  /// Socket(). Throws std::system_error where a list cannot be read.
  State Look();
  DeviceSource Take();
  int Socket() const { return list_.Get(); }

  /// How many devices there are in all, as far as that can be known beforehand.
  std::optional<std::size_t> Count() const { return count_; }

 private:
  void OpenNext();
  void TakeLine();
  void ParseLine(const std::string& line);
  std::string NameOfLine(std::size_t number) const;

  std::vector<std::string> images_;
  std::string from_;
  std::function<void(const std::string&)> complain_;
  std::size_t next_image_ = 0;
  std::optional<std::size_t> count_ = 0;

  Descriptor list_;
  std::string list_name_;
  std::filesystem::path list_folder_;
  std::size_t line_number_ = 0;
  std::string read_;
  std::size_t place_ = 0;  // up to which read_ was taken
  bool list_ended_ = false;
  std::optional<DeviceSource> next_;
};

/// The queue as the tasks of a pool, each a source's message. Sources that are not wanted are passed over.
PoolTasks ToPoolTasks(DeviceQueue& queue, std::function<bool(const DeviceSource&)> is_wanted);

}  // namespace lab::fleets
