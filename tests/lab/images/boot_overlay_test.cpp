#include "lab/images/boot_overlay.h"

#include <gtest/gtest.h>

#include <bit>

#include "lab/images/device_layout.h"

namespace lab {
namespace {

constexpr std::size_t kSize = 0x200;

TEST(BootOverlays, MakeAnEnvironmentWhereThereIsNone) {
  PrivateRoot root;
  LayBootVariables(root, {{"usb3_disable", "1"}});
  EXPECT_EQ(root.Read("/dev/mtdblock1"), BootEnvironment({{"usb3_disable", "1"}}, 0x4000));
  EXPECT_EQ(root.Read("/etc/fw_env.config"), "/dev/mtdblock1 0x0 0x4000\n");
}

TEST(BootOverlays, KeepTheOtherVariables) {
  for (const std::endian order : {std::endian::little, std::endian::big}) {
    PrivateRoot root;
    root.Write("/etc/fw_env.config", "# device offset size\n/boot/env 0x10 0x200\n");
    root.Write("/boot/env", std::string(0x10, 'x') +
                                BootEnvironment({{"a", "1=2"}, {"b", "2"}}, kSize, 0xFF, order) + "behind");
    LayBootVariables(root, {{"b", "3"}, {"c", ""}});
    EXPECT_EQ(root.Read("/boot/env"),
              std::string(0x10, 'x') +
                  BootEnvironment({{"a", "1=2"}, {"b", "3"}, {"c", ""}}, kSize, 0xFF, order) + "behind");
  }
}

TEST(BootOverlays, SetBothCopiesFromTheNewerOne) {
  PrivateRoot root;
  root.Write("/etc/fw_env.config", "/boot/1 0x0 0x200\n/boot/2 0x0 0x200\n");
  root.Write("/boot/1", RedundantBootEnvironment({{"a", "newer"}}, kSize, 7));
  root.Write("/boot/2", RedundantBootEnvironment({{"a", "older"}}, kSize, 6));
  LayBootVariables(root, {{"b", "1"}});
  const std::string both = RedundantBootEnvironment({{"a", "newer"}, {"b", "1"}}, kSize, 1);
  EXPECT_EQ(root.Read("/boot/1"), both);
  EXPECT_EQ(root.Read("/boot/2"), both);
}

TEST(BootOverlays, TakeTheFlagThatBeganAnewForTheNewerOne) {
  PrivateRoot root;
  root.Write("/etc/fw_env.config", "/boot/1 0x0 0x200\n/boot/2 0x0 0x200\n");
  root.Write("/boot/1", RedundantBootEnvironment({{"a", "older"}}, kSize, 255));
  root.Write("/boot/2", RedundantBootEnvironment({{"a", "newer"}}, kSize, 0));
  LayBootVariables(root, {{"b", "1"}});
  EXPECT_EQ(root.Read("/boot/1"), RedundantBootEnvironment({{"a", "newer"}, {"b", "1"}}, kSize, 1));
}

TEST(BootOverlays, BeginAnewWhereTheEnvironmentIsDamagedOrMissing) {
  PrivateRoot root;
  root.Write("/etc/fw_env.config", "/boot/env 0x0 0x200\n");
  LayBootVariables(root, {{"a", "1"}});
  EXPECT_EQ(root.Read("/boot/env"), BootEnvironment({{"a", "1"}}, kSize));
  root.Write("/boot/env", "no environment" + std::string(kSize, '\0'));
  LayBootVariables(root, {{"a", "1"}});
  EXPECT_EQ(root.Read("/boot/env").substr(0, kSize), BootEnvironment({{"a", "1"}}, kSize));
}

TEST(BootOverlays, AreRefusedWhereTheyCannotBeStored) {
  PrivateRoot root;
  root.Write("/etc/fw_env.config", "/boot/env 0x0 0x10\n");
  EXPECT_THROW(LayBootVariables(root, {{"a", "much too long for it"}}), UnusableImage);
  EXPECT_THROW(LayBootVariables(root, {{"a=b", "1"}}), UnusableImage);
  EXPECT_FALSE(root.Exists("/boot/env"));
  LayBootVariables(root, {});
  EXPECT_FALSE(root.Exists("/boot/env"));
}

TEST(BootOverlays, TakeNoSizeOutOfADamagedFile) {
  PrivateRoot root;
  root.Write("/etc/fw_env.config",
             "/boot/env 0x0 0xFFFFFFFFFFFFFFFF\n/boot/env 0xFFFFFFFF0 0x10\nrelative 0 16\n");
  LayBootVariables(root, {{"a", "1"}});
  EXPECT_FALSE(root.Exists("/boot/env"));
  EXPECT_TRUE(root.Exists("/dev/mtdblock1"));
}

}  // namespace
}  // namespace lab
