#include "lab/sweeps/outcome_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lab::sweeps {
namespace {

using ::testing::HasSubstr;

Outcome Sample() {
  Outcome outcome;
  outcome.status = 1;
  outcome.signal = 9;
  outcome.timed_out = true;
  outcome.out = std::string("o\0t", 3);
  outcome.err = "Failed\n";
  outcome.log = {"3: one", "", "4: three\n"};
  outcome.files = {{"/a", {Entry::Kind::File, 0640, std::string("\0\xff\n", 3)}},
                   {"/b", {Entry::Kind::Link, 0777, "/a"}}};
  return outcome;
}

TEST(OutcomeText, BringsBackWhatItTook) {
  EXPECT_TRUE(FromText(ToText(Sample())) == Sample());
}

TEST(Difference, IsNoneOfEqualOutcomes) {
  EXPECT_EQ(Difference(Sample(), Sample()), "");
}

TEST(Difference, NamesEachPlace) {
  Outcome other = Sample();
  other.status = 0;
  other.files.erase("/a");
  other.files["/b"].content = "/c";
  other.files["/d"] = {};
  const std::string text = Difference(Sample(), other);
  EXPECT_THAT(text, HasSubstr("status: 0"));
  EXPECT_THAT(text, HasSubstr("missing: /a"));
  EXPECT_THAT(text, HasSubstr("different: /b"));
  EXPECT_THAT(text, HasSubstr("unexpected: /d"));
}

}  // namespace
}  // namespace lab::sweeps
