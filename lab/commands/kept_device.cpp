#include "lab/commands/kept_device.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"

namespace lab::commands {

namespace fs = std::filesystem;

void MakeKeptDevice(const fs::path& folder) {
  if (::mkdir(folder.c_str(), 0700) == 0) return;
  const int error = errno;
  if (error != EEXIST || !fs::is_directory(folder)) {
    throw std::runtime_error("cannot make the folder " + folder.native() + ": " +
                             std::generic_category().message(error));
  }
  if (!fs::is_empty(folder)) throw std::runtime_error("the folder " + folder.native() + " is not empty");
  fs::permissions(folder, fs::perms::owner_all);
}

void KeepDevice(const PrivateRoot& device, const fs::path& folder) {
  const Descriptor kept(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (kept.Get() < 0) throw std::runtime_error("cannot open the folder " + folder.native());
  CopyEntries(device.Directory(), kept.Get(), device.Path().native());
}

}  // namespace lab::commands
