#include "base/enum_names.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace KELP::Wifi {
namespace {

enum class Tide : std::int32_t {
  Lowest = -128,
  Ebb = -1,
  Slack = 0,
  Flood = 127,
  Spring = 128,
  Highest = 255
};

TEST(EnumerationNames, GoBothWaysFromMinus128To255) {
  const std::pair<std::string_view, Tide> tides[] = {{"Lowest", Tide::Lowest}, {"Ebb", Tide::Ebb},
                                                     {"Slack", Tide::Slack},   {"Flood", Tide::Flood},
                                                     {"Spring", Tide::Spring}, {"Highest", Tide::Highest}};
  for (const auto& [name, tide] : tides) {
    EXPECT_EQ(EnumName(tide), name);
    EXPECT_EQ(EnumFromName<Tide>(name), tide);
  }
}

TEST(EnumerationNames, ValueWithoutAnEnumeratorHasNone) {
  for (const int value : {-1000, -129, -2, 1, 254, 256, 1000}) {
    EXPECT_EQ(EnumName(static_cast<Tide>(value)), "") << value;
  }
}

TEST(EnumerationNames, AreComparedWholeAndByCase) {
  for (const auto* name : {"ebb", "EBB", "Eb", "Ebbs", " Ebb", "Ebb ", "", "-1", "Tide::Ebb"}) {
    EXPECT_EQ(EnumFromName<Tide>(name), std::nullopt) << name;
  }
  EXPECT_EQ(EnumFromName<Tide>(std::string_view("Ebb\0", 4)), std::nullopt);
}

}  // namespace
}  // namespace KELP::Wifi
