#include "lab/reports/masks.h"

#include <gtest/gtest.h>

namespace lab {
namespace {

TEST(MaskedLogText, HidesWhatWasStored) {
  EXPECT_EQ(MaskedLogText({575, 3, "Failed to decode base64 string: aG9tZQ"}),
            "Failed to decode base64 string: ********");
  EXPECT_EQ(MaskedLogText({589, 3, "Failed to decrypt ssid with open secret"}),
            "Failed to decrypt ssid with ********");
  EXPECT_EQ(MaskedLogText({589, 3, "Cannot open open secret"}), "Failed to decrypt ssid with ********");
}

TEST(MaskedLogText, LeavesWhatTellsNothing) {
  EXPECT_EQ(MaskedLogText({589, 3, "Failed to decrypt ssid with "}), "Failed to decrypt ssid with ");
  EXPECT_EQ(MaskedLogText({575, 3, "Failed to decode base64 string: "}), "Failed to decode base64 string: ");
  EXPECT_EQ(MaskedLogText({760, 3, "Invalid security mode: WPA9, select wpa2."}),
            "Invalid security mode: WPA9, select wpa2.");
  EXPECT_EQ(MaskedLogText({0, 3, "589 text"}), "589 text");
}

}  // namespace
}  // namespace lab
