#include "lab/fleets/summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace lab::fleets {
namespace {

using lab_test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Pair;

Record Device(const std::string& image, Outcome outcome, const std::string& error = "") {
  Record record;
  record.image = image;
  record.from = "8000";
  record.outcome = outcome;
  record.error = error;
  return record;
}

Record Crashed(const std::string& image) {
  Record record = Device(image, Outcome::Crashed);
  record.signal = 11;
  return record;
}

constexpr const char* kCannotRename =
    "Failed to update config, error: filesystem error: cannot rename: No such file or directory "
    "[/usr/kelp/etc/wifi/wifi_ap_3c:6a:9d:2e:f4:03] [x]";

TEST(Causes, AreAlikeForDevicesThatFailAlike) {
  EXPECT_EQ(
      CauseOf(Device("a", Outcome::Failed, kCannotRename)),
      "filesystem error: cannot rename: No such file or directory [/usr/kelp/etc/wifi/wifi_ap_<MAC>] [x]");
  EXPECT_EQ(CauseOf(Device("a", Outcome::Failed, "other\nlines")), "other");
  Record silent = Device("a", Outcome::Failed);
  silent.status = 3;
  EXPECT_EQ(CauseOf(silent), "status 3");
  EXPECT_EQ(CauseOf(Crashed("a")), "signal 11 (Segmentation fault)");
  EXPECT_EQ(CauseOf(Device("a", Outcome::TimedOut)), "did not end in time");
  EXPECT_EQ(
      CauseOf(Device("a", Outcome::IncompleteImage, "the image has no x (/y): Failed to update config")),
      "the image has no x (/y)");
  EXPECT_EQ(CauseOf(Device("dir/a.tar", Outcome::UnusableImage, "dir/a.tar has a FIFO: /pipe")),
            "has a FIFO");
  EXPECT_EQ(CauseOf(Device("a", Outcome::UnusableImage, "a cannot be opened: No such file or directory")),
            "cannot be opened: No such file or directory");
  const auto unusable = [](const std::string& reason) {
    return CauseOf(Device("a", Outcome::UnusableImage, "a " + reason));
  };
  EXPECT_EQ(unusable("has a path with \"..\": x/../y"), "has a path with \"..\"");
  EXPECT_EQ(unusable("is torn at /etc/info.conf"), "is torn");
  EXPECT_EQ(unusable("is damaged at /etc/info.conf: truncated"), "is damaged");
  EXPECT_EQ(CauseOf(Device("a", Outcome::Migrated)), "");
  EXPECT_EQ(CauseOf(Device("a", Outcome::Skipped)), "");
}

Summary Example() {
  Summary summary;
  AddRecord(summary, Device("plain", Outcome::Migrated));
  for (const char* image : {"a", "b", "c", "d"}) {
    Record record = Device(image, Outcome::MigratedWithFallbacks);
    record.findings = {"security-unknown"};
    record.log = {{229, 4, "Start to migrate config from 1.2.5 to 1.3"},
                  {760, 3, "Invalid security mode: WPA9, select wpa2."},
                  {760, 3, "Invalid security mode: , select wpa2."}};
    AddRecord(summary, record);
  }
  AddRecord(summary, Crashed("x"));
  return summary;
}

TEST(Summaries, Count) {
  const Summary summary = Example();
  EXPECT_EQ(summary.devices, 6U);
  EXPECT_THAT(summary.outcomes,
              ElementsAre(Pair(Outcome::Migrated, 1), Pair(Outcome::MigratedWithFallbacks, 4),
                          Pair(Outcome::Crashed, 1)));
  EXPECT_EQ(summary.findings.at("security-unknown").devices, 4U);
  EXPECT_THAT(summary.findings.at("security-unknown").examples, ElementsAre("a", "b", "c"));
  EXPECT_EQ(summary.log.at(760).lines, 8U);
  EXPECT_EQ(summary.log.at(760).devices, 4U);
  EXPECT_THAT(summary.log.at(760).words, ElementsAre(Pair("", 4), Pair("WPA9", 4)));
  EXPECT_TRUE(summary.log.at(229).words.empty());
}

TEST(Summaries, ArePrinted) {
  std::ostringstream out;
  PrintSummary(out, Example());
  const std::string text = out.str();
  EXPECT_THAT(text, HasSubstr("6 devices\n\nOutcomes\n       1   16.7 %  migrated\n       4   66.7 %  "
                              "migrated-with-fallbacks\n       1   16.7 %  crashed\n"));
  EXPECT_THAT(text, HasSubstr("       1  crashed: signal 11 (Segmentation fault)\n            x\n"));
  EXPECT_THAT(text, HasSubstr("       4   66.7 %  security-unknown (breaks): "));
  EXPECT_THAT(text, HasSubstr("            for example a, b, c\n"));
  EXPECT_THAT(text,
              HasSubstr("       8  760 on 4 devices: Invalid security mode: %s, select wpa2.\n            "
                        "4 times \"\", 4 times \"WPA9\"\n"));
}

TEST(Summaries, TellFirstWhatBreaks) {
  Summary summary;
  for (const char* image : {"a", "b", "c"}) {
    Record record = Device(image, Outcome::Migrated);
    record.findings = {"power-unknown", "of-tomorrow"};
    if (image[0] == 'a') record.findings.insert(record.findings.end(), {"ssid-lost", "secret-unsealed"});
    if (image[0] == 'b') record.findings.push_back("ssid-lost");
    record.log = {{760, 3, "Invalid security mode: WPA" + record.image + ", select wpa2."}};
    if (image[0] != 'a') record.log.clear();
    AddRecord(summary, record);
  }
  std::ostringstream out;
  PrintSummary(out, summary);
  const std::string text = out.str();
  std::vector<std::size_t> places;
  for (const char* id : {"  ssid-lost (breaks)", "  secret-unsealed (weakens)", "  power-unknown (changes)",
                         "  of-tomorrow\n"})
    places.push_back(text.find(id));
  EXPECT_NE(places.back(), std::string::npos);
  EXPECT_TRUE(std::ranges::is_sorted(places)) << text;
  const std::string json = SummaryJson(summary);
  EXPECT_LT(json.find("ssid-lost"), json.find("power-unknown"));
  EXPECT_THAT(text, HasSubstr("       1  760 on 1 device: Invalid security mode: %s, select wpa2.\n          "
                              "  1 time \"WPAa\"\n"));
}

TEST(Summaries, AreJsonToo) {
  Summary summary;
  AddRecord(summary, Crashed("\"x\""));
  EXPECT_EQ(SummaryJson(summary),
            "{\"schema\":1,\"devices\":1,\"outcomes\":{\"crashed\":1},\"failures\":[{\"outcome\":\"crashed\","
            "\"cause\":\"signal 11 (Segmentation fault)\",\"devices\":1,\"examples\":[\"\\\"x\\\"\"]}],"
            "\"findings\":[],\"log\":[]}\n");
  EXPECT_THAT(SummaryJson(Example()),
              HasSubstr("{\"number\":760,\"format\":\"Invalid security mode: %s, select "
                        "wpa2.\",\"lines\":8,\"devices\":4,\"words\":[{\"word\":\"\","
                        "\"lines\":4},{\"word\":\"WPA9\",\"lines\":4}]}"));
}

TEST(Summaries, OfNothingAreEmpty) {
  std::ostringstream out;
  PrintSummary(out, {});
  EXPECT_EQ(out.str(), "0 devices\n");
}

class SummaryFiles : public ::testing::Test {
 protected:
  std::vector<std::string> Visited(const std::vector<std::filesystem::path>& files) {
    std::vector<std::string> visited;
    ForEachRecord(
        files,
        [&](Record&& record) {
          visited.push_back(record.image + " " + record.from + " " +
                            std::string(OutcomeName(record.outcome)));
        },
        [&](const std::string& text) { complaints_.push_back(text); });
    return visited;
  }

