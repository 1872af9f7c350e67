#include <gtest/gtest.h>

#include <cstdint>
#include <exception>
#include <limits>
#include <utility>

#include "builders/mac_filter_profiles.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/failing_platform.h"
#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"
#include "tests/support/without_file_privileges.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Error;
using testing_support::FailingAllocation;
using testing_support::FailingPlatform;
using testing_support::LogLines;
using Util::MACAddress;
using Devices = std::vector<MACFilterDevice>;
using Profiles = std::vector<MACFilterProfile>;

constexpr const char* kFolder = "/etc/hostapd/mac_filter";
constexpr const char* kDenyList = "/etc/hostapd/mac_filter/mf_deny.conf";
constexpr const char* kAllowList = "/etc/hostapd/mac_filter/mf_allow.conf";

class MACFilterFailuresTest : public ::testing::Test {
 protected:
  MACFilterFailuresTest() {
    device_.Files().Write(kDenyList,
                          "[1]\nenable=yes\ndesc=Phone\nmac=00:11:32:00:00:01\n"
                          "[2]\nenable=yes\ndesc=Tablet\nmac=00:11:32:00:00:02\n"
                          "[3]\nenable=yes\ndesc=Watch\nmac=00:11:32:00:00:03\n");
    device_.Files().Write(kAllowList, "[1]\nenable=yes\ndesc=Printer\nmac=00:11:32:00:00:04\n");
  }

  Devices Read() {
    return device_.Run([] { return ReadMACFilterDevices(kDenyList); });
  }
  Profiles Build() {
    return device_.Run([] { return BuildMACFilterProfiles(); });
  }
  void ExpectNothingKept(const FailingPlatform& platform) {
    EXPECT_EQ(platform.lists, 0);
    EXPECT_EQ(platform.tables, 0);
  }

  testing_support::TestDevice device_;
  const MACFilterDevice phone_{"Phone", MACAddress("00:11:32:00:00:01")};
  const MACFilterDevice tablet_{"Tablet", MACAddress("00:11:32:00:00:02")};
  const MACFilterDevice watch_{"Watch", MACAddress("00:11:32:00:00:03")};
};

TEST_F(MACFilterFailuresTest, ListAndTableAreAskedForOnceAndReleased) {
  FailingPlatform platform;
  EXPECT_EQ(Read(), (Devices{phone_, tablet_, watch_}));
  EXPECT_EQ(platform.list_capacity, 8192U);
  EXPECT_EQ(platform.table_capacity, 8192U);
  ExpectNothingKept(platform);
}

TEST_F(MACFilterFailuresTest, FailedAllocationOfTheListIsLogged) {
  FailingPlatform platform;
  platform.list_allocation_fails = true;
  EXPECT_EQ(Read(), Devices{});
  EXPECT_EQ(device_.Log(), LogLines{Error(524, "Failed to allocate memory")});
  ExpectNothingKept(platform);
}

TEST_F(MACFilterFailuresTest, FailedAllocationOfTheTableIsLoggedAndReleasesTheList) {
  FailingPlatform platform;
  platform.table_allocation_fails = true;
  EXPECT_EQ(Read(), Devices{});
  EXPECT_EQ(device_.Log(), LogLines{Error(524, "Failed to allocate memory")});
  ExpectNothingKept(platform);
}

TEST_F(MACFilterFailuresTest, FailedAllocationOfBothIsLoggedOnce) {
  FailingPlatform platform;
  platform.list_allocation_fails = true;
  platform.table_allocation_fails = true;
  EXPECT_EQ(Read(), Devices{});
  EXPECT_EQ(device_.Log(), LogLines{Error(524, "Failed to allocate memory")});
}

TEST_F(MACFilterFailuresTest, EachListsFailedAllocationIsLogged) {
  FailingPlatform platform;
  platform.list_allocation_fails = true;
  EXPECT_EQ(Build(), Profiles{});
  EXPECT_EQ(device_.Log(),
            (LogLines{Error(524, "Failed to allocate memory"), Error(524, "Failed to allocate memory")}));
}

TEST_F(MACFilterFailuresTest, NegativeCountsAreLoggedAndReleaseEverything) {
  for (const int count : {-1, -2, -1000}) {
    FailingPlatform platform;
    platform.section_count = count;
    EXPECT_EQ(Read(), Devices{});
    EXPECT_EQ(device_.Log(),
              LogLines{Error(530, "Failed to enum section from /etc/hostapd/mac_filter/mf_deny.conf")});
    ExpectNothingKept(platform);
  }
}

TEST_F(MACFilterFailuresTest, CountOf0IsSilentAndReleasesEverything) {
  FailingPlatform platform;
  platform.section_count = 0;
  EXPECT_EQ(Read(), Devices{});
  EXPECT_EQ(device_.Log(), LogLines{});
  ExpectNothingKept(platform);
}

