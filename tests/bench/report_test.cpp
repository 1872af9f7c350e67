#include "bench/report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/json_text.h"

namespace bench {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

Comparison Sample() {
  Comparison comparison;
  comparison.device = "attic";
  comparison.runs = 21;
  comparison.program = {"program", Times{2, 3}, std::nullopt, 4096, 3'000'000, CallCounts{{"fsync", 11}},
                        204'800,   1'024'000};
  comparison.peer = {"shell script", Times{100, 300}, std::nullopt, 8192, 900'000'000, {}, {}, {}};
  comparison.floor = {"floor", Times{1, 1.5}, std::nullopt, 1024, 100'000, {}, {}, {}};
  comparison.empty = {"empty", Times{1, 1}, std::nullopt, 2048, 2'000'000, {}, {}, {}};
  comparison.calls_from_main = {{"fsync", 11}};
  comparison.opens = {{"/usr/kelp/etc/info.conf", 1}, {"/usr/kelp/etc/secret.key", 8}};
  comparison.others = {{"no files", 9'000'000, CallCounts{{"read", 1'234}}}};
  comparison.growth = {{0, 100, 10, std::nullopt}, {100, 200, 20, std::nullopt}, {1000, 1'200, 30, 11.0}};
  return comparison;
}

std::string Table(const Comparison& comparison) {
  std::ostringstream out;
  PrintTable(out, comparison);
  return out.str();
}

TEST(Targets, AreMetOrMissed) {
  const std::vector<Target> targets = Targets(Sample());

  ASSERT_EQ(targets.size(), 8U);
  EXPECT_EQ(targets[0].value, 50.0);
  EXPECT_TRUE(targets[0].IsMet());
  EXPECT_EQ(targets[1].value, std::nullopt);
  EXPECT_EQ(targets[2].value, 1.5);
  EXPECT_EQ(targets[3].value, 11.0);
  EXPECT_EQ(targets[4].value, 1.0);  // the key does not count
  EXPECT_EQ(targets[5].value, 4.0);
  EXPECT_EQ(targets[6].value, 200.0);
  EXPECT_EQ(targets[7].value, 11.0);
  EXPECT_FALSE(targets[7].IsMet());
}

TEST(Table, ShowsFiguresAndTargets) {
  const std::string table = Table(Sample());

  EXPECT_THAT(table, HasSubstr("attic, medians over 21 runs"));
  EXPECT_THAT(table, HasSubstr("900,000,000"));
  EXPECT_THAT(table, ContainsRegex("no files +9,000,000 +4.50 +1,234"));
  EXPECT_THAT(table, HasSubstr("at least 15.0: met"));
  EXPECT_THAT(table, HasSubstr("at most 10.50: MISSED"));
  EXPECT_THAT(table, HasSubstr("not measured"));
  EXPECT_THAT(table, Not(HasSubstr("on disk, ms")));
}

TEST(Table, SaysWhatIsMissing) {
  Comparison comparison = Sample();
  comparison.program.instructions.reset();
  comparison.program.calls.reset();

  EXPECT_THAT(Table(comparison), HasSubstr("valgrind is missing"));
  EXPECT_THAT(Table(comparison), HasSubstr("strace is missing"));
}

TEST(Json, HasEverything) {
  const Json::Value json = testing_support::ParseJson(ToJson(Sample()));

  EXPECT_EQ(json["runs"].asInt(), 21);
  EXPECT_EQ(json["program"]["in_memory"]["cpu_milliseconds"].asDouble(), 2.0);
  EXPECT_TRUE(json["program"]["on_disk"].isNull());
  EXPECT_EQ(json["program"]["opens"]["/usr/kelp/etc/secret.key"].asInt(), 8);
  EXPECT_EQ(json["shell_script"]["instructions"].asInt64(), 900'000'000);
  EXPECT_EQ(json["other_devices"][0]["system_calls"]["read"].asInt(), 1'234);
  EXPECT_EQ(json["growth"][2]["ratio"].asDouble(), 11.0);
  EXPECT_FALSE(json["targets"][7]["met"].asBool());
}

TEST(Chart, LeavesOutWhatWasNotMeasured) {
  const std::string chart = ToChart(Sample());

  EXPECT_THAT(chart, HasSubstr("files in memory"));
  EXPECT_THAT(chart, Not(HasSubstr("files on disk")));
  EXPECT_THAT(chart, HasSubstr(">shell script<"));
}

}  // namespace
}  // namespace bench
