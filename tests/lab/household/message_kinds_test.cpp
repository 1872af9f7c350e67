#include "lab/household/message_kinds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>

namespace lab {
namespace {

/// Number and format of each log line that docs/migration-map.md lists.
std::map<int, std::string> DocumentedFormats() {
  std::ifstream map(KELP_SOURCE "/docs/migration-map.md");
  std::map<int, std::string> formats;
  std::string line;
  while (std::getline(map, line) && line != "## Log lines") continue;
  while (std::getline(map, line)) {
    int number = 0;
    std::istringstream cells(line);
    if (cells.get() != '|' || !(cells >> number)) continue;
    const std::size_t start = line.find('`') + 1;
    formats[number] = line.substr(start, line.find('`', start) - start);
  }
  return formats;
}

TEST(MessageKinds, AreTheLogLinesOfTheMigrationMap) {
  std::map<int, std::string> kinds;
  for (const MessageKind& kind : MessageKinds()) kinds[kind.number] = kind.format;
  EXPECT_EQ(kinds.size(), MessageKinds().size());
  EXPECT_EQ(kinds, DocumentedFormats());
}

TEST(MessageKinds, StandByTheirNumbersAndTellAllThatIsAsked) {
  EXPECT_TRUE(std::ranges::is_sorted(MessageKinds(), {}, &MessageKind::number));
  for (const MessageKind& kind : MessageKinds()) {
    EXPECT_EQ(FindMessageKind(kind.number), &kind);
    for (const std::string_view words : {kind.cause, kind.effect, kind.remedy}) {
      EXPECT_TRUE(words.ends_with('.')) << kind.number << ": " << words;
    }
  }
  EXPECT_EQ(FindMessageKind(0), nullptr);
}

std::string Argument(int number, std::string_view text) {
  return MessageArgument(*FindMessageKind(number), text);
}

TEST(MessageArgument, IsWhatStandsInTheFormatsPlace) {
  EXPECT_EQ(Argument(760, "Invalid security mode: WPA, WPA2, select wpa2."), "WPA, WPA2");
  EXPECT_EQ(Argument(760, "Invalid security mode: , select wpa2."), "");
  EXPECT_EQ(Argument(795, "Invalid wireless mode: a.b."), "a.b");
  EXPECT_EQ(Argument(589, "Failed to decrypt ssid with abc="), "abc=");
}

TEST(MessageArgument, EndsWhereTheLastOfTheWordsBehindItStand) {
  EXPECT_EQ(Argument(760, "Invalid security mode: x, select wpa2., select wpa2."), "x, select wpa2.");
  EXPECT_EQ(Argument(954, "Failed to update config, error: stoi, buildNumber: 1"), "stoi");
}

TEST(MessageArgument, IsEmptyWhereThereIsNone) {
  EXPECT_EQ(Argument(225, "New config is existed, so stop migrating."), "");
  EXPECT_EQ(Argument(760, "something else"), "");
}

}  // namespace
}  // namespace lab
