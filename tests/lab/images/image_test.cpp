#include "lab/images/image.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>

#include "lab/images/tar_text.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using lab_test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::Pair;
using ::testing::StartsWith;

Entry File(std::string content, mode_t mode = 0644) {
  return {Entry::Kind::File, mode, std::move(content)};
}

Entry Folder(mode_t mode = 0755) {
  return {Entry::Kind::Directory, mode, ""};
}

/// Lays images out in an empty folder, beside another that nothing may come to.
class Images : public ::testing::Test {
 protected:
  Images() {
    folder_.Write("outside/secret", "secret");
    fs::create_directory(folder_ / "root");
    fs::create_directory(folder_ / "image");
    outside_ = ReadTree(folder_ / "outside");
  }

  ~Images() override { EXPECT_EQ(ReadTree(folder_ / "outside"), outside_); }

  /// What stands in the root when the image is laid out in it.
  Tree Laid(const fs::path& image) const {
    fs::remove_all(folder_ / "root");
    fs::create_directory(folder_ / "root");
    const int root = ::open((folder_ / "root").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    PrivateRoot device{Descriptor(root)};
    DeviceLayout layout(device, limits_);
    LayImage(layout, image);
    return ReadTree(folder_ / "root");
  }

  /// Why the image is refused, without its name; "usable" where it is not.
  std::string Refusal(const fs::path& image) const {
    try {
      Laid(image);
      return "usable";
    } catch (const UnusableImage& error) {
      const std::string text = error.what();
      EXPECT_THAT(text, StartsWith(image.native() + " "));
      EXPECT_EQ(text.find('\n'), std::string::npos);
      return text.substr(image.native().size() + 1);
    }
  }

  fs::path Archive(const std::string& bytes, const std::string& name = "image.tar") const {
    folder_.Write(name, bytes);
    return folder_ / name;
  }

  fs::path Compressed(const std::string& bytes, int (*add_filter)(archive*)) const {
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

  fs::path Image() const { return folder_ / "image"; }

  TemporaryFolder folder_;
  ImageLimits limits_;
  Tree outside_;
};

// Where a header has its size and its sum.
constexpr std::size_t kTarSize = 124;
constexpr std::size_t kTarSum = 148;

const std::string kSmallArchive = TarEntry("./", '5', 0755, "") + TarEntry("./etc/", '5', 0700, "") +
                                  TarEntry("./etc/info.conf", '0', 0600, "kelpbios=maple\n") +
                                  TarEntry("etc/now", '2', 0777, "", "/etc/info.conf") +
                                  TarEntry("usr/kelp/deep", '0', 0444, "") + TarEnd();

Tree SmallTree() {
  return {{"/etc", Folder(0700)},
          {"/etc/info.conf", File("kelpbios=maple\n", 0600)},
          {"/etc/now", {Entry::Kind::Link, 0777, "/etc/info.conf"}},
          {"/usr", Folder()},
          {"/usr/kelp", Folder()},
          {"/usr/kelp/deep", File("", 0444)}};
}

TEST_F(Images, ArchivesAreLaidOut) {
  EXPECT_EQ(Laid(Archive(kSmallArchive)), SmallTree());
}

TEST_F(Images, ArchivesMayBeCompressed) {
  EXPECT_EQ(Laid(Compressed(kSmallArchive, &::archive_write_add_filter_gzip)), SmallTree());
  EXPECT_EQ(Laid(Compressed(kSmallArchive, &::archive_write_add_filter_xz)), SmallTree());
  EXPECT_EQ(Laid(Compressed(kSmallArchive, &::archive_write_add_filter_zstd)), SmallTree());
}

TEST_F(Images, FoldersAreLaidOut) {
  folder_.Write("image/etc/info.conf", "kelpbios=maple\n");
  fs::permissions(Image() / "etc/info.conf", fs::perms(0600));
  fs::permissions(Image() / "etc", fs::perms(0700));
  fs::create_symlink("/etc/info.conf", Image() / "etc/now");
  folder_.Write("image/usr/kelp/deep", "");
  fs::permissions(Image() / "usr/kelp/deep", fs::perms(0444));
  EXPECT_EQ(Laid(Image()), SmallTree());
  fs::create_directory_symlink(Image(), folder_ / "also");
  EXPECT_EQ(Laid(folder_ / "also"), SmallTree()) << "the name of the image itself may be a link";
}

TEST_F(Images, KeepTheBytesOfNamesAndFiles) {
  const std::string bytes("\0\xff\n", 3);
  EXPECT_THAT(Laid(Archive(TarEntry("a\xe9\n", '0', 0644, bytes) + TarEnd())),
              ElementsAre(Pair("/a\xe9\n", File(bytes))));
  folder_.Write("image/a\xe9\n", bytes);
  EXPECT_THAT(Laid(Image()), ElementsAre(Pair("/a\xe9\n", File(bytes))));
}

TEST_F(Images, SocketsAreLeftOut) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = (Image() / "s").native();
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM, 0));
  ASSERT_EQ(::bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_THAT(Laid(Image()), IsEmpty());
}

