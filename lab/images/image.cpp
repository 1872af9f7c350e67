#include "lab/images/image.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <system_error>

namespace lab {
namespace {

void LayOpenImage(DeviceLayout& layout, int image) {
  struct stat status {};
  Checked(::fstat(image, &status), "examine", "it");
  if (S_ISDIR(status.st_mode)) {
    LayFolder(layout, image);
  } else if (S_ISREG(status.st_mode)) {
    LayArchive(layout, image);
  } else {
    throw UnusableImage("is neither a folder nor a tar archive");
  }
}

}  // namespace

void LayImage(DeviceLayout& layout, const std::filesystem::path& image) {
  const std::string& name = image.native();
  const Descriptor opened(::open(image.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!opened.IsOpen()) {
    throw UnusableImage(name + " cannot be opened: " + std::generic_category().message(errno));
  }
  try {
    LayOpenImage(layout, opened.Get());
  } catch (const UnusableImage& error) {
    throw UnusableImage(name + " " + error.what());
  }
}

PrivateRoot DeviceOf(const std::filesystem::path& image, const ImageLimits& limits) {
  PrivateRoot device{PrivateRoot::Bare()};
  DeviceLayout layout(device, limits);
  LayImage(layout, image);
  device.ProvideUsualDirectories();
  return device;
}

}  // namespace lab
