#include "lab/sweeps/file_operations.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/lab/sweeps/recorded_calls.h"

namespace lab::sweeps {
namespace {

using Kind = FileOperation::Kind;

std::vector<FileOperation> Of(const std::vector<std::string>& lines) {
  return ExtractFileOperations(Calls(lines));
}

TEST(ExtractFileOperations, FollowsTheWritingOfADocument) {
  const auto operations = Of({
      "openat(AT_FDCWD, '/wifi/', O_RDONLY|O_DIRECTORY) = 3",
      "openat(3, 'a.new', O_WRONLY|O_CREAT|O_EXCL, 0600) = 4",
      "fchmod(4, 0600) = 0",
      "write(4, 'text', 4) = 4",
      "fsync(4) = 0",
      "close(4) = 0",
      "renameat(3, 'a.new', 3, 'a') = 0",
      "fsync(3) = 0",
  });
  ASSERT_EQ(operations.size(), 5U);
  EXPECT_EQ(operations[0].kind, Kind::Open);
  EXPECT_EQ(operations[0].path, "/wifi/a.new");
  EXPECT_EQ(operations[0].mode, 0600U);
  EXPECT_EQ(operations[1].kind, Kind::Write);
  EXPECT_EQ(operations[1].bytes, "text");
  EXPECT_EQ(operations[1].opened, operations[0].opened);
  EXPECT_EQ(operations[2].kind, Kind::FlushFile);
  EXPECT_EQ(operations[2].opened, operations[0].opened);
  EXPECT_EQ(operations[3].kind, Kind::Rename);
  EXPECT_EQ(operations[3].path, "/wifi/a.new");
  EXPECT_EQ(operations[3].target, "/wifi/a");
  EXPECT_EQ(operations[4].kind, Kind::FlushDirectory);
  EXPECT_EQ(operations[4].path, "/wifi");
}

TEST(ExtractFileOperations, CountsOnlyTheBytesThatWereTaken) {
  const auto operations =
      Of({"openat(AT_FDCWD, '/a', O_WRONLY|O_CREAT, 0600) = 3", "write(3, 'text', 4) = 1"});
  EXPECT_EQ(operations.at(1).bytes, "t");
}

TEST(ExtractFileOperations, LeavesOutReadsStreamsAndFailures) {
  EXPECT_TRUE(Of({"openat(AT_FDCWD, '/a', O_RDONLY) = 3", "read(3, 'text', 9) = 4", "write(2, 'text', 4) = 4",
                  "rename('/a', '/b') = -1 EXDEV (Invalid cross-device link)"})
                  .empty());
}

TEST(ExtractFileOperations, KnowsFoldersAndRemovals) {
  const auto operations = Of({"mkdir('/wifi/legacy', 0777) = 0", "unlink('/wifi/model.json') = 0"});
  ASSERT_EQ(operations.size(), 2U);
  EXPECT_EQ(operations[0].kind, Kind::MakeDirectory);
  EXPECT_EQ(operations[0].mode, 0777U);
  EXPECT_EQ(operations[1].kind, Kind::Remove);
  EXPECT_EQ(operations[1].path, "/wifi/model.json");
}

TEST(ExtractFileOperations, RefusesWhatTheModelDoesNotKnow) {
  EXPECT_THROW(Of({"ftruncate(3, 0) = 0"}), std::runtime_error);
  EXPECT_THROW(Of({"link('/a', '/b') = 0"}), std::runtime_error);
  EXPECT_THROW(Of({"mmap(NULL, 9, PROT_READ|PROT_WRITE, MAP_SHARED, 3, 0) = 0x7000"}), std::runtime_error);
  EXPECT_THROW(Of({"write(7, 'text', 4) = 4"}), std::runtime_error);
  EXPECT_THROW(Of({"openat(AT_FDCWD, '/a', O_WRONLY|O_CREAT, 0600) = 3", "fchmod(3, 0644) = 0"}),
               std::runtime_error);
}

TEST(ExtractFileOperations, RefusesACallOfWhichNothingIsKnown) {
  EXPECT_THROW(Of({"brand_new_call(3, 0) = 0"}), std::runtime_error);
}

TEST(ExtractFileOperations, KnowsTheCallsThatChangeNothing) {
  EXPECT_TRUE(Of({"mmap(NULL, 9, PROT_READ|PROT_WRITE, MAP_PRIVATE|MAP_ANONYMOUS, -1, 0) = 0x7000",
                  "newfstatat(AT_FDCWD, '/a', {st_mode=S_IFREG}, 0) = 0", "flock(3, LOCK_EX) = 0"})
                  .empty());
  EXPECT_EQ(Of({"openat(AT_FDCWD, '/a', O_WRONLY|O_CREAT, 0600) = 3", "fchmod(3, 0600) = 0"}).size(), 1U);
}

}  // namespace
}  // namespace lab::sweeps
