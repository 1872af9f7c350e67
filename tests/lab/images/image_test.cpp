#include "lab/images/image.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "lab/images/tar_text.h"
#include "tests/lab/images/laid_images.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using ::testing::StartsWith;

class Images : public lab_test::LaidImages {};

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

TEST_F(Images, BecomePrivateRoots) {
  const std::string archive =
      TarEntry("etc/info.conf", '0', 0600, "x") + TarEntry("tmp", '2', 0777, "", "var/tmp");
  const PrivateRoot device(Archive(archive + TarEnd()));
  EXPECT_EQ(device.Snapshot(), (Tree{{"/etc", lab_test::Folder()},
                                     {"/etc/info.conf", lab_test::File("x", 0600)},
                                     {"/tmp", {Entry::Kind::Link, 0777, "var/tmp"}}}));
  EXPECT_TRUE(device.Exists("/var/lock")) << "as every device has it";
}

}  // namespace
}  // namespace lab
