#include "lab/page/page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/reader.h>

#include <sstream>
#include <stdexcept>
#include <string>

#include "lab/page/page_text.h"
#include "lab/text/json.h"

namespace lab_test {
namespace {

using lab::page::Kind;
using lab::page::Page;
using ::testing::HasSubstr;
using ::testing::Not;

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t place = text.find(part); place != std::string::npos; place = text.find(part, place + 1))
    ++count;
  return count;
}

std::string Device(const std::string& image) {
  return lab::JsonWriter().BeginObject().Member("image", image).End().Text();
}

/// What the script of a page reads.
Json::Value DataOf(const std::string& html) {
  const std::string start = "<script type=\"application/json\" id=\"data\">";
  const std::size_t place = html.find(start) + start.size();
  std::istringstream stream(html.substr(place, html.find("</script>", place) - place));
  Json::Value data;
  stream >> data;
  return data;
}

TEST(Page, HoldsItsDevicesInOrder) {
  Page page(Kind::Fleet);
  page.Add(Device("one"));
  page.Add(R"({"image": "two"})");
  const Json::Value data = DataOf(page.Html());
  EXPECT_EQ(data["kind"], "fleet");
  ASSERT_EQ(data["devices"].size(), 2U);
  EXPECT_EQ(data["devices"][0]["image"], "one");
  EXPECT_EQ(data["devices"][1]["image"], "two");
}

TEST(Page, IsWholeWithoutAnyDevice) {
  const Json::Value data = DataOf(Page(Kind::Comparison).Html());
  EXPECT_EQ(data["kind"], "comparison");
  EXPECT_EQ(data["devices"].size(), 0U);
  EXPECT_EQ(data["unchanged"], 0);
}

TEST(Page, CountsDevicesThatDoNotDiffer) {
  Page page(Kind::Comparison);
  page.AddUnchanged();
  page.AddUnchanged();
  EXPECT_EQ(DataOf(page.Html())["unchanged"], 2);
}

TEST(Page, IsNotFooledByATextOfADevice) {
  Page page(Kind::Household);
  const std::string hostile = "</script><script>alert(1)</script><!-- @script@ @style@";
  page.Add(Device(hostile));
  const std::string html = page.Html();
  EXPECT_EQ(Count(html, "<script"), 2U);
  EXPECT_EQ(Count(html, "</script>"), 2U);
  EXPECT_EQ(Count(html, "<!--"), 0U);
  EXPECT_EQ(DataOf(html)["devices"][0]["image"], hostile);
}

TEST(Page, TellsWhatItsIdsAndNumbersMean) {
  const Json::Value meanings = DataOf(Page(Kind::Fleet).Html())["meanings"];
  EXPECT_EQ(meanings["outcomes"][0], "migrated");
  bool found = false;
  for (const Json::Value& finding : meanings["findings"]) found = found || finding["id"] == "ssid-lost";
  EXPECT_TRUE(found);
  found = false;
  for (const Json::Value& message : meanings["messages"]) found = found || message["number"] == 760;
  EXPECT_TRUE(found);
}

TEST(Page, LetsInItsOwnStyleAndScriptAlone) {
  const std::string html = Page(Kind::Fleet).Html();
  EXPECT_THAT(html, HasSubstr("content=\"default-src 'none'; style-src 'sha256-"));
  EXPECT_THAT(html, HasSubstr("; script-src 'sha256-"));
  EXPECT_THAT(html, Not(HasSubstr("unsafe")));
  for (const char* const outside : {"http://", "https://", "src=", "@import", "url("}) {
    EXPECT_THAT(html, Not(HasSubstr(outside)));
  }
}

TEST(Page, NeverMakesMarkupOfATextInItsScript) {
  for (const char* const name :
       {"data.js", "elements.js", "household.js", "comparison.js", "devices.js", "overview.js", "main.js"}) {
    for (const char* const way :
         {"innerHTML", "outerHTML", "insertAdjacentHTML", "document.write", "eval(", "</"}) {
      EXPECT_THAT(std::string(lab::PageText(name)), Not(HasSubstr(way))) << name;
    }
  }
}

TEST(Page, TakesObjectsAlone) {
  Page page(Kind::Fleet);
  for (const char* text : {"", "\"text\"", "[1]", "{\"torn\": ", "{}}"}) {
    EXPECT_THROW(page.Add(text), std::invalid_argument) << text;
  }
}

}  // namespace
}  // namespace lab_test
