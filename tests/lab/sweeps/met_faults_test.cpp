#include "lab/sweeps/met_faults.h"

#include <gtest/gtest.h>

#include "tests/lab/sweeps/recorded_calls.h"

namespace lab::sweeps {
namespace {

Fault SecondRead() {
  Fault fault;
  fault.call = "read";
  fault.ordinal = 2;
  fault.error = "EIO";
  fault.subject = "3";
  return fault;
}

MigrationRun Recorded(const std::string& lines) {
  MigrationRun run;
  run.scratch[kRecord] = {Entry::Kind::File, 0644, lines};
  return run;
}

TEST(IsMet, WantsTheCallThatWasMeant) {
  const std::string first = "17 read(3, 0x55, 9) = 0\n";
  const std::string injected = "17 read(3, 0x55, 9) = -1 EIO (Input/output error) (INJECTED)\n";
  EXPECT_TRUE(IsMet(SecondRead(), Recorded(first + injected)));
  EXPECT_FALSE(IsMet(SecondRead(), Recorded(injected + first)));
  EXPECT_FALSE(IsMet(SecondRead(), Recorded(first + first)));
  EXPECT_FALSE(IsMet(SecondRead(),
                     Recorded(first + "17 read(4, 0x55, 9) = -1 EIO (Input/output error) (INJECTED)\n")));
}

TEST(IsMet, TakesARunWithoutARecordForNoneUnlessTheHelperWatchedIt) {
  EXPECT_FALSE(IsMet(SecondRead(), MigrationRun{}));
  Fault fault = SecondRead();
  fault.kind = Fault::Kind::ShortTransfer;
  EXPECT_TRUE(IsMet(fault, MigrationRun{}));
}

}  // namespace
}  // namespace lab::sweeps
