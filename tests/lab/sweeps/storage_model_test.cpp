#include "lab/sweeps/storage_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <set>

#include "lab/sweeps/choices.h"
#include "tests/lab/sweeps/recorded_calls.h"

namespace lab::sweeps {
namespace {

using ::testing::UnorderedElementsAre;

const Tree kDevice{
    {"/wifi", {Entry::Kind::Directory, 0755, ""}},
    {"/wifi/old", {Entry::Kind::File, 0600, "legacy"}},
    {"/etc", {Entry::Kind::Directory, 0755, ""}},
    {"/etc/info", {Entry::Kind::File, 0600, "facts"}},
};

/// Each state that may be found after the calls: the files with their bytes, "-" for none.
std::multiset<std::string> StatesAfter(const std::vector<std::string>& lines,
                                       const std::vector<std::string>& paths) {
  StorageModel model(kDevice);
  for (const FileOperation& operation : ExtractFileOperations(Calls(lines))) model.Apply(operation);
  std::set<std::string> keys;
  std::multiset<std::string> states;
  ForEachChoice(model.Radixes(), {}, [&](const std::vector<unsigned>& digits) {
    if (!keys.insert(model.KeyOf(digits)).second) return true;
    const Tree tree = model.StateOf(digits);
    std::string text;
    for (const std::string& path : paths) {
      const auto found = tree.find(path);
      text += (text.empty() ? "" : " ") + (found == tree.end() ? "-" : found->second.content);
    }
    std::replace(text.begin(), text.end(), '\0', '0');
    states.insert(text);
    return true;
  });
  return states;
}

const std::string kCreate = "openat(AT_FDCWD, '/wifi/a.new', O_WRONLY|O_CREAT|O_EXCL, 0600) = 4";
const std::string kWrite = "write(4, 'text', 4) = 4";
const std::string kFlushFile = "fsync(4) = 0";
const std::string kRename = "rename('/wifi/a.new', '/wifi/a') = 0";
const std::string kOpenFolder = "openat(AT_FDCWD, '/wifi', O_RDONLY|O_DIRECTORY) = 3";
const std::string kFlushFolder = "fsync(3) = 0";

TEST(StorageModel, ShowsTheDeviceAsItIsWhileNothingHappens) {
  EXPECT_THAT(StatesAfter({}, {"/wifi/old", "/etc/info"}), UnorderedElementsAre("legacy facts"));
}

TEST(StorageModel, ANewFileIsThereOrNot) {
  EXPECT_THAT(StatesAfter({kCreate}, {"/wifi/a.new"}), UnorderedElementsAre("-", ""));
}

TEST(StorageModel, BytesThatWereNotFlushedAreMissingPartialZeroOrThere) {
  EXPECT_THAT(StatesAfter({kOpenFolder, kCreate, kFlushFolder, kWrite}, {"/wifi/a.new"}),
              UnorderedElementsAre("", "te", "0000", "te00", "text"));
}

TEST(StorageModel, EveryWriteToAnUnflushedFileGivesNewStates) {
  EXPECT_THAT(
      StatesAfter({kOpenFolder, kCreate, kFlushFolder, kWrite, "write(4, 'more', 4) = 4"}, {"/wifi/a.new"}),
      UnorderedElementsAre("", "text", "00000000", "text0000", "textmore"));
}

TEST(StorageModel, AFlushOfTheFileKeepsItsBytesButNotItsName) {
  EXPECT_THAT(StatesAfter({kCreate, kWrite, kFlushFile}, {"/wifi/a.new"}), UnorderedElementsAre("-", "text"));
}

TEST(StorageModel, AFlushOfTheFolderKeepsNamesButNotBytes) {
  EXPECT_THAT(StatesAfter({kOpenFolder, kCreate, kWrite, kRename, kFlushFolder}, {"/wifi/a.new", "/wifi/a"}),
              UnorderedElementsAre("- ", "- te", "- 0000", "- te00", "- text"));
}

TEST(StorageModel, ARenameIsOneStep) {
  EXPECT_THAT(StatesAfter({"rename('/wifi/old', '/etc/old') = 0"}, {"/wifi/old", "/etc/old"}),
              UnorderedElementsAre("legacy -", "- legacy"));
}

TEST(StorageModel, TheFlushOfOneFolderKeepsARenameWhole) {
  EXPECT_THAT(StatesAfter({kOpenFolder, "rename('/wifi/old', '/etc/old') = 0", kFlushFolder},
                          {"/wifi/old", "/etc/old"}),
              UnorderedElementsAre("- legacy"));
}

TEST(StorageModel, ChangesOfNamesHappenEachForItself) {
  EXPECT_THAT(StatesAfter({"unlink('/wifi/old') = 0", "unlink('/etc/info') = 0"}, {"/wifi/old", "/etc/info"}),
              UnorderedElementsAre("legacy facts", "- facts", "legacy -", "- -"));
}

TEST(StorageModel, WhatLiesInAFolderThatWasNotMadeIsLost) {
  EXPECT_THAT(StatesAfter({"mkdir('/wifi/legacy', 0755) = 0", "rename('/etc/info', '/wifi/legacy/info') = 0"},
                          {"/etc/info", "/wifi/legacy/info"}),
              UnorderedElementsAre("facts -", "facts -", "- facts", "- -"));
}

TEST(StorageModel, AFlushedDocumentStandsAloneAndWhole) {
  EXPECT_THAT(StatesAfter({kOpenFolder, kCreate, kWrite, kFlushFile, kRename, kFlushFolder},
                          {"/wifi/a.new", "/wifi/a"}),
              UnorderedElementsAre("- text"));
}

TEST(StorageModel, ATruncatedFileMayStillHaveItsBytes) {
  const auto states =
      StatesAfter({"openat(AT_FDCWD, '/wifi/old', O_WRONLY|O_CREAT|O_TRUNC, 0666) = 4"}, {"/wifi/old"});
  EXPECT_TRUE(states.contains("legacy"));
  EXPECT_TRUE(states.contains(""));
}

}  // namespace
}  // namespace lab::sweeps
