#include "lab/images/boot_environment.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <stdexcept>

#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

const BootVariables kVariables{{"bootdelay", "2"}, {"usb3_disable", "1"}, {"bootcmd", "run a; run b=c"}};

TEST(BootEnvironment, HasTheSumThenTheVariablesThenPadding) {
  // CRC-32 of the 12 bytes behind the sum.
  EXPECT_EQ(BootEnvironment({{"a", "1"}, {"b", "2"}}, 16, 0xFF, std::endian::little),
            std::string("\xf5\xea\x9b\xbe"
                        "a=1\0"
                        "b=2\0"
                        "\0\xff\xff\xff",
                        16));
}

TEST(BootEnvironment, HasItsSumInTheByteOrderOfTheDevice) {
  EXPECT_EQ(BootEnvironment({{"a", "1"}, {"b", "2"}}, 16, 0xFF, std::endian::big).substr(0, 4),
            "\xbe\x9b\xea\xf5");
  EXPECT_EQ(RedundantBootEnvironment({{"a", "1"}, {"b", "2"}}, 17, 7, 0xFF, std::endian::big).substr(0, 5),
            "\xbe\x9b\xea\xf5\7");
  EXPECT_EQ(BootEnvironment(kVariables, 64), BootEnvironment(kVariables, 64, 0xFF, std::endian::native));
}

TEST(BootEnvironment, MayBePaddedWithZeros) {
  const std::string image = BootEnvironment({{"a", "1"}}, 32, 0);
  EXPECT_EQ(image.substr(4), std::string("a=1\0", 4) + std::string(24, '\0'));
}

TEST(BootEnvironment, EndsTwiceWhenEmpty) {
  EXPECT_EQ(BootEnvironment({}, 8).substr(4), std::string("\0\0\xff\xff", 4));
}

TEST(BootEnvironment, StoresEmptyValues) {
  EXPECT_EQ(BootEnvironment({{"a", ""}}, 8).substr(4), std::string("a=\0\0", 4));
}

TEST(BootEnvironment, RefusesWhatDoesNotFit) {
  EXPECT_EQ(BootEnvironment({{"a", "1"}}, 9).size(), 9U);
  EXPECT_THROW(BootEnvironment({{"a", "1"}}, 8), std::invalid_argument);
  EXPECT_THROW(BootEnvironment({}, 3), std::invalid_argument);
  EXPECT_THROW(RedundantBootEnvironment({{"a", "1"}}, 9, 1), std::invalid_argument);
}

TEST(BootEnvironment, RefusesWhatCannotBeStored) {
  EXPECT_THROW(BootEnvironment({{"", "1"}}, 64), std::invalid_argument);
  EXPECT_THROW(BootEnvironment({{"a=b", "1"}}, 64), std::invalid_argument);
  EXPECT_THROW(BootEnvironment({{std::string("a\0", 2), "1"}}, 64), std::invalid_argument);
  EXPECT_THROW(BootEnvironment({{"a", std::string("\0", 1)}}, 64), std::invalid_argument);
}

TEST(RedundantBootEnvironment, HasItsFlagBehindTheSum) {
  const std::string single = BootEnvironment({{"a", "1"}}, 16);
  const std::string copy = RedundantBootEnvironment({{"a", "1"}}, 17, 7);
  EXPECT_EQ(copy, single.substr(0, 4) + '\7' + single.substr(4));
}

TEST(BootEnvironmentConfigLine, NamesPathOffsetAndSize) {
  EXPECT_EQ(BootEnvironmentConfigLine("/dev/mtd1", 0, 0x4000), "/dev/mtd1 0x0 0x4000\n");
  EXPECT_EQ(BootEnvironmentConfigLine("/dev/mtd1", 0x20000, 0x1000), "/dev/mtd1 0x20000 0x1000\n");
}

TEST(InstallBootEnvironment, GivesADeviceItsBootEnvironment) {
  PrivateRoot root;
  InstallBootEnvironment(root, {{"a", "1"}}, "/boot/uboot.env", 0x1000);
  EXPECT_EQ(root.Read("/boot/uboot.env"), BootEnvironment({{"a", "1"}}, 0x1000));
  EXPECT_EQ(root.Read("/etc/fw_env.config"), "/boot/uboot.env 0x0 0x1000\n");
}

/// The images as the real tool reads them.
class PrintedEnvironment : public ::testing::Test {
 protected:
  void SetUp() override {
    if (testing_support::Shell("command -v fw_printenv").status != 0) GTEST_SKIP() << "no fw_printenv";
  }

  std::string Print(const std::string& arguments = "") const {
    return testing_support::Shell("fw_printenv -c " + (folder_ / "config").native() + " " + arguments +
                                  " | sort")
        .output;
  }

  std::string Path(std::string_view name) const { return (folder_ / name).native(); }

  lab_test::TemporaryFolder folder_;
};

constexpr const char* kPrinted = "bootcmd=run a; run b=c\nbootdelay=2\nusb3_disable=1\n";

TEST_F(PrintedEnvironment, IsTheSameForOneCopy) {
  for (const std::uint8_t padding : std::array<std::uint8_t, 2>{0x00, 0xFF}) {
    folder_.Write("env", BootEnvironment(kVariables, 0x2000, padding));
    folder_.Write("config", BootEnvironmentConfigLine(Path("env"), 0, 0x2000));
    EXPECT_EQ(Print(), kPrinted);
  }
}

