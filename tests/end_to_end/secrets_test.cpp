// What the sealed secrets say is for the documents alone: no log line and no console ever shows it.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/end_to_end/expected_run.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/json_text.h"

namespace end_to_end {
namespace {

struct Household {
  const char* device;
  const char* network_document;
  const char* build;
};

constexpr Household kHouseholds[] = {{"dual-band-standalone", "network.json.default", "8000"},
                                     {"tri-band-mesh-router", "network.json.default", "8000"},
                                     {"tri-band-repeater", "network.json.repeater", "8000"},
                                     {"dual-band-bridge", "network.json.bridge", "8000"},
                                     {"failing-archive", "network.json.default", "8000"}};

std::set<std::string> Secrets(const Household& household, const lab::PrivateRoot& device) {
  std::set<std::string> secrets{device.Read("/usr/kelp/etc/secret.key").substr(0, 64)};
  const std::string text = ExpectedDocument(household.device, household.network_document);
  for (const Json::Value& network : testing_support::ParseJson(text)) {
    secrets.insert(network["password"].asString());
    for (const Json::Value& radio : network["featureSettings"]) secrets.insert(radio["password"].asString());
  }
  secrets.insert(
      testing_support::ParseJson(ExpectedDocument(household.device, "wps.json"))["pin"].asString());
  secrets.erase("");
  return secrets;
}

void ExpectNoneTold(const std::set<std::string>& secrets, const lab::RunResult& run) {
  EXPECT_GT(secrets.size(), 2U);
  for (const std::string& secret : secrets) {
    EXPECT_EQ(run.out.find(secret), std::string::npos);
    EXPECT_EQ(run.err.find(secret), std::string::npos) << run.err;
    for (const lab::LogLine& line : run.log) {
      EXPECT_EQ(line.message.find(secret), std::string::npos) << line.message;
    }
  }
}

TEST(Secrets, AreNotToldByAnOrdinaryRun) {
  for (const Household& household : kHouseholds) {
    lab::PrivateRoot device(Image(household.device));
    ExpectNoneTold(Secrets(household, device), UpdateFrom(device, household.build));
  }
}

TEST(Secrets, AreNotToldByARunThatCannotWriteThem) {
  for (const Household& household : kHouseholds) {
    lab::PrivateRoot device(Image(household.device));
    device.MakeDirectory(kWifi + household.network_document);
    const lab::RunResult run = UpdateFrom(device, household.build);
    EXPECT_EQ(run.status, 1);
    ExpectNoneTold(Secrets(household, device), run);
  }
}

TEST(Secrets, AreNotToldByARunWithAnotherDevicesKey) {
  for (const Household& household : kHouseholds) {
    lab::PrivateRoot device(Image(household.device));
    const std::set<std::string> secrets = Secrets(household, device);
    device.Write("/usr/kelp/etc/secret.key", std::string(64, '7') + "\n");
    const lab::RunResult run = UpdateFrom(device, household.build);
    EXPECT_GT(run.log.size(), 4U);
    ExpectNoneTold(secrets, run);
  }
}

}  // namespace
}  // namespace end_to_end
