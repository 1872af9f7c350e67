#include "lab/images/image.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "lab/images/descriptor.h"

namespace lab {
namespace {

void ReadOpenImage(TreeBuilder& tree, int image) {
  struct stat status {};
  Checked(::fstat(image, &status), "examine", "it");
  if (S_ISDIR(status.st_mode)) {
    ReadDirectory(tree, image);
  } else if (S_ISREG(status.st_mode)) {
    ReadTar(tree, image);
  } else {
    throw UnusableImage("is neither a folder nor a tar archive");
  }
}

}  // namespace

void ReadImage(TreeBuilder& tree, const std::filesystem::path& image) {
  const std::string& name = image.native();
  const Descriptor opened(::open(image.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!opened.IsOpen()) {
    throw UnusableImage(name + " cannot be opened: " + std::generic_category().message(errno));
  }
  try {
    ReadOpenImage(tree, opened.Get());
  } catch (const UnusableImage& error) {
    throw UnusableImage(name + " " + error.what());
  }
}

Tree ReadImage(const std::filesystem::path& image, const ImageLimits& limits) {
  TreeBuilder tree(limits);
  ReadImage(tree, image);
  return tree.Take();
}

}  // namespace lab
