#include "lab/fleets/record_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace lab::fleets {
namespace {

constexpr std::string_view kStartOfRecord = "{\"schema\":";

}  // namespace

void ForEachLine(int file, const std::string& name,
                 const std::function<void(std::string_view, std::uintmax_t, bool)>& visit) {
  std::string waiting;
  std::uintmax_t place = 0;
  std::string piece(64 * 1024, '\0');
  while (true) {
    const ssize_t taken = ::read(file, piece.data(), piece.size());
    if (taken < 0 && errno == EINTR) continue;
    if (Checked(taken, "read", name) == 0) break;
    waiting.append(piece, 0, static_cast<std::size_t>(taken));
    std::size_t start = 0;
    for (std::size_t end = waiting.find('\n'); end != std::string::npos; end = waiting.find('\n', start)) {
      visit(std::string_view(waiting).substr(start, end - start), place + start, false);
      start = end + 1;
    }
    waiting.erase(0, start);
    place += start;
  }
  if (!waiting.empty()) visit(waiting, place, true);
}

RecordFile::RecordFile(const std::filesystem::path& path)
    : name_(path.native()),
      file_(Checked(::open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_NOCTTY | O_CLOEXEC, 0600), "open",
                    path.native())) {
  struct stat status {};
  Checked(::fstat(file_.Get(), &status), "examine", name_);
  if (!S_ISREG(status.st_mode))
    throw std::runtime_error(name_ + " is no regular file: a fleet could not go on in it");
  if (::flock(file_.Get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) throw std::runtime_error(name_ + " is being written by another fleet");
    ThrowErrno("lock", name_);
  }
  ReadLines();
}

void RecordFile::ReadLines() {
  std::size_t number = 0;
  std::optional<std::uintmax_t> torn;
  ForEachLine(file_.Get(), name_, [&](std::string_view line, std::uintmax_t place, bool is_torn) {
    ++number;
    size_ = place + line.size() + (is_torn ? 0 : 1);
    if (is_torn) {
      const bool may_be_record = line.starts_with(kStartOfRecord) ||
                                 (line.size() < kStartOfRecord.size() && kStartOfRecord.starts_with(line));
      if (may_be_record) torn = place;
    }
    if (torn) return;
    const auto record = is_torn ? std::nullopt : ParseRecord(line);
    if (!record) {
      throw std::runtime_error(name_ + ":" + std::to_string(number) +
                               " is no record of a fleet: name another file to write to");
    }
    done_.Insert(KeyOf(record->image, record->from));
  });
  if (!torn) return;
  size_ = *torn;
  Checked(::ftruncate(file_.Get(), static_cast<off_t>(size_)), "cut", name_);
}

void RecordFile::Append(std::string_view line) {
  std::string bytes(line);
  bytes += '\n';
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t written = ::write(file_.Get(), bytes.data() + done, bytes.size() - done);
    if (written >= 0) {
      done += static_cast<std::size_t>(written);
    } else if (errno != EINTR) {
      const int error = errno;
      static_cast<void>(::ftruncate(file_.Get(), static_cast<off_t>(size_)) == 0);
      throw std::system_error(error, std::generic_category(), "cannot write " + name_);
    }
  }
  size_ += bytes.size();
}

}  // namespace lab::fleets
