#include "legacy/format_text.h"

#include <gtest/gtest.h>

#include <string>

namespace KELP::Wifi::Updater {
namespace {

// What happens where the C library cannot format is shown where it ends a migration.
TEST(FormatText, IsWhatPrintfWrites) {
  EXPECT_EQ(FormatText("plain"), "plain");
  EXPECT_EQ(FormatText("%s:%d %.2d", "name", 12, 7), "name:12 07");
  EXPECT_EQ(FormatText("%s", "%s%n%d"), "%s%n%d");
  const std::string word(100'000, 'w');
  EXPECT_EQ(FormatText("<%s>", word.c_str()), "<" + word + ">");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
