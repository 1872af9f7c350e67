#include "platform/exceptions.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace KELP::Wifi {
namespace {

using namespace std::string_literals;

TEST(ErrorCategory, IsNamedKelp) {
  EXPECT_STREQ(ErrorCategory::Instance().name(), "kelp");
  EXPECT_EQ(ErrorCategory::Instance().message(2), "runtime error");
}

TEST(ErrorCategory, ReadsOtherValuesDifferently) {
  for (const int value : {-1, 0, 1, 3, 1000}) {
    EXPECT_NE(ErrorCategory::Instance().message(value), "runtime error") << value;
  }
}

TEST(RuntimeError, EndsItsTextWithTheCategorysReading) {
  EXPECT_STREQ(RuntimeError("it failed").what(), "it failed: runtime error");
  EXPECT_STREQ(RuntimeError("%s failed with %d", "it", 7).what(), "it failed with 7: runtime error");
}

TEST(RuntimeError, CarriesValueTwoOfTheOneCategory) {
  const RuntimeError error("x");
  EXPECT_EQ(error.code().value(), 2);
  EXPECT_EQ(&error.code().category(), &ErrorCategory::Instance());
  EXPECT_STREQ(error.code().category().name(), "kelp");
}

TEST(RuntimeError, StandsInTheChainOfThePlatformsExceptions) {
  EXPECT_TRUE((std::is_base_of_v<WifiException, RuntimeError>));
  EXPECT_TRUE((std::is_base_of_v<kelp::dbus::DbusError, WifiException>));
  EXPECT_TRUE((std::is_base_of_v<std::system_error, kelp::dbus::DbusError>));
  EXPECT_THROW(throw RuntimeError("x"), WifiException);
  EXPECT_THROW(throw RuntimeError("x"), kelp::dbus::DbusError);
  EXPECT_THROW(throw RuntimeError("x"), std::system_error);
  EXPECT_THROW(throw RuntimeError("x"), std::exception);
}

TEST(RuntimeError, WithoutArgumentsIsNeverFormatted) {
  EXPECT_STREQ(RuntimeError("%s and %n and 100%").what(), "%s and %n and 100%: runtime error");
  EXPECT_STREQ(RuntimeError("%d%%"s).what(), "%d%%: runtime error");
}

TEST(RuntimeError, ArgumentsAreNeverFormats) {
  EXPECT_STREQ(RuntimeError("value: %s", "%s%n%d").what(), "value: %s%n%d: runtime error");
}

TEST(RuntimeError, HoldsLongMessages) {
  const std::string word(100'000, 'w');
  EXPECT_EQ(RuntimeError("<%s>", word.c_str()).what(), "<" + word + ">: runtime error");
}

TEST(RuntimeError, OfAnEmptyMessageIsTheReadingAlone) {
  const std::string text = RuntimeError("").what();
  EXPECT_TRUE(text.ends_with("runtime error")) << text;
}

}  // namespace
}  // namespace KELP::Wifi
