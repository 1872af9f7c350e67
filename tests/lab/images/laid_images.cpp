#include "tests/lab/images/laid_images.h"

#include <archive_entry.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <utility>

#include "lab/images/image.h"

namespace lab_test {

namespace fs = std::filesystem;

lab::Entry File(std::string content, mode_t mode) {
  return {lab::Entry::Kind::File, mode, std::move(content)};
}

lab::Entry Folder(mode_t mode) {
  return {lab::Entry::Kind::Directory, mode, ""};
}

LaidImages::LaidImages() {
  folder_.Write("outside/secret", "secret");
  fs::create_directory(folder_ / "root");
  fs::create_directory(folder_ / "image");
  outside_ = lab::ReadTree(folder_ / "outside");
}

LaidImages::~LaidImages() {
  EXPECT_EQ(lab::ReadTree(folder_ / "outside"), outside_);
}

lab::Tree LaidImages::Laid(const fs::path& image) const {
  fs::remove_all(folder_ / "root");
  fs::create_directory(folder_ / "root");
  const lab::Descriptor root(::open((folder_ / "root").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  lab::Tree device = lab::ReadImage(image, limits_);
  lab::WriteTree(device, root.Get());
  EXPECT_EQ(lab::ReadTree(folder_ / "root"), device);
  return device;
}

std::string LaidImages::Refusal(const fs::path& image) const {
  try {
    Laid(image);
    return "usable";
  } catch (const lab::UnusableImage& error) {
    const std::string text = error.what();
    EXPECT_THAT(text, ::testing::StartsWith(image.native() + " "));
    EXPECT_EQ(text.find('\n'), std::string::npos);
    return text.substr(image.native().size() + 1);
  }
}

fs::path LaidImages::Archive(const std::string& bytes) const {
  folder_.Write("image.tar", bytes);
  return folder_ / "image.tar";
}

fs::path LaidImages::Compressed(const std::string& bytes, int (*add_filter)(archive*)) const {
  std::string packed(bytes.size() + 4096, '\0');
  std::size_t size = 0;
  archive* const out = ::archive_write_new();
  ::archive_write_set_format_raw(out);
  add_filter(out);
  ::archive_write_set_bytes_per_block(out, 0);
  ::archive_write_open_memory(out, packed.data(), packed.size(), &size);
  archive_entry* const entry = ::archive_entry_new();
  ::archive_entry_set_filetype(entry, S_IFREG);
  ::archive_write_header(out, entry);
  ::archive_write_data(out, bytes.data(), bytes.size());
  ::archive_write_close(out);
  ::archive_entry_free(entry);
  ::archive_write_free(out);
  packed.resize(size);
  return Archive(packed);
}

}  // namespace lab_test
