#include "fuzz/support/private_device.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <system_error>

#include "fuzz/support/check.h"
#include "lab/plain/guarded_files.h"
#include "lab/plain/plain_way.h"
#include "lab/runs/namespaces.h"

// Part of a sanitizer's run-time library, where there is one.
extern "C" [[gnu::weak]] void __sanitizer_symbolize_pc(void* place, const char* format, char* text,
                                                       std::size_t size);

namespace fuzz {
namespace {

int OpenFolder(const char* path) {
  const int folder = ::open(path, O_PATH | O_DIRECTORY | O_CLOEXEC);
  FUZZ_CHECK(folder >= 0);
  return folder;
}

/// Once it runs, the helper that gives names to the addresses of a report is reached from inside a device
/// too.
void StartSymbolizer() {
  if (__sanitizer_symbolize_pc == nullptr) return;
  std::array<char, 256> name{};
  __sanitizer_symbolize_pc(__builtin_return_address(0), "%f", name.data(), name.size());
}

}  // namespace

PrivateDevice::PrivateDevice() : root_(-1), host_root_(OpenFolder("/")), working_folder_(OpenFolder(".")) {
  StartSymbolizer();
  lab::EnterNamespaces();
  if (lab::IsPlainWay()) {
    lab::GuardTemporaryFiles(lab::Guarded::Files);
  } else {
    lab::EnterMountNamespace();
  }

  std::string folder = std::filesystem::temp_directory_path() / "fuzz-device-XXXXXX";
  FUZZ_CHECK(::mkdtemp(folder.data()) != nullptr);
  ::umask(0);
  if (lab::IsPlainWay()) {
    root_ = OpenFolder(folder.c_str());
    return;
  }
  FUZZ_CHECK(::mount("none", folder.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, "mode=0755,size=256m") == 0);
  root_ = OpenFolder(folder.c_str());
  // From here on only the descriptor holds it: nothing is left behind however the process ends.
  FUZZ_CHECK(::umount2(folder.c_str(), MNT_DETACH) == 0);
  FUZZ_CHECK(::rmdir(folder.c_str()) == 0);
}

PrivateDevice::~PrivateDevice() {
  ::close(root_);
  ::close(host_root_);
  ::close(working_folder_);
}

PrivateDevice::Entered::Entered(const PrivateDevice& device) : device_(device) {
  FUZZ_CHECK(::fchdir(device_.root_) == 0 && ::chroot(".") == 0 && ::fchdir(device_.working_folder_) == 0);
}

PrivateDevice::Entered::~Entered() {
  FUZZ_CHECK(::fchdir(device_.host_root_) == 0 && ::chroot(".") == 0 &&
             ::fchdir(device_.working_folder_) == 0);
}

bool WriteFile(const std::string& path, std::string_view bytes) {
  std::error_code failure;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), failure);
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, 0640);
  if (file < 0) return false;
  const bool written = ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  ::close(file);
  return written;
}

void ClearDevice() {
  for (const auto& item : std::filesystem::directory_iterator("/")) std::filesystem::remove_all(item.path());
}

}  // namespace fuzz
