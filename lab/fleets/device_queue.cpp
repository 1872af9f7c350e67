#include "lab/fleets/device_queue.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <stdexcept>
#include <utility>

namespace lab::fleets {
namespace {

constexpr std::size_t kReadAtOnce = 64 * 1024;
constexpr std::size_t kLongestLine = std::size_t{16} << 20;

Descriptor OpenList(const std::string& name) {
  if (name == "-")
    return Descriptor(Checked(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3), "read", "standard input"));
  // Without O_NONBLOCK the list that a FIFO is would be waited for here, where no signal ends it.
  return Descriptor(
      Checked(::open(name.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC), "open the list", name));
}

bool IsReadable(const Descriptor& list) {
  pollfd source{list.Get(), POLLIN, 0};
  return ::poll(&source, 1, 0) != 0;
}

/// How many lines a list has; none where it cannot be read twice.
std::optional<std::size_t> CountLines(const std::string& name) {
  struct stat status {};
  if (name == "-" || ::stat(name.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  const Descriptor list = OpenList(name);
  std::string piece(kReadAtOnce, '\0');
  std::size_t lines = 0;
  char last = '\n';
  while (true) {
    const ssize_t taken = ::read(list.Get(), piece.data(), piece.size());
    if (taken < 0 && errno == EINTR) continue;
    if (Checked(taken, "read the list", name) == 0) return lines + (last == '\n' ? 0 : 1);
    lines += static_cast<std::size_t>(std::count(piece.begin(), piece.begin() + taken, '\n'));
    last = piece[static_cast<std::size_t>(taken) - 1];
  }
}

}  // namespace

DeviceQueue::DeviceQueue(std::vector<std::string> images, std::string from,
                         std::function<void(const std::string&)> complain)
    : images_(std::move(images)), from_(std::move(from)), complain_(std::move(complain)) {
  for (const std::string& image : images_) {
    const auto count = image.starts_with('@') ? CountLines(image.substr(1)) : 1;
    count_ = count_ && count ? std::optional(*count_ + *count) : std::nullopt;
  }
}

DeviceQueue::State DeviceQueue::Look() {
  while (!next_) {
    if (!list_.IsOpen()) {
      if (next_image_ == images_.size()) return State::AtEnd;
      OpenNext();
    } else if (read_.find('\n', place_) != std::string::npos || list_ended_) {
      TakeLine();
    } else if (!IsReadable(list_)) {
      return State::Waiting;
    } else {
      read_.erase(0, std::exchange(place_, 0));
      const std::size_t had = read_.size();
      if (had > kLongestLine)
        throw std::runtime_error(NameOfLine(line_number_ + 1) + ": is longer than 16 MiB");
      read_.resize(had + kReadAtOnce);
      const ssize_t taken = ::read(list_.Get(), read_.data() + had, kReadAtOnce);
      read_.resize(had + static_cast<std::size_t>(std::max<ssize_t>(taken, 0)));
      if (taken < 0 && errno == EAGAIN) return State::Waiting;
      if (taken < 0 && errno != EINTR) ThrowErrno("read the list", list_name_);
      list_ended_ = taken == 0;
    }
  }
  return State::Ready;
}

DeviceSource DeviceQueue::Take() {
  DeviceSource source = std::move(next_.value());
  next_.reset();
  return source;
}

PoolTasks ToPoolTasks(DeviceQueue& queue, std::function<bool(const DeviceSource&)> is_wanted) {
  const auto task = std::make_shared<std::string>();
  return {
      .look =
          [&queue, task, is_wanted = std::move(is_wanted)] {
            while (task->empty()) {
              const PoolTasks::State state = queue.Look();
              if (state != PoolTasks::State::Ready) return state;
              const DeviceSource source = queue.Take();
              if (is_wanted(source)) *task = ToMessage(source);
            }
            return PoolTasks::State::Ready;
          },
      .take = [task] { return std::exchange(*task, {}); },
      .socket = [&queue] { return queue.Socket(); },
  };
}

void DeviceQueue::OpenNext() {
  const std::string& image = images_[next_image_++];
  if (!image.starts_with('@')) {
    next_ = DeviceSource{image, from_, {}, {}};
    return;
  }
  list_name_ = image.substr(1);
  list_ = OpenList(list_name_);
  list_folder_ =
      list_name_ == "-" ? std::filesystem::path() : std::filesystem::path(list_name_).parent_path();
  line_number_ = 0;
  list_ended_ = false;
}

/// Takes one line off what was read; at the end of the list, the last one and the list itself.
void DeviceQueue::TakeLine() {
  const std::size_t end = read_.find('\n', place_);
  const std::string line = read_.substr(place_, end == std::string::npos ? end : end - place_);
  if (end != std::string::npos) {
    place_ = end + 1;
  } else {
    read_.clear();
    place_ = 0;
    list_.Close();
    list_ = Descriptor();
    if (line.empty()) return;
  }
  ++line_number_;
  ParseLine(line);
}

void DeviceQueue::ParseLine(const std::string& line) {
  if (line.find_first_not_of(" \t\r") == std::string::npos) return;
  try {
    next_ = ParseListLine(line, list_folder_, from_);
  } catch (const std::invalid_argument& error) {
    complain_(NameOfLine(line_number_) + ": " + error.what());
  }
}

std::string DeviceQueue::NameOfLine(std::size_t number) const {
  return (list_name_ == "-" ? "standard input" : list_name_) + ":" + std::to_string(number);
}

}  // namespace lab::fleets
