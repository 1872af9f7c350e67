#include "bench/micro/scratch_file.h"

#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace bench {
namespace {

// Several ticks of the clock that file systems stamp files with.
constexpr std::chrono::milliseconds kSettled{50};

std::string MakePath() {
  const bool has_memory = ::access("/dev/shm", W_OK) == 0;
  const std::filesystem::path folder = has_memory ? "/dev/shm" : std::filesystem::temp_directory_path();
  std::string path = folder / "bench-micro.XXXXXX";
  const int file = ::mkstemp(path.data());
  if (file < 0) throw std::runtime_error("cannot make a file in " + folder.native());
  ::close(file);
  return path;
}

}  // namespace

ScratchFile::ScratchFile(std::string_view bytes) : path_(MakePath()) {
  std::ofstream(path_, std::ios::binary) << bytes;
  std::this_thread::sleep_for(kSettled);
}

ScratchFile::~ScratchFile() {
  ::unlink(path_.c_str());
}

}  // namespace bench