  std::filesystem::path File(const std::string& name, const std::string& text) const {
    folder_.Write(name, text);
    return folder_ / name;
  }

  TemporaryFolder folder_;
  std::vector<std::string> complaints_;
};

TEST_F(SummaryFiles, LetTheLastRecordOfADeviceCount) {
  Record later = Device("a", Outcome::Migrated);
  later.from = "9000";
  const auto first =
      File("1", RecordLine(Device("a", Outcome::Failed)) + "\n" + RecordLine(Device("b", Outcome::Failed)) +
                    "\n" + RecordLine(later) + "\n");
  const auto second = File("2", RecordLine(Device("a", Outcome::Crashed)) + "\n" +
                                    RecordLine(Device("a", Outcome::Skipped)) + "\n");
  EXPECT_THAT(Visited({first, second}), ElementsAre("b 8000 failed", "a 9000 migrated", "a 8000 skipped"));
  EXPECT_THAT(Visited({second, first}), ElementsAre("a 8000 failed", "b 8000 failed", "a 9000 migrated"));
  EXPECT_THAT(complaints_, ElementsAre());
}

TEST_F(SummaryFiles, TellOfWhatIsNoRecord) {
  const auto file = File("1", "no\n" + RecordLine(Device("a", Outcome::Failed)) + "\n{\"schema\":1,\"ima");
  EXPECT_THAT(Visited({file}), ElementsAre("a 8000 failed"));
  EXPECT_THAT(complaints_, ElementsAre(file.native() + ":1 is no record of a fleet",
                                       file.native() + ":3 is no record of a fleet"));
}

// A torn line of a household may end as a whole one does.
TEST_F(SummaryFiles, TakeATornHouseholdForNoRecord) {
  Record record = Device("a", Outcome::Failed);
  record.household = R"({"a":{"b":{}}})";
  const std::string line = RecordLine(record);
  EXPECT_THAT(Visited({File("whole", line)}), ElementsAre("a 8000 failed"));
  EXPECT_THAT(complaints_, ElementsAre());
  for (std::size_t size = line.size() - 4; size < line.size(); ++size) {
    EXPECT_THAT(Visited({File("torn", line.substr(0, size))}), ElementsAre()) << size;
  }
  EXPECT_EQ(complaints_.size(), 4U);
}

TEST_F(SummaryFiles, AreReportsForServersToo) {
  Record changed = Device("<a> & \"b\"", Outcome::MigratedWithFallbacks);
  changed.findings = {"security-unknown"};
  changed.milliseconds = 1500;
  const std::vector<Record> records{
      changed, Device("f", Outcome::Failed, "Failed to update config, error: stoi"),
      Device("u", Outcome::UnusableImage, "u is torn\x01\xEF\xBF\xBE."), Device("s", Outcome::Skipped)};
  Summary summary;
  for (const Record& record : records) AddRecord(summary, record);
  std::ostringstream out;
  WriteJUnit(out, summary, [&](const std::function<void(Record &&)>& visit) {
    for (Record record : records) visit(std::move(record));
  });
  EXPECT_THAT(
      out.str(),
      HasSubstr("<testsuite name=\"devicelab\" tests=\"4\" failures=\"1\" errors=\"1\" skipped=\"1\">"));
  EXPECT_THAT(out.str(), HasSubstr("<testcase classname=\"from 8000\" name=\"&lt;a&gt; &amp; &quot;b&quot;\" "
                                   "time=\"1.500000\"><system-out>security-unknown: "));
  EXPECT_THAT(out.str(),
              HasSubstr("name=\"f\" time=\"0.000000\"><failure message=\"failed: stoi\">Failed to update "
                        "config, error: stoi</failure></testcase>\n"));
  EXPECT_THAT(out.str(), HasSubstr("<error message=\"unusable-image: is torn??.\">u is torn??.</error>"));
  EXPECT_THAT(out.str(), HasSubstr("name=\"s\" time=\"0.000000\"><skipped message=\"skipped\"/></testcase>"));
}

}  // namespace
}  // namespace lab::fleets
