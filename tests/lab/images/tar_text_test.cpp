#include "lab/images/tar_text.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

TEST(TarText, IsReadByTar) {
  const lab_test::TemporaryFolder folder;
  folder.Write("x.tar", TarEntry("etc/", '5', 0750, "") + TarEntry("etc/a", '0', 0604, "text\n") +
                            TarEntry("etc/b", '2', 0777, "", "a") + TarEnd());
  EXPECT_EQ(testing_support::Shell("TZ=UTC tar --numeric-owner -tvf " + (folder / "x.tar").native()).output,
            "drwxr-x--- 0/0               0 1970-01-01 00:00 etc/\n"
            "-rw----r-- 0/0               5 1970-01-01 00:00 etc/a\n"
            "lrwxrwxrwx 0/0               0 1970-01-01 00:00 etc/b -> a\n");
  EXPECT_EQ(testing_support::Shell("tar -xOf " + (folder / "x.tar").native() + " etc/a").output, "text\n");
}

TEST(TarText, FillsWholeBlocks) {
  EXPECT_EQ(TarEntry("a", '0', 0644, "").size(), 512U);
  EXPECT_EQ(TarEntry("a", '0', 0644, std::string(512, 'x')).size(), 1024U);
  EXPECT_EQ(TarEntry("a", '0', 0644, std::string(513, 'x')).size(), 1536U);
  EXPECT_EQ(TarEnd(), std::string(1024, '\0'));
  EXPECT_THROW(TarEntry(std::string(101, 'x'), '0', 0644, ""), std::invalid_argument);
}

}  // namespace
}  // namespace lab
