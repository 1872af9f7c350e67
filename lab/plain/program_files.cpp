#include <elf.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"
#include "lab/plain/lent_files.h"

namespace lab {
namespace {

namespace fs = std::filesystem;

/// What a script names behind "#!" at most, as in the kernel.
constexpr std::size_t kLongestInterpreterLine = 256;

/// Up to `size` bytes from `offset` on; fewer at the file's end.
std::string Piece(const Descriptor& file, off_t offset, std::size_t size, const fs::path& path) {
  std::string bytes(size, '\0');
  const ssize_t taken = Checked(::pread(file.Get(), bytes.data(), size, offset), "read", path.native());
  bytes.resize(static_cast<std::size_t>(taken));
  return bytes;
}

template <typename Record>
Record RecordAt(const Descriptor& file, off_t offset, const fs::path& path) {
  Record record{};
  const std::string bytes = Piece(file, offset, sizeof record, path);
  std::memcpy(&record, bytes.data(), bytes.size());
  return record;
}

/// The loader that a dynamic program names; empty for one that needs none.
template <typename Header, typename Segment>
std::string LoaderOf(const Descriptor& file, const fs::path& path) {
  const auto header = RecordAt<Header>(file, 0, path);
  for (unsigned i = 0; i < header.e_phnum; ++i) {
    const auto offset = static_cast<off_t>(header.e_phoff + i * sizeof(Segment));
    const auto segment = RecordAt<Segment>(file, offset, path);
    if (segment.p_type != PT_INTERP || segment.p_filesz > PATH_MAX) continue;
    return Piece(file, static_cast<off_t>(segment.p_offset), segment.p_filesz, path).c_str();
  }
  return "";
}

/// What a loader lists of the libraries of a program. It looks where it would in a root, which has no cache
/// of libraries, and starts nothing of the program.
std::string ListedBy(const std::string& loader, const fs::path& program) {
  std::array<int, 2> ends{};
  Checked(::pipe2(ends.data(), O_CLOEXEC), "make", "a pipe");
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, writing.Get(), STDOUT_FILENO);
  std::array<std::string, 4> texts{loader, "--inhibit-cache", "--list", fs::absolute(program).native()};
  std::array<char*, 5> arguments{texts[0].data(), texts[1].data(), texts[2].data(), texts[3].data(), nullptr};
  std::array<char*, 1> no_variables{nullptr};
  pid_t child = -1;
  const int error =
      ::posix_spawn(&child, loader.c_str(), &actions, nullptr, arguments.data(), no_variables.data());
  ::posix_spawn_file_actions_destroy(&actions);
  writing.Close();
  if (error != 0) throw std::system_error(error, std::generic_category(), "run " + loader);
  std::string text = ReadAll(reading.Get(), "a pipe");
  while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
  return text;
}

std::vector<LentFile> LibrariesOf(const std::string& loader, const fs::path& program) {
  std::vector<LentFile> files{{loader, loader}};
  std::istringstream listed(ListedBy(loader, program));
  // "libm.so.6 => /lib/x86_64-linux-gnu/libm.so.6 (0x00007f0000000000)"
  for (std::string line; std::getline(listed, line);) {
    const std::size_t arrow = line.find(" => /");
    if (arrow == std::string::npos) continue;
    const std::size_t start = arrow + std::strlen(" => ");
    const std::string path = line.substr(start, line.rfind(" (") - start);
    if (path != loader) files.push_back({path, path});
  }
  return files;
}

std::vector<LentFile> NeededBy(const fs::path& program) {
  const Descriptor file(Checked(::open(program.c_str(), O_RDONLY | O_CLOEXEC), "open", program.native()));
  const std::string start = Piece(file, 0, kLongestInterpreterLine, program);
  if (start.starts_with("#!")) {
    std::istringstream line(start.substr(2, start.find('\n') - 2));
    std::string interpreter;
    line >> interpreter;
    return FilesOfProgram(interpreter, interpreter);
  }
  if (!start.starts_with(ELFMAG) || start.size() < EI_NIDENT) return {};
  const bool is_64 = start[EI_CLASS] == ELFCLASS64;
  const std::string loader = is_64 ? LoaderOf<Elf64_Ehdr, Elf64_Phdr>(file, program)
                                   : LoaderOf<Elf32_Ehdr, Elf32_Phdr>(file, program);
  if (loader.empty()) return {};
  return LibrariesOf(loader, program);
}

/// Asked once a program, as far as that stays what it is.
std::vector<LentFile> NeededByAsKnown(const fs::path& program) {
  static std::mutex mutex;
  static std::map<fs::path, std::pair<fs::file_time_type, std::vector<LentFile>>> known;
  const fs::file_time_type time = fs::last_write_time(program);
  {
    const std::lock_guard lock(mutex);
    const auto found = known.find(program);
    if (found != known.end() && found->second.first == time) return found->second.second;
  }
  std::vector<LentFile> files = NeededBy(program);
  const std::lock_guard lock(mutex);
  known[program] = {time, files};
  return files;
}

}  // namespace

std::vector<LentFile> FilesOfProgram(const fs::path& program, const std::string& device_path) {
  std::vector<LentFile> files = NeededByAsKnown(program);
  files.push_back({program, device_path});
  return files;
}

}  // namespace lab
