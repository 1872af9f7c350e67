#include "lab/text/addresses.h"

#include <gtest/gtest.h>

namespace lab_test {
namespace {

constexpr const char* kCommon = "02:aa:00:0b:00:01";

std::string Common(std::string_view text, std::size_t place = 0) {
  const auto address = lab::MacAt(text, place);
  return address ? address->common : "";
}

TEST(MacAt, KnowsEachSpelling) {
  EXPECT_EQ(Common("02:aa:00:0b:00:01"), kCommon);
  EXPECT_EQ(Common("02-AA-00-0B-00-01 and more"), kCommon);
  EXPECT_EQ(Common("wifi_ap_02:AA:00:0b:00:01", 8), kCommon);
  EXPECT_EQ(Common("02aa000b0001"), kCommon);
  EXPECT_EQ(Common("02AA.000B.0001."), kCommon);
  EXPECT_EQ(lab::MacAt("02AA.000B.0001.", 0)->size, 14U);
}

TEST(MacAt, TakesNothingElseForOne) {
  EXPECT_EQ(Common("02:aa:00:0b:00"), "");
  EXPECT_EQ(Common("02:aa:00:0b:00:0"), "");
  EXPECT_EQ(Common("02aa000b00011"), "");
  EXPECT_EQ(Common("02aa000b000g"), "");
  EXPECT_EQ(Common("x02aa000b0001", 1), "");
  EXPECT_EQ(Common("02aa000b0001x"), "");
  EXPECT_EQ(Common(""), "");
}

TEST(MailAt, TakesTheWholeAddress) {
  const auto size = [](std::string_view text, std::size_t place) {
    const auto address = lab::MailAt(text, place);
    return address ? address->size : 0;
  };
  EXPECT_EQ(size("a.b+c@example.net, d", 0), 17U);
  EXPECT_EQ(size("list=o'neil@example.net.", 5), 18U);
  EXPECT_EQ(size("<a@example.net>", 1), 13U);
  EXPECT_EQ(size("'a@example.net'", 1), 13U);
  EXPECT_EQ(size("'a@example.net'", 0), 0U);
  EXPECT_EQ(size("b.a@example.net", 2), 0U);
  EXPECT_EQ(size("@example.net", 0), 0U);
  EXPECT_EQ(size("a@ b", 0), 0U);
  EXPECT_EQ(lab::MailAt("Host@Example.net", 0)->common, "host@example.net");
}

}  // namespace
}  // namespace lab_test
