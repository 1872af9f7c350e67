#include "migration/legacy_archive.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <utility>

#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using std::filesystem::filesystem_error;
using testing_support::LogLines;
using Files = std::set<std::string>;

constexpr const char* kArchive = "/usr/kelp/etc/wifi/legacy";

class LegacyArchiveTest : public ::testing::Test {
 protected:
  LegacyArchiveTest() { device_.Files().MakeDirectory("/usr/kelp/etc/wifi"); }

  void Write(const std::string& path, const std::string& text) { device_.Files().Write(path, text); }
  void Archive(const Files& files) {
    device_.Run([&] { ArchiveLegacyFiles(files); });
  }
  void ExpectFailure(const Files& files) { EXPECT_THROW(Archive(files), filesystem_error); }

  bool Exists(const std::string& path) { return device_.Files().Exists(path); }
  std::string Read(const std::string& path) { return device_.Files().Read(path); }
  std::string ReadArchived(const std::string& name) { return Read(std::string(kArchive) + "/" + name); }
  bool IsArchived(const std::string& name) { return Exists(std::string(kArchive) + "/" + name); }

  testing_support::TestDevice device_;
};

TEST_F(LegacyArchiveTest, FilesMoveIntoTheArchiveUnderTheirNames) {
  Write("/usr/kelp/etc/wifi/wifi_nvram", "nvram");
  Write("/etc/hostapd/mac_filter/mf.info", "info");
  Archive({"/usr/kelp/etc/wifi/wifi_nvram", "/etc/hostapd/mac_filter/mf.info"});
  EXPECT_EQ(ReadArchived("wifi_nvram"), "nvram");
  EXPECT_EQ(ReadArchived("mf.info"), "info");
  EXPECT_FALSE(Exists("/usr/kelp/etc/wifi/wifi_nvram"));
  EXPECT_FALSE(Exists("/etc/hostapd/mac_filter/mf.info"));
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(LegacyArchiveTest, MovedFilesKeepTheirModesAndBytes) {
  const std::string bytes("a\0b\xff\n", 5);
  device_.Files().Write("/etc/file", bytes, 0640);
  Archive({"/etc/file"});
  const auto tree = device_.Files().Snapshot();
  ASSERT_TRUE(tree.contains("/usr/kelp/etc/wifi/legacy/file"));
  EXPECT_EQ(tree.at("/usr/kelp/etc/wifi/legacy/file").content, bytes);
  EXPECT_EQ(tree.at("/usr/kelp/etc/wifi/legacy/file").mode, 0640U);
}

TEST_F(LegacyArchiveTest, OtherFilesStay) {
  Write("/etc/hostapd/mac_filter/mf.info", "info");
  Write("/etc/hostapd/mac_filter/mf_deny.conf", "deny");
  Archive({"/etc/hostapd/mac_filter/mf.info"});
  EXPECT_EQ(Read("/etc/hostapd/mac_filter/mf_deny.conf"), "deny");
}

TEST_F(LegacyArchiveTest, ArchiveIsMadeWithItsParents) {
  device_.Files().Remove("/usr");
  Write("/etc/file", "text");
  Archive({"/etc/file"});
  EXPECT_EQ(ReadArchived("file"), "text");
}

TEST_F(LegacyArchiveTest, ArchiveIsMadeEvenForNoFiles) {
  Archive({});
  EXPECT_EQ(device_.Files().Snapshot().at(kArchive).kind, lab::Entry::Kind::Directory);
}

TEST_F(LegacyArchiveTest, ArchiveIsForNobodyButItsOwnerToWriteToWhateverTheUmask) {
  for (const auto& [mask, mode] : {std::pair{0U, 0755U}, {022U, 0755U}, {002U, 0755U}, {077U, 0700U}}) {
    const mode_t earlier = ::umask(mask);
    Archive({});
    ::umask(earlier);
    EXPECT_EQ(device_.Files().Snapshot().at(kArchive).mode, mode) << std::oct << mask;
    device_.Files().Remove(kArchive);
  }
}

TEST_F(LegacyArchiveTest, ExistingArchiveKeepsItsMode) {
  device_.Files().MakeDirectory(kArchive);
  device_.Files().SetMode(kArchive, 0711);
  Archive({});
  EXPECT_EQ(device_.Files().Snapshot().at(kArchive).mode, 0711U);
}

TEST_F(LegacyArchiveTest, ExistingArchiveKeepsWhatItHolds) {
  Write("/usr/kelp/etc/wifi/legacy/earlier", "earlier");
  Write("/etc/file", "text");
  Archive({"/etc/file"});
  EXPECT_EQ(ReadArchived("earlier"), "earlier");
  EXPECT_EQ(ReadArchived("file"), "text");
}

TEST_F(LegacyArchiveTest, FileOfTheSameNameInTheArchiveIsReplaced) {
  Write("/usr/kelp/etc/wifi/legacy/file", "much longer and older");
  Write("/etc/file", "new");
  Archive({"/etc/file"});
  EXPECT_EQ(ReadArchived("file"), "new");
}

TEST_F(LegacyArchiveTest, OfTwoFilesWithOneNameTheLaterInByteOrderStays) {
  Write("/etc/name", "from etc");
  Write("/usr/name", "from usr");
  Archive({"/usr/name", "/etc/name"});
  EXPECT_EQ(ReadArchived("name"), "from usr");
  EXPECT_FALSE(Exists("/etc/name"));
  EXPECT_FALSE(Exists("/usr/name"));
}

TEST_F(LegacyArchiveTest, FirstMissingFileStopsBehindThoseBeforeItInByteOrder) {
  // Upper case before lower case, '.' before '/', "lbd.conf" before "lbd.guest.conf", whole paths and not
  // names.
  Write("/etc/Z", "1");
  Write("/etc/a.b", "2");
  Write("/etc/a/zz", "3");
  Write("/usr/kelp/etc/wifi/lbd.conf", "4");
  Write("/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00", "6");
  Write("/var/aa", "7");
  ExpectFailure({"/var/aa", "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00",
                 "/usr/kelp/etc/wifi/lbd.guest.conf", "/usr/kelp/etc/wifi/lbd.conf", "/etc/a/zz", "/etc/a.b",
                 "/etc/Z"});
  EXPECT_EQ(ReadArchived("Z"), "1");
  EXPECT_EQ(ReadArchived("a.b"), "2");
  EXPECT_EQ(ReadArchived("zz"), "3");
  EXPECT_EQ(ReadArchived("lbd.conf"), "4");
  EXPECT_EQ(Read("/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00"), "6");
  EXPECT_EQ(Read("/var/aa"), "7");
  EXPECT_FALSE(IsArchived("aa"));
  EXPECT_FALSE(IsArchived("wifi_ap_00:00:00:00:00:00"));
}

TEST_F(LegacyArchiveTest, MissingFirstFileLeavesEveryOtherInPlace) {
  Write("/usr/file", "text");
  ExpectFailure({"/etc/missing", "/usr/file"});
  EXPECT_EQ(Read("/usr/file"), "text");
  EXPECT_EQ(device_.Files().Snapshot().at(kArchive).kind, lab::Entry::Kind::Directory);
}

TEST_F(LegacyArchiveTest, MissingFileIsNamedAsTheCause) {
  const std::string what =
      device_.RunThrowing<filesystem_error>([] { ArchiveLegacyFiles({"/etc/missing"}); });
  EXPECT_NE(what.find("/etc/missing"), std::string::npos) << what;
  EXPECT_NE(what.find("No such file or directory"), std::string::npos) << what;
}

TEST_F(LegacyArchiveTest, MissingFileLeavesTheOneOfItsNameInTheArchive) {
  Write("/usr/kelp/etc/wifi/legacy/file", "earlier");
  ExpectFailure({"/etc/file"});
  EXPECT_EQ(ReadArchived("file"), "earlier");
}

TEST_F(LegacyArchiveTest, NamesAreNoFormats) {
  Write("/etc/%s%n", "text");
  Archive({"/etc/%s%n"});
  EXPECT_EQ(ReadArchived("%s%n"), "text");
}

TEST_F(LegacyArchiveTest, LinksAreMovedThemselves) {
  Write("/etc/target", "text");
  device_.Files().Link("/usr/link", "/etc/target");
  device_.Files().Link("/usr/dangling", "/no/where");
  Archive({"/usr/link", "/usr/dangling"});
  const auto tree = device_.Files().Snapshot();
  EXPECT_EQ(tree.at("/usr/kelp/etc/wifi/legacy/link").kind, lab::Entry::Kind::Link);
  EXPECT_EQ(tree.at("/usr/kelp/etc/wifi/legacy/link").content, "/etc/target");
  EXPECT_EQ(tree.at("/usr/kelp/etc/wifi/legacy/dangling").content, "/no/where");
  EXPECT_EQ(Read("/etc/target"), "text");
}

TEST_F(LegacyArchiveTest, FolderIsMovedLikeAFile) {
  Write("/etc/folder/inside", "text");
  Archive({"/etc/folder"});
  EXPECT_EQ(ReadArchived("folder/inside"), "text");
}

TEST_F(LegacyArchiveTest, FileInTheArchivesPlaceFailsAndMovesNothing) {
  Write(kArchive, "no folder");
  Write("/etc/file", "text");
  EXPECT_EQ(device_.RunThrowing<filesystem_error>([] { ArchiveLegacyFiles({"/etc/file"}); }),
            "filesystem error: cannot create directories: File exists [/usr/kelp/etc/wifi/legacy/]");
  EXPECT_EQ(Read(kArchive), "no folder");
  EXPECT_EQ(Read("/etc/file"), "text");
}

TEST_F(LegacyArchiveTest, DanglingLinkInTheArchivesPlaceFailsAndMovesNothing) {
  device_.Files().Link(kArchive, "/no/where");
  Write("/etc/file", "text");
  ExpectFailure({"/etc/file"});
  EXPECT_EQ(Read("/etc/file"), "text");
}

TEST_F(LegacyArchiveTest, LinkLoopInTheArchivesPlaceIsNamedAsTheCause) {
  device_.Files().Link(kArchive, kArchive);
  EXPECT_EQ(device_.RunThrowing<filesystem_error>([] { ArchiveLegacyFiles({"/etc/file"}); }),
            "filesystem error: cannot create directories: Too many levels of symbolic links "
            "[/usr/kelp/etc/wifi/legacy/]");
}

TEST_F(LegacyArchiveTest, LinkToAFolderInTheArchivesPlaceIsFollowed) {
  device_.Files().MakeDirectory("/var/archive");
  device_.Files().Link(kArchive, "/var/archive");
  Write("/etc/file", "text");
  Archive({"/etc/file"});
  EXPECT_EQ(Read("/var/archive/file"), "text");
}

TEST_F(LegacyArchiveTest, FileInAParentsPlaceFailsAndMovesNothing) {
  device_.Files().Remove("/usr/kelp/etc/wifi");
  Write("/usr/kelp/etc/wifi", "no folder");
  Write("/etc/file", "text");
  ExpectFailure({"/etc/file"});
  EXPECT_EQ(Read("/etc/file"), "text");
}

TEST_F(LegacyArchiveTest, FolderOfTheSameNameInTheArchiveStopsThere) {
  device_.Files().MakeDirectory("/usr/kelp/etc/wifi/legacy/b");
  Write("/etc/a", "a");
  Write("/etc/b", "b");
  Write("/etc/c", "c");
  ExpectFailure({"/etc/a", "/etc/b", "/etc/c"});
  EXPECT_EQ(ReadArchived("a"), "a");
  EXPECT_EQ(Read("/etc/b"), "b");
  EXPECT_EQ(Read("/etc/c"), "c");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
