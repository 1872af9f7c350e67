#include "tests/end_to_end/expected_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>

#include "tests/support/json_text.h"

namespace end_to_end {
namespace {

std::vector<std::string> Lines(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string FileName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

std::string ExpectedDocument(const std::string& device, const std::string& name) {
  const std::filesystem::path path = std::filesystem::path(KELP_EXPECTED_RUNS) / device / name;
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("no expected " + path.string());
  return {std::istreambuf_iterator<char>(file), {}};
}

ExpectedRun::ExpectedRun(std::string device) : device_(std::move(device)) {}

testing_support::LogLines ExpectedRun::Log() const {
  return Lines(ExpectedDocument(device_, "log"));
}

std::vector<ExpectedRun::Step> ExpectedRun::Steps() const {
  std::vector<Step> steps;
  for (const std::string& line : Lines(ExpectedDocument(device_, "paths"))) {
    std::istringstream words(line);
    Step step;
    std::string arrow;
    words >> step.kind >> step.path >> arrow >> step.target;
    steps.push_back(step);
  }
  return steps;
}

void ExpectedRun::ExpectDocuments(const lab::Tree& after) const {
  for (const Step& step : Steps()) {
    if (step.kind != "written") continue;
    const auto document = after.find(step.path);
    if (document == after.end()) {
      ADD_FAILURE() << step.path << " was not written";
      continue;
    }
    const std::string expected = ExpectedDocument(device_, FileName(step.path));
    EXPECT_EQ(testing_support::ParseJson(document->second.content), testing_support::ParseJson(expected))
        << step.path;
  }
}

void ExpectedRun::ExpectPaths(const lab::RunResult& run) const {
  ExpectAllNamed(run.before);
  ExpectedTree expected(run.before);
  for (const Step& step : Steps()) {
    if (step.kind == "written") expected.Written(step.path, run.after);
    if (step.kind == "removed") expected.Removed(step.path);
    if (step.kind == "moved") {
      expected.ArchiveMade();
      expected.Moved(step.path, step.target);
    }
  }
  expected.ExpectEqual(run.after);
}

void ExpectedRun::ExpectAllNamed(const lab::Tree& before) const {
  std::set<std::string> files;
  for (const auto& [path, entry] : before) {
    if (entry.kind != lab::Entry::Kind::Directory) files.insert(path);
  }
  std::set<std::string> named;
  for (const Step& step : Steps()) {
    if (step.kind != "written") named.insert(step.path);
  }
  EXPECT_THAT(named, ::testing::ContainerEq(files));
}

}  // namespace end_to_end