TEST_F(Images, ThatAreNoneAreRefused) {
  EXPECT_EQ(Refusal(folder_ / "none"), "cannot be opened: No such file or directory");
  EXPECT_EQ(Refusal("/dev/null"), "is neither a folder nor a tar archive");
  EXPECT_THAT(Refusal(Archive("")), StartsWith("is no folder, and cannot be read as a tar archive: "));
  EXPECT_THAT(Refusal(Archive("no archive")),
              StartsWith("is no folder, and cannot be read as a tar archive: "));
  EXPECT_THAT(Refusal(Archive(std::string(5000, 'x'))),
              StartsWith("is no folder, and cannot be read as a tar archive: "));
}

TEST_F(Images, FifoInPlaceOfAnImageIsNotWaitedFor) {
  const fs::path fifo = folder_ / "fifo";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(Refusal(fifo), "is neither a folder nor a tar archive");
}

TEST_F(Images, PathsThatLeadOutAreRefused) {
  const std::string secret = (folder_ / "outside/written").native();
  EXPECT_EQ(Refusal(Archive(TarEntry(secret, '0', 0644, "x") + TarEnd())), "has an absolute path: " + secret);
  for (const char* name : {"../outside/written", "a/../../outside/written", "..", "etc/..", "a/../b"}) {
    EXPECT_EQ(Refusal(Archive(TarEntry(name, '0', 0644, "x") + TarEnd())),
              std::string("has a path with \"..\": ") + name);
  }
  EXPECT_THAT(Laid(Archive(TarEntry("..a/b..", '0', 0644, "x") + TarEnd())),
              ElementsAre(Key("/..a"), Key("/..a/b..")));
}

TEST_F(Images, LinksThatLeadOutAreRefused) {
  for (const char* target : {"../outside", "..", "/..", "/etc/../../x", "x/../../../outside"}) {
    EXPECT_EQ(Refusal(Archive(TarEntry("a", '2', 0777, "", target) + TarEnd())),
              std::string("has a link that leads out of it: /a -> ") + target);
  }
  EXPECT_EQ(Refusal(Archive(TarEntry("a/b/c", '2', 0777, "", "../../../x") + TarEnd())),
            "has a link that leads out of it: /a/b/c -> ../../../x");
  EXPECT_EQ(Laid(Archive(TarEntry("a/b/c", '2', 0777, "", "../../x") + TarEnd())).at("/a/b/c").content,
            "../../x");
  fs::create_symlink("../outside/secret", Image() / "a");
  EXPECT_EQ(Refusal(Image()), "has a link that leads out of it: /a -> ../outside/secret");
}

TEST_F(Images, NothingIsWrittenThroughALink) {
  const std::string outside = (folder_ / "outside").native();
  EXPECT_EQ(Refusal(Archive(TarEntry("a", '2', 0777, "", outside) + TarEntry("a/written", '0', 0644, "x") +
                            TarEnd())),
            "has an entry below what is no folder: /a/written");
  EXPECT_EQ(Refusal(Archive(TarEntry("b", '0', 0644, "") + TarEntry("b/c", '0', 0644, "x") + TarEnd())),
            "has an entry below what is no folder: /b/c");
  EXPECT_EQ(Refusal(Archive(TarEntry("a", '2', 0777, "", outside + "/written") +
                            TarEntry("a", '0', 0644, "x") + TarEnd())),
            "has two entries of one name: /a");
}

TEST_F(Images, NothingIsReadThroughALink) {
  fs::create_symlink(folder_ / "outside/secret", Image() / "a");
  EXPECT_EQ(Laid(Image()).at("/a").kind, Entry::Kind::Link);
  const std::string target = (folder_ / "outside/secret").native();
  EXPECT_EQ(Refusal(Archive(TarEntry("a", '1', 0644, "", target) + TarEnd())),
            "has an absolute path: " + target);
  EXPECT_EQ(Refusal(Archive(TarEntry("a", '1', 0644, "", "../outside/secret") + TarEnd())),
            "has a path with \"..\": ../outside/secret");
  EXPECT_EQ(
      Refusal(Archive(TarEntry("a", '2', 0777, "", target) + TarEntry("b", '1', 0644, "", "a") + TarEnd())),
      "has a hard link to what is no file in it: /b -> /a");
}

