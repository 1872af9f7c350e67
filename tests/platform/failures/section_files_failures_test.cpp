#include <gtest/gtest.h>

#include <new>
#include <string>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "platform/section_files.h"
#include "tests/support/failing_allocation.h"

namespace {

using testing_support::FailingAllocation;

constexpr const char* kFile = "/etc/hostapd/mac_filter/mf_deny.conf";
constexpr int kMoreThanEnough = 1000;

/// Calls `operation` with its first allocation failing, then its second, and so on until none fails; `check`
/// sees each result and whether memory ran out.
template <typename Operation, typename Check>
void RunOutOfMemoryEverywhere(Operation operation, Check check) {
  for (int succeeding = 0; succeeding < kMoreThanEnough; ++succeeding) {
    int failed = 0;
    auto result = decltype(operation()){};
    {
      const FailingAllocation failing(succeeding);
      result = operation();
      failed = FailingAllocation::Failed();
    }
    check(result, failed > 0);
    if (failed == 0) return;
  }
  FAIL() << "memory never sufficed";
}

TEST(SectionFilesFailures, AllocGivesNullWhenMemoryRunsOut) {
  RunOutOfMemoryEverywhere([] { return KLIBCSzListAlloc(8192); },
                           [](KLIBCSzList* list, bool ran_out) {
                             EXPECT_EQ(list == nullptr, ran_out);
                             KLIBCSzListFree(list);
                           });
  RunOutOfMemoryEverywhere([] { return KLIBCSzHashAlloc(8192); },
                           [](KLIBCSzHash* table, bool ran_out) {
                             EXPECT_EQ(table == nullptr, ran_out);
                             KLIBCSzHashFree(table);
                           });
}

constexpr int kRanOut = -1000;

/// What `operation` gives, or kRanOut when it throws std::bad_alloc.
template <typename Operation>
int ResultOrRanOut(Operation operation) {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return kRanOut;
  }
}

TEST(SectionFilesFailures, EnumAndLoadThrowWhenMemoryRunsOut) {
  lab::PrivateRoot device;
  device.Write(kFile, "[one]\na=1\nb=" + std::string(10'000, 'b') + "\n[two]\nc=3\n");
  KLIBCSzList* list = KLIBCSzListAlloc(16);
  KLIBCSzHash* table = KLIBCSzHashAlloc(16);
  {
    const lab::InRoot inside(device);
    const auto enumerate = [&] { return KLIBCFileEnumSection(kFile, &list); };
    const auto load = [&] { return KLIBCFileGetSection(kFile, "one", &table); };
    const auto check = [](int result, bool ran_out) { EXPECT_EQ(result, ran_out ? kRanOut : 2); };
    RunOutOfMemoryEverywhere([&] { return ResultOrRanOut(enumerate); }, check);
    RunOutOfMemoryEverywhere([&] { return ResultOrRanOut(load); }, check);
  }
  EXPECT_STREQ(KLIBCSzListGet(list, 1), "two");
  EXPECT_STREQ(KLIBCSzHashGetValue(table, "a"), "1");
  KLIBCSzListFree(list);
  KLIBCSzHashFree(table);
}

}  // namespace
