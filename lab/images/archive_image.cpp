#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>

#include <memory>
#include <string>

#include "lab/images/image.h"

namespace lab {
namespace {

constexpr std::size_t kReadAtOnce = 64 * 1024;
constexpr la_int64_t kTarBlock = 512;

/// What an archive may have for each entry besides a file's bytes: headers, the rest of the last block.
constexpr std::uintmax_t kOverheadOfEntry = 8 * 1024;

struct FreeArchive {
  void operator()(archive* opened) const { ::archive_read_free(opened); }
};
using Archive = std::unique_ptr<archive, FreeArchive>;

std::string ReasonOf(archive* opened) {
  const char* const text = ::archive_error_string(opened);
  return text != nullptr ? text : "unknown reason";
}

Archive Open(int file) {
  Archive opened(::archive_read_new());
  if (!opened) throw std::bad_alloc();
  ::archive_read_support_format_tar(opened.get());
  ::archive_read_support_filter_gzip(opened.get());
  ::archive_read_support_filter_xz(opened.get());
  ::archive_read_support_filter_zstd(opened.get());
  // Names are bytes, whatever the locale.
  ::archive_read_set_options(opened.get(), "hdrcharset=BINARY");
  if (::archive_read_open_fd(opened.get(), file, kReadAtOnce) != ARCHIVE_OK) {
    throw UnusableImage("is no folder, and cannot be read as a tar archive: " + ReasonOf(opened.get()));
  }
  return opened;
}

/// The bytes of the entry that the archive has come to, gaps of a sparse file filled with zeros.
std::string ReadBytes(const TreeBuilder& tree, archive* opened, archive_entry* entry,
                      const std::string& path) {
  const auto size = static_cast<std::uintmax_t>(::archive_entry_size(entry));
  tree.RequireRoom(size);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  std::size_t done = 0;
  while (done < bytes.size()) {
    const la_ssize_t taken = ::archive_read_data(opened, bytes.data() + done, bytes.size() - done);
    if (taken < 0) throw UnusableImage("is damaged at " + path + ": " + ReasonOf(opened));
    if (taken == 0) throw UnusableImage("is torn at " + path);
    done += static_cast<std::size_t>(taken);
  }
  return bytes;
}

void ReadEntry(TreeBuilder& tree, archive* opened, archive_entry* entry) {
  const char* const name = ::archive_entry_pathname(entry);
  if (name == nullptr || *name == '\0') throw UnusableImage("has an entry without a name");
  const std::string path = DevicePathOf(name);
  if (const char* const original = ::archive_entry_hardlink(entry)) {
    // It may come with bytes of its own, which are passed over, yet unpacked.
    tree.RequireRoom(static_cast<std::uintmax_t>(::archive_entry_size(entry)));
    tree.AddHardLink(path, DevicePathOf(original));
    return;
  }
  const mode_t mode = ::archive_entry_perm(entry);
  switch (::archive_entry_filetype(entry)) {
    case AE_IFREG:
      tree.AddFile(path, mode, ReadBytes(tree, opened, entry, path));
      break;
    case AE_IFDIR:
      tree.AddDirectory(path, mode);
      break;
    case AE_IFLNK: {
      const char* const target = ::archive_entry_symlink(entry);
      tree.AddLink(path, target != nullptr ? target : "");
      break;
    }
    case AE_IFSOCK:
      break;
    case AE_IFIFO:
      throw UnusableImage("has a FIFO: " + path);
    default:
      throw UnusableImage("has a device node: " + path);
  }
}

/// The offset at which the archive continues after the current entry.
la_int64_t EndOfEntry(archive* opened) {
  if (::archive_read_data_skip(opened) != ARCHIVE_OK) throw UnusableImage("is damaged: " + ReasonOf(opened));
  return ::archive_filter_bytes(opened, 0);
}

/// However little of an archive becomes files, it cannot make its reader unpack without end.
void RequireSmall(const ImageLimits& limits, la_int64_t unpacked) {
  if (static_cast<std::uintmax_t>(unpacked) > limits.bytes + limits.entries * kOverheadOfEntry) {
    throw UnusableImage("unpacks to more than a device has, most of which is no file of it");
  }
}

}  // namespace

void ReadTar(TreeBuilder& tree, int file) {
  const Archive opened = Open(file);
  la_int64_t end_of_entries = 0;
  while (true) {
    archive_entry* entry = nullptr;
    const int result = ::archive_read_next_header(opened.get(), &entry);
    if (result == ARCHIVE_EOF) break;
    if (result != ARCHIVE_OK && result != ARCHIVE_WARN) {
      throw UnusableImage("is damaged: " + ReasonOf(opened.get()));
    }
    ReadEntry(tree, opened.get(), entry);
    end_of_entries = EndOfEntry(opened.get());
    RequireSmall(tree.Limits(), end_of_entries);
  }
  // A plain archive that was cut between two entries differs from a whole one by the empty block at its end.
  if (::archive_filter_bytes(opened.get(), 0) < end_of_entries + kTarBlock) {
    throw UnusableImage("is torn: it has no end");
  }
}

}  // namespace lab
