// The three JSON files of the 1.3 era in every bad shape: each ends the run with the device as it was.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <ostream>
#include <string>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/updater_run.h"

namespace end_to_end {
namespace {

using ::testing::HasSubstr;

struct JsonFile {
  const char* name;
  const char* member;
  const char* good;  // a value that the member may have
};

std::ostream& operator<<(std::ostream& out, const JsonFile& file) {
  return out << file.name;
}

class BadJson : public ::testing::TestWithParam<JsonFile> {
 protected:
  std::string Path() const { return kWifi + GetParam().name; }
  std::string WithMember(const std::string& value) const {
    return std::string("{\"") + GetParam().member + "\": " + value + "}";
  }

  std::string Fail(const lab::RunOptions& options = {}) {
    const lab::RunResult run = UpdateFrom(device_, "9000", options);
    const std::string what = ExpectFailure(run, "9000");
    EXPECT_EQ(run.log.size(), 1U);
    ExpectUntouched(run);
    return what;
  }

  lab::PrivateRoot device_{Image("release-13-mesh")};
};

TEST_P(BadJson, CutAnywhere) {
  const std::string text = WithMember(GetParam().good);
  for (std::size_t length = 0; length < text.size(); ++length) {
    SCOPED_TRACE(length);
    device_.Write(Path(), text.substr(0, length));
    EXPECT_THAT(Fail(), HasSubstr(Path()));
  }
  device_.Write(Path(), text);
  ExpectSuccess(UpdateFrom(device_, "9000"));
}

TEST_P(BadJson, Malformed) {
  const std::string good = WithMember(GetParam().good);
  for (const std::string& text : {std::string("no JSON"), good + "x", "// a comment\n" + good,
                                  "'" + good + "'", "\xEF\xBB\xBF[" + good, std::string(1, '\0') + good}) {
    SCOPED_TRACE(text);
    device_.Write(Path(), text);
    EXPECT_THAT(Fail(), HasSubstr(Path()));
  }
}

TEST_P(BadJson, MemberMissingOrOfAnotherKind) {
  for (const char* value : {"null", "5", "true", "{}", "1.5"}) {
    device_.Write(Path(), WithMember(value));
    EXPECT_THAT(Fail(), HasSubstr(GetParam().member)) << value;
  }
  device_.Write(Path(), "{\"another\": 1}");
  EXPECT_THAT(Fail(), HasSubstr(GetParam().member));
  device_.Write(Path(), "[]");
  EXPECT_NE(Fail(), "");
}

TEST_P(BadJson, ArrayAndTextAreNotInterchangeable) {
  const bool array = GetParam().good[0] == '[';
  device_.Write(Path(), WithMember(array ? "\"LOTUS\"" : "[\"NL\"]"));
  EXPECT_THAT(Fail(), HasSubstr(GetParam().member));
}

TEST_P(BadJson, NestedTooDeep) {
  for (const std::size_t depth : {2'000U, 100'000U}) {
    device_.Write(Path(), WithMember(std::string(depth, '[') + std::string(depth, ']')));
    EXPECT_THAT(Fail(), HasSubstr(Path()));
    device_.Write(Path(), std::string(depth, '['));
    EXPECT_THAT(Fail(), HasSubstr(Path()));
  }
}

TEST_P(BadJson, FiftyMegabytes) {
  const std::string good = WithMember(GetParam().good);
  device_.Write(Path(), good + std::string(50U * 1024 * 1024, ' '));
  EXPECT_THAT(Fail(), HasSubstr(Path()));
}

TEST_P(BadJson, LargestThatIsRead) {
  constexpr std::size_t kMebibyte = 1024 * 1024;
  std::string text = WithMember(GetParam().good);
  text.resize(kMebibyte + 1, '\n');
  device_.Write(Path(), text);
  EXPECT_THAT(Fail(), HasSubstr(Path()));
  text.resize(kMebibyte);
  device_.Write(Path(), text);
  ExpectSuccess(UpdateFrom(device_, "9000"));
}

TEST_P(BadJson, NotUtf8) {
  device_.Write(Path(), "\xFF\xFE{\xC0\x80}");
  EXPECT_THAT(Fail(), HasSubstr(Path()));
}

TEST_P(BadJson, FolderInItsPlace) {
  device_.Remove(Path());
  device_.MakeDirectory(Path());
  EXPECT_THAT(Fail(), HasSubstr(Path()));
}

// A FIFO would block whoever opens it to read.
TEST_P(BadJson, FifoInItsPlace) {
  device_.Remove(Path());
  device_.MakeFifo(Path());
  lab::RunOptions options;
  options.timeout = std::chrono::seconds(20);
  EXPECT_THAT(Fail(options), HasSubstr(Path()));
}

std::string TestName(const ::testing::TestParamInfo<JsonFile>& file) {
  const std::string name = file.param.name;
  return name.substr(0, name.find('.'));
}

INSTANTIATE_TEST_SUITE_P(Files, BadJson,
                         ::testing::Values(JsonFile{"model.json", "connected_models", "[\"LOTUS\"]"},
                                           JsonFile{"country.json", "country_code", "\"NL\""},
                                           JsonFile{"backhaul.json", "radio_frequencies",
                                                    "[\"Band5GHz_2\"]"}),
                         TestName);

// Bytes that are no UTF-8 inside of a string are a name like any other, and no model or country has it.
TEST(BadJsonText, NotUtf8InsideOfAString) {
  lab::PrivateRoot device(Image("release-13-mesh"));
  device.Write(kWifi + "country.json", "{\"country_code\": \"\xFF\xC3\"}");
  const lab::RunResult run = UpdateFrom(device, "9000");
  ExpectFailure(
      run, "9000",
      "Failed to convert string to enum class [N4KELP4Wifi11CountryCodeE]: \xFF\xC3: runtime error");
  ExpectUntouched(run);
}

}  // namespace
}  // namespace end_to_end
