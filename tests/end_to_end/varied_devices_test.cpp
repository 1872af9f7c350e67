// Hundreds of devices that nobody wrote by hand. What the documents of their runs are like, schemas tell: the
// tests of documents hold them to these.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>

#include "tests/end_to_end/updater_run.h"
#include "tests/end_to_end/varied_device.h"

namespace end_to_end {
namespace {

constexpr int kDevicesOfASample = 60;

class VariedDevices : public ::testing::TestWithParam<const char*> {};

TEST_P(VariedDevices, AreAllMigrated) {
  std::mt19937 engine(20'211'130);
  const std::string sample = GetParam();
  const bool is_13 = sample == "release-13-mesh";
  std::set<std::string> documents;  // different ones
  for (int i = 0; i < kDevicesOfASample; ++i) {
    SCOPED_TRACE(i);
    lab::PrivateRoot device(Image(sample));
    Vary(device, engine);

    const lab::RunResult run = UpdateFrom(device, is_13 ? "9000" : "8000");

    ASSERT_EQ(run.status, 0) << run.err;
    int written = 0;
    for (const auto& [path, entry] : run.after) {
      const bool is_document = path.starts_with(kWifi) && path.find(".json") != std::string::npos;
      if (!is_document || run.before.contains(path)) continue;
      ++written;
      documents.insert(entry.content);
    }
    EXPECT_EQ(written, is_13 ? 1 : 5);
  }
  // Of 1.3 a model list and a country are all there is to differ.
  EXPECT_GT(documents.size(), is_13 ? 30U : 2U * kDevicesOfASample);
}

INSTANTIATE_TEST_SUITE_P(Samples, VariedDevices,
                         ::testing::Values("dual-band-bridge", "dual-band-standalone", "release-13-mesh",
                                           "tri-band-mesh-router", "tri-band-repeater"));

}  // namespace
}  // namespace end_to_end
