#include "lab/text/base64.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

namespace lab {
namespace {

TEST(Base64, GoesBothWays) {
  const std::array<std::pair<std::string, std::string>, 6> texts{{{"", ""},
                                                                  {"H", "SA=="},
                                                                  {"Ho", "SG8="},
                                                                  {"Home", "SG9tZQ=="},
                                                                  {std::string("\0\xff\n", 3), "AP8K"},
                                                                  {"\xfb\xef\xbe", "++++"}}};
  for (const auto& [bytes, text] : texts) {
    EXPECT_EQ(ToBase64(bytes), text);
    EXPECT_EQ(FromBase64(text), bytes) << text;
  }
}

TEST(Base64, IsNothingElse) {
  for (const char* text : {"SA", "SA=", "SA===", "SB==", " SA==", "SA==\n", "S-8=", "SG9t\xe9==", "x"}) {
    EXPECT_EQ(FromBase64(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace lab
