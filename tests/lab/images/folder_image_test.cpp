#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "tests/lab/images/laid_images.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using lab_test::File;
using lab_test::Folder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class FolderImages : public lab_test::LaidImages {};

TEST_F(FolderImages, AreLaidOut) {
  folder_.Write("image/etc/info.conf", "kelpbios=maple\n");
  fs::permissions(Image() / "etc/info.conf", fs::perms(0600));
  fs::permissions(Image() / "etc", fs::perms(0700));
  fs::create_symlink("/etc/info.conf", Image() / "etc/now");
  folder_.Write("image/usr/kelp/deep", "");
  fs::permissions(Image() / "usr/kelp/deep", fs::perms(0444));
  const Tree tree{{"/etc", Folder(0700)},
                  {"/etc/info.conf", File("kelpbios=maple\n", 0600)},
                  {"/etc/now", {Entry::Kind::Link, 0777, "/etc/info.conf"}},
                  {"/usr", Folder()},
                  {"/usr/kelp", Folder()},
                  {"/usr/kelp/deep", File("", 0444)}};
  EXPECT_EQ(Laid(Image()), tree);
  fs::create_directory_symlink(Image(), folder_ / "also");
  EXPECT_EQ(Laid(folder_ / "also"), tree) << "the name of the image itself may be a link";
}

TEST_F(FolderImages, KeepTheBytesOfNamesAndFiles) {
  const std::string bytes("\0\xff\n", 3);
  folder_.Write("image/a\xe9\n", bytes);
  EXPECT_THAT(Laid(Image()), ElementsAre(Pair("/a\xe9\n", File(bytes))));
}

TEST_F(FolderImages, SocketsAreLeftOut) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = (Image() / "s").native();
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM, 0));
  ASSERT_EQ(::bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_THAT(Laid(Image()), IsEmpty());
}

TEST_F(FolderImages, LinksThatLeadOutAreRefused) {
  fs::create_symlink("../outside/secret", Image() / "a");
  EXPECT_EQ(Refusal(Image()), "has a link that leads out of it: /a -> ../outside/secret");
}

TEST_F(FolderImages, NothingIsReadThroughALink) {
  fs::create_symlink(folder_ / "outside/secret", Image() / "a");
  EXPECT_EQ(Laid(Image()).at("/a").kind, Entry::Kind::Link);
}

TEST_F(FolderImages, FifosAreRefused) {
  ASSERT_EQ(::mkfifo((Image() / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(Refusal(Image()), "has a FIFO: /pipe");
}

TEST_F(FolderImages, MayHoldSoManyBytes) {
  limits_.bytes = 1000;
  folder_.Write("image/a", std::string(1000, 'x'));
  EXPECT_EQ(Refusal(Image()), "usable");
  folder_.Write("image/a", std::string(1001, 'x'));
  EXPECT_EQ(Refusal(Image()), "holds more than 1000 bytes unpacked");
}

TEST_F(FolderImages, MayHoldSoManyEntries) {
  limits_.entries = 3;
  folder_.Write("image/a/1", "");
  folder_.Write("image/a/2", "");
  EXPECT_EQ(Refusal(Image()), "usable");
  folder_.Write("image/a/3", "");
  EXPECT_EQ(Refusal(Image()), "holds more than 3 entries");
  folder_.Write("image/a/4", "");
  EXPECT_EQ(Refusal(Image()), "holds more than 3 entries");
}

TEST_F(FolderImages, SparseGiantsCostNoMemory) {
  folder_.Write("image/a", "");
  fs::resize_file(Image() / "a", std::uintmax_t{1} << 40);
  EXPECT_EQ(Refusal(Image()), "holds more than 67108864 bytes unpacked");
}

TEST_F(FolderImages, FoldersThatGoTooDeepAreRefused) {
  fs::path deepest = Image();
  for (int i = 0; i < 100; ++i) deepest /= "a";
  fs::create_directories(deepest);
  EXPECT_EQ(Refusal(Image()), "usable");
  fs::create_directory(deepest / "a");
  EXPECT_EQ(Refusal(Image()), "is more than 100 levels deep");
}

}  // namespace
}  // namespace lab
