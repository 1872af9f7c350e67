#include <archive.h>
#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "lab/images/tar_text.h"
#include "tests/lab/images/laid_images.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using lab_test::File;
using lab_test::Folder;
using ::testing::ElementsAre;
using ::testing::Key;
using ::testing::Pair;
using ::testing::StartsWith;

class ArchiveImages : public lab_test::LaidImages {};

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

TEST_F(ArchiveImages, AreLaidOut) {
  EXPECT_EQ(Laid(Archive(kSmallArchive)), SmallTree());
}

TEST_F(ArchiveImages, MayBeCompressed) {
  EXPECT_EQ(Laid(Compressed(kSmallArchive, &::archive_write_add_filter_gzip)), SmallTree());
  EXPECT_EQ(Laid(Compressed(kSmallArchive, &::archive_write_add_filter_xz)), SmallTree());
  EXPECT_EQ(Laid(Compressed(kSmallArchive, &::archive_write_add_filter_zstd)), SmallTree());
}

TEST_F(ArchiveImages, KeepTheBytesOfNamesAndFiles) {
  const std::string bytes("\0\xff\n", 3);
  EXPECT_THAT(Laid(Archive(TarEntry("a\xe9\n", '0', 0644, bytes) + TarEnd())),
              ElementsAre(Pair("/a\xe9\n", File(bytes))));
}

TEST_F(ArchiveImages, PathsThatLeadOutAreRefused) {
  const std::string secret = (folder_ / "outside/written").native();
  EXPECT_EQ(Refusal(Archive(TarEntry(secret, '0', 0644, "x") + TarEnd())), "has an absolute path: " + secret);
  for (const char* name : {"../outside/written", "a/../../outside/written", "..", "etc/..", "a/../b"}) {
    EXPECT_EQ(Refusal(Archive(TarEntry(name, '0', 0644, "x") + TarEnd())),
              std::string("has a path with \"..\": ") + name);
  }
  EXPECT_THAT(Laid(Archive(TarEntry("..a/b..", '0', 0644, "x") + TarEnd())),
              ElementsAre(Key("/..a"), Key("/..a/b..")));
}

TEST_F(ArchiveImages, LinksThatLeadOutAreRefused) {
  for (const char* target : {"../outside", "..", "/..", "/etc/../../x", "x/../../../outside"}) {
    EXPECT_EQ(Refusal(Archive(TarEntry("a", '2', 0777, "", target) + TarEnd())),
              std::string("has a link that leads out of it: /a -> ") + target);
  }
  EXPECT_EQ(Refusal(Archive(TarEntry("a/b/c", '2', 0777, "", "../../../x") + TarEnd())),
            "has a link that leads out of it: /a/b/c -> ../../../x");
  EXPECT_EQ(Laid(Archive(TarEntry("a/b/c", '2', 0777, "", "../../x") + TarEnd())).at("/a/b/c").content,
            "../../x");
}