TEST_F(MACFilterFailuresTest, SectionsThatCannotBeLoadedAreSkippedSilently) {
  for (const int result : {0, -1, -7}) {
    FailingPlatform platform;
    platform.sections_that_fail = {"2"};
    platform.section_result = result;
    EXPECT_EQ(Read(), (Devices{phone_, watch_})) << result;
    EXPECT_EQ(device_.Log(), LogLines{});
    ExpectNothingKept(platform);
  }
}

TEST_F(MACFilterFailuresTest, AnyPositiveResultIsALoadedSection) {
  FailingPlatform platform;
  platform.sections_that_fail = {"2"};
  platform.section_result = 1000;
  EXPECT_EQ(Read(), (Devices{phone_, tablet_, watch_}));
}

TEST_F(MACFilterFailuresTest, MalformedAddressReleasesEverything) {
  device_.Files().Write(kDenyList, "[1]\nenable=yes\nmac=nonsense\n");
  FailingPlatform platform;
  EXPECT_THROW(Read(), std::exception);
  ExpectNothingKept(platform);
}

TEST_F(MACFilterFailuresTest, ProfilesNeverThrowWhateverTheReadsThrow) {
  FailingPlatform platform;
  platform.legacy_reads_throw = true;
  EXPECT_EQ(Build(), Profiles{});
  EXPECT_EQ(device_.Log(), LogLines{});
  ExpectNothingKept(platform);
}

/// Those of `whole` that are made of one list alone, numbered as if the other one were not there.
Profiles OfOneList(const Profiles& whole, MACFilterPolicy policy) {
  Profiles profiles;
  for (MACFilterProfile profile : whole) {
    if (profile.policy != policy) continue;
    profile.id = static_cast<std::int32_t>(profiles.size());
    profiles.push_back(std::move(profile));
  }
  return profiles;
}

TEST_F(MACFilterFailuresTest, ProfilesAreWholeOrNoneWhereverMemoryRunsOutForAMomentOrForGood) {
  const Profiles whole = Build();
  ASSERT_EQ(whole.size(), 4U);
  ASSERT_EQ(whole.front().devices, (Devices{phone_, tablet_, watch_}));
  for (const int failing : {1, std::numeric_limits<int>::max()}) {
    int runs = 0;
    int empty = 0;
    for (bool ran_out = true; ran_out && runs < 2000; ++runs) {
      const FailingPlatform platform;
      Profiles profiles;
      device_.Run([&] {
        const FailingAllocation refusal(runs, failing);
        profiles = BuildMACFilterProfiles();
        ran_out = FailingAllocation::Failed() > 0;
      });
      empty += profiles.empty() ? 1 : 0;
      // A list or table that is not to be had is logged and leaves its own list out, as a whole.
      const bool lacks_list = device_.Log() == LogLines{Error(524, "Failed to allocate memory")};
      const bool is_one_list = profiles == OfOneList(whole, MACFilterPolicy::Deny) ||
                               profiles == OfOneList(whole, MACFilterPolicy::Allow);
      EXPECT_TRUE(profiles.empty() || profiles == whole || (lacks_list && is_one_list)) << runs;
      if (!ran_out) {
        EXPECT_EQ(profiles, whole);
      }
      ExpectNothingKept(platform);
    }
    EXPECT_GT(empty, 10);
    EXPECT_LT(runs, 2000);
  }
}

TEST_F(MACFilterFailuresTest, UnreadableFolderEmptiesEverythingSilently) {
  device_.Files().SetMode(kFolder, 0000);
  Profiles profiles{{}};
  device_.Run([&] {
    const testing_support::WithoutFilePrivileges as_an_ordinary_user;
    profiles = BuildMACFilterProfiles();
  });
  device_.Files().SetMode(kFolder, 0755);
  EXPECT_EQ(profiles, Profiles{});
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(MACFilterFailuresTest, UnreadableListIsLoggedAndCountsAsEmpty) {
  device_.Files().SetMode(kDenyList, 0000);
  Profiles profiles;
  device_.Run([&] {
    const testing_support::WithoutFilePrivileges as_an_ordinary_user;
    profiles = BuildMACFilterProfiles();
  });
  ASSERT_EQ(profiles.size(), 2U);
  EXPECT_EQ(profiles[0].name, "Primary Network - Allow");
  EXPECT_EQ(profiles[0].id, 0);
  EXPECT_EQ(device_.Log(),
            LogLines{Error(530, "Failed to enum section from /etc/hostapd/mac_filter/mf_deny.conf")});
}

}  // namespace
}  // namespace KELP::Wifi::Updater
