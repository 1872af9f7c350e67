#include "lab/images/boot_variables.h"

#include <gtest/gtest.h>

#include <bit>

#include "lab/images/tree_builder.h"
#include "tests/lab/images/laid_images.h"

namespace lab {
namespace {

constexpr std::size_t kSize = 0x200;

TEST(BootVariableChanges, MakeAnEnvironmentWhereThereIsNone) {
  Tree device;
  SetBootVariables(device, {{"usb3_disable", "1"}});
  EXPECT_EQ(device.at("/dev/mtdblock1").content, BootEnvironment({{"usb3_disable", "1"}}, 0x4000));
  EXPECT_EQ(device.at("/etc/fw_env.config").content, "/dev/mtdblock1 0x0 0x4000\n");
}

TEST(BootVariableChanges, KeepTheOtherVariables) {
  for (const std::endian order : {std::endian::little, std::endian::big}) {
    Tree device;
    device["/etc/fw_env.config"] = lab_test::File("# device offset size\n/boot/env 0x10 0x200\n");
    device["/boot/env"] = lab_test::File(
        std::string(0x10, 'x') + BootEnvironment({{"a", "1=2"}, {"b", "2"}}, kSize, 0xFF, order) + "behind");
    SetBootVariables(device, {{"b", "3"}, {"c", ""}});
    EXPECT_EQ(device.at("/boot/env").content,
              std::string(0x10, 'x') +
                  BootEnvironment({{"a", "1=2"}, {"b", "3"}, {"c", ""}}, kSize, 0xFF, order) + "behind");
  }
}

TEST(BootVariableChanges, SetBothCopiesFromTheNewerOne) {
  Tree device;
  device["/etc/fw_env.config"] = lab_test::File("/boot/1 0x0 0x200\n/boot/2 0x0 0x200\n");
  device["/boot/1"] = lab_test::File(RedundantBootEnvironment({{"a", "newer"}}, kSize, 7));
  device["/boot/2"] = lab_test::File(RedundantBootEnvironment({{"a", "older"}}, kSize, 6));
  SetBootVariables(device, {{"b", "1"}});
  const std::string both = RedundantBootEnvironment({{"a", "newer"}, {"b", "1"}}, kSize, 1);
  EXPECT_EQ(device.at("/boot/1").content, both);
  EXPECT_EQ(device.at("/boot/2").content, both);
}

TEST(BootVariableChanges, TakeTheFlagThatBeganAnewForTheNewerOne) {
  Tree device;
  device["/etc/fw_env.config"] = lab_test::File("/boot/1 0x0 0x200\n/boot/2 0x0 0x200\n");
  device["/boot/1"] = lab_test::File(RedundantBootEnvironment({{"a", "older"}}, kSize, 255));
  device["/boot/2"] = lab_test::File(RedundantBootEnvironment({{"a", "newer"}}, kSize, 0));
  SetBootVariables(device, {{"b", "1"}});
  EXPECT_EQ(device.at("/boot/1").content, RedundantBootEnvironment({{"a", "newer"}, {"b", "1"}}, kSize, 1));
}

TEST(BootVariableChanges, BeginAnewWhereTheEnvironmentIsDamagedOrMissing) {
  Tree device;
  device["/etc/fw_env.config"] = lab_test::File("/boot/env 0x0 0x200\n");
  SetBootVariables(device, {{"a", "1"}});
  EXPECT_EQ(device.at("/boot/env").content, BootEnvironment({{"a", "1"}}, kSize));
  device["/boot/env"] = lab_test::File("no environment" + std::string(kSize, '\0'));
  SetBootVariables(device, {{"a", "1"}});
  EXPECT_EQ(device.at("/boot/env").content.substr(0, kSize), BootEnvironment({{"a", "1"}}, kSize));
}

TEST(BootVariableChanges, AreRefusedWhereTheyCannotBeStored) {
  Tree device;
  device["/etc/fw_env.config"] = lab_test::File("/boot/env 0x0 0x10\n");
  EXPECT_THROW(SetBootVariables(device, {{"a", "much too long for it"}}), UnusableImage);
  EXPECT_THROW(SetBootVariables(device, {{"a=b", "1"}}), UnusableImage);
  EXPECT_FALSE(device.contains("/boot/env"));
  SetBootVariables(device, {});
  EXPECT_FALSE(device.contains("/boot/env"));
}

TEST(BootVariableChanges, TakeNoSizeOutOfADamagedFile) {
  Tree device;
  device["/etc/fw_env.config"] =
      lab_test::File("/boot/env 0x0 0xFFFFFFFFFFFFFFFF\n/boot/env 0xFFFFFFFF0 0x10\nrelative 0 16\n");
  SetBootVariables(device, {{"a", "1"}});
  EXPECT_FALSE(device.contains("/boot/env"));
  EXPECT_TRUE(device.contains("/dev/mtdblock1"));
}

}  // namespace
}  // namespace lab