TEST_F(PrintedEnvironment, IsTheSameBehindAnOffset) {
  folder_.Write("env", std::string(0x300, 'x') + BootEnvironment(kVariables, 0x1000));
  folder_.Write("config", BootEnvironmentConfigLine(Path("env"), 0x300, 0x1000));
  EXPECT_EQ(Print(), kPrinted);
}

TEST_F(PrintedEnvironment, IsThatOfTheNewerOfTwoCopies) {
  const BootVariables old{{"usb3_disable", "0"}};
  folder_.Write("config", BootEnvironmentConfigLine(Path("one"), 0, 0x1000) +
                              BootEnvironmentConfigLine(Path("two"), 0, 0x1000));
  folder_.Write("one", RedundantBootEnvironment(kVariables, 0x1000, 3));
  folder_.Write("two", RedundantBootEnvironment(old, 0x1000, 2));
  EXPECT_EQ(Print(), kPrinted);
  folder_.Write("two", RedundantBootEnvironment(old, 0x1000, 4));
  EXPECT_EQ(Print(), "usb3_disable=0\n");
}

TEST_F(PrintedEnvironment, IsThatOfTheCopyWhoseFlagBeganAnew) {
  const BootVariables old{{"usb3_disable", "0"}};
  folder_.Write("config", BootEnvironmentConfigLine(Path("one"), 0, 0x1000) +
                              BootEnvironmentConfigLine(Path("two"), 0, 0x1000));
  folder_.Write("one", RedundantBootEnvironment(old, 0x1000, 255));
  folder_.Write("two", RedundantBootEnvironment(kVariables, 0x1000, 0));
  EXPECT_EQ(Print(), kPrinted);
}

TEST_F(PrintedEnvironment, IsThatOfTheGoodCopy) {
  std::string broken = RedundantBootEnvironment({{"usb3_disable", "0"}}, 0x1000, 9);
  broken[5] = 'X';
  folder_.Write("config", BootEnvironmentConfigLine(Path("one"), 0, 0x1000) +
                              BootEnvironmentConfigLine(Path("two"), 0, 0x1000));
  folder_.Write("one", RedundantBootEnvironment(kVariables, 0x1000, 1));
  folder_.Write("two", broken);
  EXPECT_EQ(Print(), kPrinted);
}

TEST(BootCopies, AreThoseThatTheConfigurationNames) {
  EXPECT_EQ(BootCopiesIn("# none\n\n/dev/mtd1 0x10 512 0x1000\n/boot/env 16 0x200\n/third 0 1\n"),
            (std::vector<BootCopy>{{"/dev/mtd1", 16, 512}, {"/boot/env", 16, 512}}));
  EXPECT_EQ(BootCopiesIn("relative 0 16\n/no/size 0\n/large 0 0x100001\n/far 0x100001 1\n/x 0 0x100000\n"),
            (std::vector<BootCopy>{{"/x", 0, 0x100000}}));
}

class BootCopiesInOrder : public ::testing::TestWithParam<std::endian> {
 protected:
  const BootVariables variables_{{"a", "1=2"}, {"b", ""}};
  const BootCopy copy_{"/env", 3, 64};
  const std::string file_ = "xyz" + RedundantBootEnvironment(variables_, 64, 7, 0xFF, GetParam());
};

INSTANTIATE_TEST_SUITE_P(Machines, BootCopiesInOrder,
                         ::testing::Values(std::endian::little, std::endian::big));

TEST_P(BootCopiesInOrder, AreReadAsTheyWereMade) {
  const auto content = ReadBootCopy(file_, copy_, true);
  ASSERT_TRUE(content);
  EXPECT_EQ(content->variables, variables_);
  EXPECT_EQ(content->flag, 7);
  EXPECT_EQ(content->order, GetParam());
}

TEST_P(BootCopiesInOrder, AreNoneWithoutTheirSum) {
  EXPECT_FALSE(ReadBootCopy(file_, copy_, false));
  EXPECT_FALSE(ReadBootCopy(file_.substr(0, file_.size() - 1), copy_, true));
  EXPECT_FALSE(ReadBootCopy("abcd" + file_.substr(4), copy_, true));
}

TEST(BootCopies, AreReadWithoutAFlag) {
  const BootVariables variables{{"a", "1=2"}};
  const auto content = ReadBootCopy("xyz" + BootEnvironment(variables, 64), {"/env", 3, 64}, false);
  ASSERT_TRUE(content);
  EXPECT_EQ(content->variables, variables);
  EXPECT_FALSE(ReadBootCopy("xyzw", {"/env", 3, 1}, false));
}

TEST(BootCopies, AreNewerWithAHigherFlagAndWithTheFirstBehindTheLast) {
  EXPECT_TRUE(IsNewerBootFlag(2, 1));
  EXPECT_FALSE(IsNewerBootFlag(1, 2));
  EXPECT_FALSE(IsNewerBootFlag(1, 1));
  EXPECT_TRUE(IsNewerBootFlag(0, 255));
  EXPECT_FALSE(IsNewerBootFlag(255, 0));
  EXPECT_TRUE(IsNewerBootFlag(255, 1));
}

}  // namespace
}  // namespace lab