TEST_F(ArchiveImages, NothingIsWrittenThroughALink) {
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

TEST_F(ArchiveImages, NothingIsReadThroughALink) {
  const std::string target = (folder_ / "outside/secret").native();
  EXPECT_EQ(Refusal(Archive(TarEntry("a", '1', 0644, "", target) + TarEnd())),
            "has an absolute path: " + target);
  EXPECT_EQ(Refusal(Archive(TarEntry("a", '1', 0644, "", "../outside/secret") + TarEnd())),
            "has a path with \"..\": ../outside/secret");
  EXPECT_EQ(
      Refusal(Archive(TarEntry("a", '2', 0777, "", target) + TarEntry("b", '1', 0644, "", "a") + TarEnd())),
      "has a hard link to what is no file in it: /b -> /a");
}

TEST_F(ArchiveImages, HardLinksBecomeFiles) {
  const Tree laid =
      Laid(Archive(TarEntry("etc/a", '0', 0600, "text") + TarEntry("b", '1', 0, "", "etc/a") + TarEnd()));
  EXPECT_EQ(laid.at("/b"), File("text", 0600));
  EXPECT_EQ(Refusal(Archive(TarEntry("b", '1', 0, "", "a") + TarEntry("a", '0', 0600, "text") + TarEnd())),
            "has a hard link to what is no file in it: /b -> /a");
}

TEST_F(ArchiveImages, DevicesAndFifosAreRefused) {
  EXPECT_EQ(Refusal(Archive(TarEntry("dev/sda", '4', 0644, "") + TarEnd())), "has a device node: /dev/sda");
  EXPECT_EQ(Refusal(Archive(TarEntry("dev/null", '3', 0644, "") + TarEnd())), "has a device node: /dev/null");
  EXPECT_EQ(Refusal(Archive(TarEntry("pipe", '6', 0644, "") + TarEnd())), "has a FIFO: /pipe");
}

TEST_F(ArchiveImages, TwoEntriesOfOneNameAreRefused) {
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

TEST_F(ArchiveImages, MayHoldSoManyBytes) {
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
}

// Where a header has its size and its sum.
constexpr std::size_t kTarSize = 124;
constexpr std::size_t kTarSum = 148;

TEST_F(ArchiveImages, GiantsAndBombsCostNoMemory) {
  const std::string reason = "holds more than 67108864 bytes unpacked";
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

TEST_F(ArchiveImages, MayHoldSoManyEntries) {
  limits_.entries = 2;
  const std::string two = TarEntry("a", '0', 0644, "") + TarEntry("b", '5', 0755, "");
  EXPECT_EQ(Refusal(Archive(two + TarEnd())), "usable");
  EXPECT_EQ(Refusal(Archive(two + TarEntry("c", '2', 0777, "", "a") + TarEnd())),
            "holds more than 2 entries");
}

/// Entries of types that an entry longer than a header's field needs before it: its name ('L') or target
/// ('K').
std::string WithLong(char type, const std::string& text, const std::string& entry) {
  return TarEntry("././@LongLink", type, 0644, text + std::string(1, '\0')) + entry + TarEnd();
}

std::string WithName(const std::string& name) {
  return WithLong('L', name, TarEntry("short", '0', 0644, ""));
}

std::string Folders(std::size_t count) {
  std::string path;
  while (count-- > 0) path += "a/";
  return path;
}

TEST_F(ArchiveImages, NamesThatNoDeviceHasAreRefused) {
  EXPECT_EQ(Refusal(Archive(WithName("etc/" + std::string(255, 'n')))), "usable");
  EXPECT_EQ(Refusal(Archive(WithName("etc/" + std::string(256, 'n')))), "has a name of 256 bytes");
  EXPECT_EQ(Refusal(Archive(WithName(Folders(99) + "f"))), "usable");
  EXPECT_EQ(Refusal(Archive(WithName(Folders(100) + "f"))), "is more than 100 levels deep");
  // Some hundred bytes when packed, and half a million folders.
  EXPECT_EQ(Refusal(Archive(WithName(Folders(500'000)))), "has a path of 1000000 bytes");
  EXPECT_EQ(Refusal(Archive(WithLong('K', std::string(4096, 't'), TarEntry("l", '2', 0777, "", "x")))),
            "has a link that is too long: /l");
  EXPECT_EQ(Refusal(Archive(WithLong('K', std::string(4095, 't'), TarEntry("l", '2', 0777, "", "x")))),
            "usable");
}

TEST_F(ArchiveImages, FoldersCountWhetherNamedOrNot) {
  limits_.entries = 3;
  const std::string three = TarEntry("a/b/c", '0', 0644, "");
  EXPECT_EQ(Refusal(Archive(three + TarEnd())), "usable");
  EXPECT_EQ(Refusal(Archive(three + TarEntry("a", '5', 0755, "") + TarEnd())), "usable") << "counted before";
  EXPECT_EQ(Refusal(Archive(three + TarEntry("d", '5', 0755, "") + TarEnd())), "holds more than 3 entries");
  EXPECT_EQ(Refusal(Archive(TarEntry("a/b/c/d", '0', 0644, "") + TarEnd())), "holds more than 3 entries");
}

/// A header by which an archive counts as of the form in which a hard link may have bytes of its own.
const std::string kPaxHeader = TarEntry("pax", 'x', 0644, "13 comment=a\n");

TEST_F(ArchiveImages, HardLinksHaveNoRoomForBytes) {
  limits_.bytes = 1000;
  const auto with = [](std::size_t size) {
    return TarEntry("a", '0', 0644, "x") + kPaxHeader +
           TarEntry("b", '1', 0644, std::string(size, 'x'), "a") + TarEnd();
  };
  EXPECT_EQ(Refusal(Archive(with(0))), "usable");
  EXPECT_EQ(Refusal(Archive(with(2000))), "holds more than 1000 bytes unpacked");
}

TEST_F(ArchiveImages, ThatUnpackToMoreThanTheirFilesAreRefused) {
  limits_ = {.bytes = 1000, .entries = 2};
  const auto with = [](std::size_t size) {
    return TarEntry("pax", 'x', 0644,
                    std::to_string(size) + " comment=" + std::string(size - 15, 'x') + "\n") +
           TarEntry("a", '0', 0644, "x") + TarEnd();
  };
  EXPECT_EQ(Refusal(Archive(with(10'000))), "usable");
  EXPECT_EQ(Refusal(Archive(with(20'000))),
            "unpacks to more than a device has, most of which is no file of it");
}

TEST_F(ArchiveImages, TornOnesAreRefused) {
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

TEST_F(ArchiveImages, TornCompressedOnesAreRefused) {
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

}  // namespace
}  // namespace lab
