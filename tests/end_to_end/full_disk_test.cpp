// A Wi-Fi folder on a file system that fills up: every document is there whole or not at all.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/expected_run.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/json_text.h"

namespace end_to_end {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

/// A run with the Wi-Fi folder on a file system that has room for what is in it and `pages` pages more.
lab::RunOptions FullBut(const lab::PrivateRoot& device, std::uintmax_t pages) {
  const std::uintmax_t page = static_cast<std::uintmax_t>(::sysconf(_SC_PAGESIZE));
  for (const auto& [path, entry] : device.Snapshot()) {
    if (path.compare(0, kWifi.size(), kWifi) == 0) pages += (entry.content.size() + page - 1) / page;
  }
  lab::RunOptions options;
  options.tmpfs["/usr/kelp/etc/wifi"] = pages * page;
  return options;
}

TEST(FullDisk, DocumentsOf125AreWrittenAsFarAsTheyFit) {
  const std::vector<std::string> documents = {"global.json", "misc.json", "radio.json", "wps.json",
                                              "network.json.default"};
  for (std::size_t fitting = 0; fitting < documents.size(); ++fitting) {
    SCOPED_TRACE(fitting);
    lab::PrivateRoot device(Image("dual-band-standalone"));

    const lab::RunResult run = UpdateFrom(device, "8000", FullBut(device, fitting));

    EXPECT_THAT(ExpectFailure(run, "8000"),
                AllOf(HasSubstr(kWifi + documents[fitting]), HasSubstr("No space left on device")));
    ExpectedTree expected(run.before);
    for (std::size_t i = 0; i < fitting; ++i) {
      expected.Written(kWifi + documents[i], run.after);
      EXPECT_EQ(testing_support::ParseJson(device.Read(kWifi + documents[i])),
                testing_support::ParseJson(ExpectedDocument("dual-band-standalone", documents[i])));
    }
    expected.ExpectEqual(run.after);
  }
}

TEST(FullDisk, GlobalDocumentOf13IsNotWrittenAndNothingIsConsumed) {
  lab::PrivateRoot device(Image("release-13-mesh"));

  const lab::RunResult run = UpdateFrom(device, "9000", FullBut(device, 0));

  EXPECT_THAT(ExpectFailure(run, "9000"),
              AllOf(HasSubstr(kWifi + "global.json"), HasSubstr("No space left on device")));
  ExpectUntouched(run);
}

TEST(FullDisk, AnOlderGlobalDocumentStaysAsItIs) {
  lab::PrivateRoot device(Image("release-13-mesh"));
  device.Write(kWifi + "global.json", "older");

  const lab::RunResult run = UpdateFrom(device, "9000", FullBut(device, 0));

  ExpectFailure(run, "9000");
  ExpectUntouched(run);
}

}  // namespace
}  // namespace end_to_end
