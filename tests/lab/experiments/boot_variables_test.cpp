#include "lab/experiments/boot_variables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <vector>

#include "lab/images/boot_environment.h"

namespace lab {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::size_t kSize = 0x40;
const BootVariables kOlder{{"usb3_disable", "1"}};
const BootVariables kNewer{{"bootdelay", "2"}, {"usb3_disable", "0"}};

Entry File(const std::string& content) {
  return {Entry::Kind::File, 0644, content};
}

Tree DeviceWith(const std::string& one, const std::string& two) {
  return {{"/etc/fw_env.config", File("/boot/1 0x0 0x40\n/boot/2 0x0 0x40\n")},
          {"/boot/1", File(one)},
          {"/boot/2", File(two)}};
}

/// The names of the inputs' files and variables.
std::vector<std::string> Names(const Tree& device) {
  std::vector<std::string> names;
  for (const Input& input : BootVariableInputs(device)) names.push_back(input.file + " " + input.entry);
  return names;
}

TEST(BootVariables, AreThoseOfTheOneCopy) {
  const Tree device{{"/etc/fw_env.config", File("/boot/env 0x2 0x40\n")},
                    {"/boot/env", File("xy" + BootEnvironment(kOlder, kSize) + "z")}};
  const std::vector<Input> inputs = BootVariableInputs(device);
  ASSERT_EQ(inputs.size(), 1U);
  EXPECT_EQ(inputs[0].entry, "usb3_disable");
  ASSERT_EQ(inputs[0].variations.size(), 2U);
  EXPECT_EQ(inputs[0].variations[0].path, "/boot/env");
  EXPECT_EQ(inputs[0].variations[0].content, "xy" + BootEnvironment({}, kSize) + "z");
  EXPECT_EQ(inputs[0].variations[1].content, "xy" + BootEnvironment({{"usb3_disable", "0"}}, kSize) + "z");
}

TEST(BootVariables, AreThoseOfTheNewerCopy) {
  const auto copy = [](const BootVariables& variables, std::uint8_t flag) {
    return RedundantBootEnvironment(variables, kSize, flag);
  };
  EXPECT_THAT(Names(DeviceWith(copy(kOlder, 3), copy(kNewer, 4))),
              ElementsAre("/boot/2 bootdelay", "/boot/2 usb3_disable"));
  EXPECT_THAT(Names(DeviceWith(copy(kNewer, 0), copy(kOlder, 255))),
              ElementsAre("/boot/1 bootdelay", "/boot/1 usb3_disable"));
}

TEST(BootVariables, AreNotThoseOfACopyThatTheProgramCannotRead) {
  std::string damaged = RedundantBootEnvironment(kNewer, kSize, 9);
  damaged[6] = 'X';
  const std::string older = RedundantBootEnvironment(kOlder, kSize, 1);
  EXPECT_THAT(Names(DeviceWith(older, damaged)), ElementsAre("/boot/1 usb3_disable"));
  EXPECT_THAT(Names(DeviceWith(damaged, damaged)), IsEmpty());
  constexpr std::endian kOther =
      std::endian::native == std::endian::little ? std::endian::big : std::endian::little;
  const std::string foreign = RedundantBootEnvironment(kNewer, kSize, 9, 0xFF, kOther);
  EXPECT_THAT(Names(DeviceWith(foreign, older)), ElementsAre("/boot/2 usb3_disable"));
  EXPECT_THAT(Names({}), IsEmpty());
}

}  // namespace
}  // namespace lab
