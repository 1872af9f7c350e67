#include "lab/runs/collected_documents.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <set>
#include <string>

#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

const std::string kWifi = "/usr/kelp/etc/wifi/";

Entry File(const std::string& content) {
  return {Entry::Kind::File, 0600, content};
}

class CollectDocumentsTest : public ::testing::Test {
 protected:
  CollectDocumentsTest() { ::setenv("KELP_COLLECT_DOCUMENTS", (folder_.Path() / "all").c_str(), 1); }
  ~CollectDocumentsTest() override { ::unsetenv("KELP_COLLECT_DOCUMENTS"); }

  /// The collection: names behind the hash, and contents.
  std::multiset<std::string> Collected() const {
    std::multiset<std::string> files;
    if (!std::filesystem::exists(folder_.Path() / "all")) return files;
    for (const auto& file : std::filesystem::directory_iterator(folder_.Path() / "all")) {
      const std::string name = file.path().filename();
      files.insert(name.substr(name.find('.') + 1) + ": " + lab_test::ReadFile(file.path()));
    }
    return files;
  }

  lab_test::TemporaryFolder folder_;
};

TEST_F(CollectDocumentsTest, KeepsWhatARunMadeOrChanged) {
  const Tree before{{kWifi + "global.json", File("old")}, {kWifi + "wps.json", File("w")}};
  const Tree after{{kWifi + "global.json", File("new")},
                   {kWifi + "wps.json", File("w")},
                   {kWifi + "network.json.bridge", File("n")},
                   {kWifi + "odd.json", File("o")}};
  CollectDocuments(before, after);
  EXPECT_EQ(Collected(),
            (std::multiset<std::string>{"global.json: new", "network.json.bridge: n", "odd.json: o"}));
}

TEST_F(CollectDocumentsTest, KeepsADocumentOnceAndTwoOfANameBoth) {
  CollectDocuments({}, {{kWifi + "misc.json", File("a")}});
  CollectDocuments({}, {{kWifi + "misc.json", File("a")}});
  CollectDocuments({}, {{kWifi + "misc.json", File("b")}});
  EXPECT_EQ(Collected(), (std::multiset<std::string>{"misc.json: a", "misc.json: b"}));
}

TEST_F(CollectDocumentsTest, LeavesWhatIsNoDocument) {
  CollectDocuments({}, {{kWifi + "global.json.new", File("x")},
                        {kWifi + "legacy/model.json", File("x")},
                        {kWifi + "wifi_wps", File("x")},
                        {"/etc/global.json", File("x")},
                        {kWifi + "radio.json", {Entry::Kind::Directory, 0700, ""}}});
  EXPECT_EQ(Collected(), std::multiset<std::string>{});
}

TEST_F(CollectDocumentsTest, DoesNothingWhereNobodyAsks) {
  ::unsetenv("KELP_COLLECT_DOCUMENTS");
  CollectDocuments({}, {{kWifi + "misc.json", File("a")}});
  EXPECT_EQ(Collected(), std::multiset<std::string>{});
}

}  // namespace
}  // namespace lab