TEST_F(Images, HardLinksBecomeFiles) {
  const Tree laid =
      Laid(Archive(TarEntry("etc/a", '0', 0600, "text") + TarEntry("b", '1', 0, "", "etc/a") + TarEnd()));
  EXPECT_EQ(laid.at("/b"), File("text", 0600));
  EXPECT_EQ(Refusal(Archive(TarEntry("b", '1', 0, "", "a") + TarEntry("a", '0', 0600, "text") + TarEnd())),
            "has a hard link to what is no file in it: /b -> /a");
}

TEST_F(Images, DevicesAndFifosAreRefused) {
  EXPECT_EQ(Refusal(Archive(TarEntry("dev/sda", '4', 0644, "") + TarEnd())), "has a device node: /dev/sda");
  EXPECT_EQ(Refusal(Archive(TarEntry("dev/null", '3', 0644, "") + TarEnd())), "has a device node: /dev/null");
  EXPECT_EQ(Refusal(Archive(TarEntry("pipe", '6', 0644, "") + TarEnd())), "has a FIFO: /pipe");
  ASSERT_EQ(::mkfifo((Image() / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(Refusal(Image()), "has a FIFO: /pipe");
}

TEST_F(Images, TwoEntriesOfOneNameAreRefused) {
  const std::string twice = TarEntry("a", '0', 0644, "1") + TarEntry("./a", '0', 0644, "2") + TarEnd();
  EXPECT_EQ(Refusal(Archive(twice)), "has two entries of one name: /a");
  EXPECT_EQ(Refusal(Archive(TarEntry("d/", '5', 0755, "") + TarEntry("d", '5', 0755, "") + TarEnd())),
            "has two entries of one name: /d");
  EXPECT_EQ(Refusal(Archive(TarEntry("d/x", '0', 0644, "") + TarEntry("d", '0', 0644, "") + TarEnd())),
            "has a folder and something else of one name: /d");
  EXPECT_THAT(Laid(Archive(TarEntry("d/x", '0', 0644, "") + TarEntry("d", '5', 0700, "") + TarEnd())),
              ElementsAre(Pair("/d", Folder(0700)), Key("/d/x")))
      << "a folder may come behind what is in it";
}

TEST_F(Images, MayHoldSoManyBytes) {
  limits_.bytes = 1000;
  EXPECT_EQ(Refusal(Archive(TarEntry("a", '0', 0644, std::string(1000, 'x')) + TarEnd())), "usable");
  const std::string reason = "holds more than 1000 bytes unpacked";
  EXPECT_EQ(Refusal(Archive(TarEntry("a", '0', 0644, std::string(1001, 'x')) + TarEnd())), reason);
  EXPECT_EQ(Refusal(Archive(TarEntry("a", '0', 0644, std::string(600, 'x')) +
                            TarEntry("b", '0', 0644, std::string(401, 'x')) + TarEnd())),
            reason);
  EXPECT_EQ(Refusal(Archive(TarEntry("a", '0', 0644, std::string(600, 'x')) +
                            TarEntry("b", '1', 0644, "", "a") + TarEnd())),
            reason);
  folder_.Write("image/a", std::string(1001, 'x'));
  EXPECT_EQ(Refusal(Image()), reason);
}

TEST_F(Images, SparseGiantsAndBombsCostNoMemory) {
  folder_.Write("image/a", "");
  fs::resize_file(Image() / "a", std::uintmax_t{1} << 40);
  const std::string reason = "holds more than 67108864 bytes unpacked";
  EXPECT_EQ(Refusal(Image()), reason);
  std::string header = TarEntry("a", '0', 0644, "");
  header.replace(kTarSize, 11, "77777777777");
  header.replace(kTarSum, 8, "        ");
  unsigned sum = 0;
  for (const char byte : header) sum += static_cast<unsigned char>(byte);
  std::array<char, 8> digits{};
  std::snprintf(digits.data(), digits.size(), "%06o", sum);
  header.replace(kTarSum, 7, digits.data(), 7);
  EXPECT_EQ(Refusal(Archive(header + TarEnd())), reason);
  EXPECT_EQ(Refusal(Compressed(TarEntry("a", '0', 0644, std::string((64 << 20) + 1, '\0')) + TarEnd(),
                               &::archive_write_add_filter_gzip)),
            reason);
}

TEST_F(Images, MayHoldSoManyEntries) {
  limits_.entries = 2;
  const std::string two = TarEntry("a", '0', 0644, "") + TarEntry("b", '5', 0755, "");
  EXPECT_EQ(Refusal(Archive(two + TarEnd())), "usable");
  EXPECT_EQ(Refusal(Archive(two + TarEntry("c", '2', 0777, "", "a") + TarEnd())),
            "holds more than 2 entries");
}

TEST_F(Images, TornArchivesAreRefused) {
  const std::string whole = TarEntry("a", '0', 0644, std::string(700, 'a')) +
                            TarEntry("b", '0', 0644, std::string(700, 'b')) + TarEnd();
  const std::size_t end_of_entries = whole.size() - 1024;
  for (std::size_t size = 512; size <= end_of_entries; size += 64) {
    const std::string refusal = Refusal(Archive(whole.substr(0, size)));
    EXPECT_TRUE(refusal.starts_with("is torn") || refusal.starts_with("is damaged"))
        << size << ": " << refusal;
  }
  EXPECT_EQ(Refusal(Archive(whole.substr(0, end_of_entries + 512))), "usable");
}

TEST_F(Images, TornCompressedArchivesAreRefused) {
  std::string noise;
  for (std::uint32_t i = 1; noise.size() < 400'000; i = i * 1664525U + 1013904223U)
    noise += static_cast<char>(i >> 24U);
  for (const auto add_filter :
       {&::archive_write_add_filter_gzip, &::archive_write_add_filter_xz, &::archive_write_add_filter_zstd}) {
    const fs::path packed = Compressed(TarEntry("a", '0', 0644, noise) + TarEnd(), add_filter);
    EXPECT_EQ(Refusal(packed), "usable");
    fs::resize_file(packed, fs::file_size(packed) / 2);
    EXPECT_THAT(Refusal(packed), StartsWith("is damaged at /a: "));
  }
}

TEST_F(Images, AreNotLaidOverWhatTheLabPutThere) {
  PrivateRoot device;
  device.ProvideLink("/lib", "usr/lib");
  device.ProvideFile("/usr/sbin/program");
  for (const std::string& entries :
       {TarEntry("lib/x", '0', 0644, ""), TarEntry("lib", '5', 0755, ""), TarEntry("lib", '2', 0777, "", "x"),
        TarEntry("usr/sbin/program", '0', 0755, ""), TarEntry("tmp", '2', 0777, "", "var")}) {
    DeviceLayout layout(device, limits_);
    EXPECT_THROW(LayImage(layout, Archive(entries + TarEnd())), OccupiedPlace);
  }
  DeviceLayout layout(device, limits_);
  LayImage(layout, Archive(TarEntry("etc", '5', 0750, "") + TarEntry("etc/x", '0', 0644, "x") + TarEnd()));
  EXPECT_EQ(device.Snapshot(), (Tree{{"/etc", Folder(0750)}, {"/etc/x", File("x")}}));
}

TEST_F(Images, OverlaysReplaceFilesAndLinks) {
  folder_.Write("image/etc/a", "old");
  folder_.Write("image/etc/stays", "stays");
  fs::create_symlink("/etc/stays", Image() / "etc/link");
  PrivateRoot device;
  DeviceLayout layout(device, limits_);
  LayImage(layout, Image());
  layout.BeginOverlay();
  layout.AddFile("/etc/a", 0600, "new");
  layout.AddFile("/etc/link", 0644, "no link");
  layout.AddDirectory("/etc", 0700);
  layout.AddFile("/usr/new", 0644, "");
  EXPECT_EQ(device.Snapshot(), (Tree{{"/etc", Folder(0700)},
                                     {"/etc/a", File("new", 0600)},
                                     {"/etc/link", File("no link")},
                                     {"/etc/stays", File("stays")},
                                     {"/usr", Folder()},
                                     {"/usr/new", File("")}}));
  EXPECT_THROW(layout.AddFile("/etc/a", 0600, "again"), UnusableImage);
  EXPECT_THROW(layout.AddFile("/usr", 0600, ""), UnusableImage);
  layout.BeginOverlay();
  layout.AddLink("/etc/a", "stays");
  EXPECT_EQ(device.Snapshot().at("/etc/a").kind, Entry::Kind::Link);
  layout.BeginOverlay();
  EXPECT_THROW(layout.AddFile("/etc/a/b", 0600, ""), UnusableImage);
}

}  // namespace
}  // namespace lab
