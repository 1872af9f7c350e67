#include "tests/end_to_end/device_tree.h"

#include <gtest/gtest.h>

#include "tests/end_to_end/updater_run.h"

namespace end_to_end {

void ExpectedTree::Written(const std::string& path, const lab::Tree& after) {
  const auto document = after.find(path);
  if (document == after.end()) {
    ADD_FAILURE() << path << " was not written";
    return;
  }
  EXPECT_EQ(document->second.kind, lab::Entry::Kind::File) << path;
  EXPECT_EQ(document->second.mode, mode_t{0600}) << path;
  tree_[path] = document->second;
}

void ExpectedTree::Moved(const std::string& from, const std::string& to) {
  const auto entry = tree_.find(from);
  if (entry == tree_.end()) {
    ADD_FAILURE() << from << " was not there to be moved";
    return;
  }
  tree_[to] = entry->second;
  tree_.erase(from);
}

void ExpectedTree::Removed(const std::string& path) {
  EXPECT_EQ(tree_.erase(path), 1U) << path << " was not there to be removed";
}

void ExpectedTree::ArchiveMade() {
  const std::string path = kArchive.substr(0, kArchive.size() - 1);
  if (tree_.count(path) != 0) return;
  tree_[path] = lab::Entry{lab::Entry::Kind::Directory, 0755, ""};
}

void ExpectedTree::ExpectEqual(const lab::Tree& after) const {
  for (const auto& [path, entry] : tree_) {
    const auto found = after.find(path);
    if (found == after.end()) {
      ADD_FAILURE() << path << " is gone";
    } else {
      EXPECT_TRUE(found->second == entry) << path << " is not what it should be";
    }
  }
  for (const auto& [path, entry] : after) {
    EXPECT_EQ(tree_.count(path), 1U) << path << " should not be there";
  }
}

void ExpectUntouched(const lab::RunResult& run) {
  ExpectedTree(run.before).ExpectEqual(run.after);
}

void ExpectOnlyWritten(const lab::RunResult& run, std::initializer_list<std::string_view> documents) {
  ExpectedTree expected(run.before);
  for (const std::string_view document : documents)
    expected.Written(kWifi + std::string(document), run.after);
  expected.ExpectEqual(run.after);
}

}  // namespace end_to_end
