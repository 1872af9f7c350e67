#include "legacy/vocabulary.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/legacy/logged.h"

namespace KELP::Wifi::Updater {
namespace {

using namespace std::string_literals;
using testing_support::LoggedErrors;
using testing_support::Messages;

constexpr std::array kWords{Word{"one", 1}, Word{"two", -2}, Word{"one", 3}};
constexpr Vocabulary kVocabulary{kWords, 9, "%s:%d Not a number: %s.", 42};

TEST(Translate, KnownWordGivesItsValueWithoutALine) {
  lab::PrivateRoot device;
  lab::InRoot inside(device);
  EXPECT_EQ(Translate(kVocabulary, "one"), 1);
  EXPECT_EQ(Translate(kVocabulary, "two"), -2);
  EXPECT_EQ(LoggedErrors(inside), Messages{});
}

TEST(Translate, AnyOtherWordGivesTheFallBackAndOneLineEach) {
  lab::PrivateRoot device;
  lab::InRoot inside(device);
  EXPECT_EQ(Translate(kVocabulary, "three"), 9);
  EXPECT_EQ(Translate(kVocabulary, ""), 9);
  EXPECT_EQ(Translate(kVocabulary, "%s%n"), 9);
  EXPECT_EQ(LoggedErrors(inside),
            (Messages{"kelpwifiupdater:42 Not a number: three.", "kelpwifiupdater:42 Not a number: .",
                      "kelpwifiupdater:42 Not a number: %s%n."}));
}

TEST(Translate, WordIsComparedWhole) {
  lab::PrivateRoot device;
  const lab::InRoot inside(device);
  for (const std::string& word : {"on"s, "ones"s, "One"s, "one "s, " one"s, "one\0"s, "one\0x"s, "one\r"s}) {
    EXPECT_EQ(Translate(kVocabulary, word), 9) << word;
  }
}

}  // namespace
}  // namespace KELP::Wifi::Updater
