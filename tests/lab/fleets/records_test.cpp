#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "lab/fleets/key_set.h"
#include "lab/fleets/record.h"
#include "lab/fleets/record_file.h"
#include "tests/support/temporary_folder.h"

namespace lab::fleets {
namespace {

using lab_test::ReadFile;
using lab_test::TemporaryFolder;
using ::testing::HasSubstr;

Record Example(const std::string& image = "devices/a", const std::string& from = "8000") {
  Record record;
  record.image = image;
  record.from = from;
  record.outcome = Outcome::MigratedWithFallbacks;
  record.status = 0;
  record.error = "said \"so\"";
  record.log = {{760, 3, "Invalid security mode: x, select wpa2."}};
  record.documents = {"/usr/kelp/etc/wifi/global.json"};
  record.archived = {"/usr/kelp/etc/wifi/lbd.conf", "/usr/kelp/etc/wifi/wifi_wps"};
  record.findings = {"security-unknown"};
  record.milliseconds = 12;
  return record;
}

constexpr const char* kExampleLine =
    "{\"schema\":1,\"image\":\"devices/"
    "a\",\"from\":\"8000\",\"outcome\":\"migrated-with-fallbacks\",\"status\":0,"
    "\"signal\":null,\"error\":\"said "
    "\\\"so\\\"\",\"log\":[{\"number\":760,\"severity\":3,\"text\":\"Invalid "
    "security mode: x, select wpa2.\"}],\"documents\":[\"/usr/kelp/etc/wifi/global.json\"],\"archived\":"
    "[\"/usr/kelp/etc/wifi/lbd.conf\",\"/usr/kelp/etc/wifi/wifi_wps\"],\"findings\":[\"security-unknown\"],"
    "\"milliseconds\":12}";

TEST(KeySets, TellDevicesApart) {
  KeySet keys;
  EXPECT_FALSE(keys.Has(KeyOf("a", "1")));
  for (int i = 0; i < 1000; ++i) EXPECT_TRUE(keys.Insert(KeyOf("device" + std::to_string(i), "8000")));
  EXPECT_EQ(keys.Size(), 1000U);
  EXPECT_TRUE(keys.Has(KeyOf("device999", "8000")));
  EXPECT_FALSE(keys.Insert(KeyOf("device0", "8000")));
  EXPECT_FALSE(keys.Has(KeyOf("device0", "8001")));
  EXPECT_NE(KeyOf("ab", "c"), KeyOf("a", "bc"));
}

TEST(Records, AreLines) {
  EXPECT_EQ(RecordLine(Example()), kExampleLine);
}

TEST(Records, AreReadBack) {
  Record crashed = Example("a\nb");
  crashed.outcome = Outcome::Crashed;
  crashed.status.reset();
  crashed.signal = 11;
  crashed.log.clear();
  // As it stands there, whatever else looks like its beginning or holds braces.
  crashed.error = ",\"household\":{}}";
  crashed.household = "{\"a\": [1,\"é\"],\"household\":{}}";
  for (const Record& record : {Example(), crashed}) {
    const auto read = ParseRecord(RecordLine(record));
    ASSERT_TRUE(read);
    EXPECT_EQ(RecordLine(*read), RecordLine(record));
  }
}

TEST(Records, AreNothingElse) {
  const std::string line = kExampleLine;
  for (std::size_t size = 0; size < line.size(); ++size)
    EXPECT_FALSE(ParseRecord(line.substr(0, size))) << size;
  const auto with = [&](const std::string& old_text, const std::string& new_text) {
    std::string changed = line;
    changed.replace(changed.find(old_text), old_text.size(), new_text);
    return changed;
  };
  for (const std::string& other :
       {with("\"schema\":1", "\"schema\":2"), with("\"schema\":1,", ""), with("\"8000\"", "8000"),
        with("migrated-with-fallbacks", "lost"), with("\"log\":[{", "\"log\":[1,{"),
        with("\"status\":0,", ""), with("[\"security-unknown\"]", "{}"),
        with("\"number\":760", "\"number\":\"760\""), std::string("[]"), std::string("null"),
        std::string(10'000, '[')}) {
    EXPECT_FALSE(ParseRecord(other)) << other;
  }
}

class RecordFiles : public ::testing::Test {
 protected:
  std::filesystem::path Path() const { return folder_ / "fleet.jsonl"; }

  std::string Refusal() const {
    try {
      const RecordFile file(Path());
      return "taken";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  TemporaryFolder folder_;
};

TEST_F(RecordFiles, GoOnWhereTheyStopped) {
  {
    RecordFile file(Path());
    file.Append(RecordLine(Example("a")));
    file.Append(RecordLine(Example("b", "9000")));
  }
  RecordFile file(Path());
  EXPECT_EQ(file.Count(), 2U);
  EXPECT_TRUE(file.Has("a", "8000"));
  EXPECT_TRUE(file.Has("b", "9000"));
  EXPECT_FALSE(file.Has("b", "8000"));
  file.Append("{}");
  EXPECT_EQ(ReadFile(Path()), RecordLine(Example("a")) + "\n" + RecordLine(Example("b", "9000")) + "\n{}\n");
}

TEST_F(RecordFiles, AreForTheirOwnerAlone) {
  const mode_t umask = ::umask(0);
  { const RecordFile file(Path()); }
  ::umask(umask);
  EXPECT_EQ(std::filesystem::status(Path()).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(RecordFiles, CutOffATornLine) {
  const std::string whole = RecordLine(Example("a")) + "\n";
  const std::string torn = RecordLine(Example("b"));
  for (std::size_t size = 1; size <= torn.size(); ++size) {
    folder_.Write("fleet.jsonl", whole + torn.substr(0, size));
    RecordFile file(Path());
    EXPECT_EQ(file.Count(), 1U);
    EXPECT_EQ(ReadFile(Path()), whole);
  }
}

TEST_F(RecordFiles, LeaveWhatIsNotTheirs) {
  for (const std::string& text : {std::string("notes\n"), std::string("notes"),
                                  RecordLine(Example()) + "\n\n", RecordLine(Example()) + "\nnotes"}) {
    folder_.Write("fleet.jsonl", text);
    EXPECT_THAT(Refusal(), HasSubstr("is no record of a fleet: name another file to write to"));
    EXPECT_EQ(ReadFile(Path()), text);
  }
  EXPECT_THROW(RecordFile("/dev/null"), std::runtime_error);
}

TEST_F(RecordFiles, AreWrittenByOneFleetAtATime) {
  const RecordFile file(Path());
  EXPECT_EQ(Refusal(), Path().native() + " is being written by another fleet");
}

TEST(Lines, AreFoundWhereverTheyEnd) {
  const TemporaryFolder folder;
  const std::string longer(200'000, 'x');
  folder.Write("f", "a\n\n" + longer + "\nend");
  const Descriptor file(::open((folder / "f").c_str(), O_RDONLY));
  std::vector<std::string> lines;
  ForEachLine(file.Get(), "f", [&](std::string_view line, std::uintmax_t place, bool is_torn) {
    lines.push_back(std::to_string(place) + (is_torn ? "!" : ":") + std::to_string(line.size()));
  });
  EXPECT_THAT(lines, ::testing::ElementsAre("0:1", "2:0", "3:200000", "200004!3"));
}

}  // namespace
}  // namespace lab::fleets
