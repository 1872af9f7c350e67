#include "builders/mac_filter_profiles.h"

#include <gtest/gtest.h>

#include <exception>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Error;
using testing_support::LogLines;
using Util::MACAddress;
using Devices = std::vector<MACFilterDevice>;
using Profiles = std::vector<MACFilterProfile>;

constexpr const char* kFolder = "/etc/hostapd/mac_filter";
constexpr const char* kDenyList = "/etc/hostapd/mac_filter/mf_deny.conf";
constexpr const char* kAllowList = "/etc/hostapd/mac_filter/mf_allow.conf";
constexpr const char* kPrimaryInfo = "/etc/hostapd/mac_filter/mf.info";
constexpr const char* kGuestInfo = "/etc/hostapd/mac_filter/mf_guest.info";

constexpr bool kPrimary = false;
constexpr bool kGuest = true;

std::string Section(const std::string& name, const std::string& enable, const std::string& desc,
                    const std::string& mac) {
  return "[" + name + "]\nenable=" + enable + "\ndesc=" + desc + "\nmac=" + mac + "\n";
}

MACFilterDevice Device(const std::string& name, const std::string& mac) {
  return {name, MACAddress(mac)};
}

const std::string kPhone = Section("1", "yes", "Phone", "00:11:32:00:00:01");
const std::string kTablet = Section("2", "yes", "Tablet", "00:11:32:00:00:02");
const Devices kPhoneOnly{Device("Phone", "00:11:32:00:00:01")};
const Devices kTabletOnly{Device("Tablet", "00:11:32:00:00:02")};

class MACFilterTest : public ::testing::Test {
 protected:
  void Write(const std::string& path, const std::string& text) { device_.Files().Write(path, text); }

  Devices Read(const std::string& path) {
    return device_.Run([&] { return ReadMACFilterDevices(path); });
  }
  Devices ReadText(const std::string& text) {
    Write(kDenyList, text);
    return Read(kDenyList);
  }
  Profiles Build() {
    return device_.Run([] { return BuildMACFilterProfiles(); });
  }

  testing_support::TestDevice device_;
};

// ReadMACFilterDevices

using ReadMACFilterDevicesTest = MACFilterTest;

TEST_F(ReadMACFilterDevicesTest, EnabledSectionsAreDevicesInTheirOrder) {
  std::string other_words;
  for (const char* word : {"Yes", "YES", "yes ", " yes", "1", "true", "no", ""}) {
    other_words += Section(std::string("s") + word, word, "Out", "00:11:32:00:00:01");
  }
  const MACFilterDevice nameless = Device("", "00:11:32:00:00:03");
  const std::tuple<const char*, std::string, Devices> cases[] = {
      {"one", kPhone, kPhoneOnly},
      {"not sorted, and duplicates stay",
       Section("z", "yes", "Zed", "00:11:32:00:00:09") + Section("a", "yes", "Abe", "00:11:32:00:00:03") +
           Section("m", "yes", "Zed", "00:11:32:00:00:09"),
       {Device("Zed", "00:11:32:00:00:09"), Device("Abe", "00:11:32:00:00:03"),
        Device("Zed", "00:11:32:00:00:09")}},
      {"only the exact word yes", other_words + kTablet, kTabletOnly},
      {"no enable", "[1]\ndesc=Out\nmac=00:11:32:00:00:01\n", {}},
      {"nothing is carried from one section to the next",
       kPhone + "[2]\ndesc=No flag\nmac=00:11:32:00:00:02\n[3]\nenable=yes\nmac=00:11:32:00:00:03\n",
       {kPhoneOnly[0], nameless}},
      {"no description", "[1]\nenable=yes\nmac=00:11:32:00:00:03\n", {nameless}},
      {"description as it is",
       Section("1", "yes", "  Anna's \\ %s \xe4 ", "00:11:32:00:00:01"),
       {Device("  Anna's \\ %s \xe4 ", "00:11:32:00:00:01")}},
      {"bad address of a disabled device", Section("1", "no", "Bad", "nonsense") + kTablet, kTabletOnly},
      {"sections without entries", "[empty]\n[blank]\n\nno entry\n" + kPhone + "[last]\n", kPhoneOnly},
      {"no name", Section("", "yes", "Phone", "00:11:32:00:00:01"), kPhoneOnly},
      {"odd name", Section("disabled %s [x]", "yes", "Phone", "00:11:32:00:00:01"), kPhoneOnly},
      {"empty", "", {}},
      {"no section", "enable=yes\nmac=00:11:32:00:00:01\n", {}},
  };
  for (const auto& [name, text, devices] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(ReadText(text), devices);
    EXPECT_EQ(device_.Log(), LogLines{});
  }
}

TEST_F(ReadMACFilterDevicesTest, MissingOrMalformedAddressThrows) {
  for (const std::string& bad :
       {std::string("[2]\nenable=yes\ndesc=No address\n"), Section("2", "yes", "Bad", "00:11:32:00:00")}) {
    EXPECT_THROW(ReadText(bad), std::exception);
    EXPECT_THROW(ReadText(kPhone + bad), std::exception);
    EXPECT_EQ(device_.Log(), LogLines{});
  }
}

TEST_F(ReadMACFilterDevicesTest, ManySectionsAreAllRead) {
  std::string text;
  Devices devices;
  for (int number = 0; number < 400; ++number) {
    char mac[18];
    std::snprintf(mac, sizeof mac, "02:00:00:00:%02x:%02x", static_cast<unsigned>(number / 256) & 0xFFU,
                  static_cast<unsigned>(number % 256) & 0xFFU);
    const std::string name = "a station with quite a long description, number " + std::to_string(number);
    text += Section(std::to_string(number), "yes", name, mac);
    devices.push_back(Device(name, mac));
  }
  EXPECT_EQ(ReadText(text), devices);
}

TEST_F(ReadMACFilterDevicesTest, MissingFileIsLoggedWithItsPath) {
  EXPECT_EQ(Read("/no/such%s.conf"), Devices{});
  EXPECT_EQ(device_.Log(), LogLines{Error(530, "Failed to enum section from /no/such%s.conf")});
}

TEST_F(ReadMACFilterDevicesTest, FolderInTheFilesPlaceIsLogged) {
  device_.Files().MakeDirectory(kAllowList);
  EXPECT_EQ(Read(kAllowList), Devices{});
  EXPECT_EQ(device_.Log(),
            LogLines{Error(530, "Failed to enum section from /etc/hostapd/mac_filter/mf_allow.conf")});
}

TEST_F(ReadMACFilterDevicesTest, FileWithCRLFHasNoSectionAndNothingIsLogged) {
  EXPECT_EQ(ReadText("[1]\r\nenable=yes\r\nmac=00:11:22:33:44:55\r\n"), Devices{});
  EXPECT_EQ(device_.Log(), LogLines{});
}

// BuildMACFilterProfiles

class BuildMACFilterProfilesTest : public MACFilterTest {
 protected:
  static MACFilterProfile PrimaryDeny(std::int32_t id, const Devices& devices) {
    return {id, "Primary Network - Deny", MACFilterPolicy{1}, devices};
  }
  static MACFilterProfile GuestDeny(std::int32_t id, const Devices& devices) {
    return {id, "Guest Network - Deny", MACFilterPolicy{1}, devices};
  }
  static MACFilterProfile PrimaryAllow(std::int32_t id, const Devices& devices) {
    return {id, "Primary Network - Allow", MACFilterPolicy{0}, devices};
  }
  static MACFilterProfile GuestAllow(std::int32_t id, const Devices& devices) {
    return {id, "Guest Network - Allow", MACFilterPolicy{0}, devices};
  }
  void WriteBothLists() {
    Write(kDenyList, kPhone);
    Write(kAllowList, kTablet);
  }

  const Profiles of_phone_{PrimaryDeny(0, kPhoneOnly), GuestDeny(1, kPhoneOnly)};
  const Profiles of_tablet_{PrimaryAllow(0, kTabletOnly), GuestAllow(1, kTabletOnly)};
  const Profiles all_{PrimaryDeny(0, kPhoneOnly), GuestDeny(1, kPhoneOnly), PrimaryAllow(2, kTabletOnly),
                      GuestAllow(3, kTabletOnly)};
};

TEST_F(BuildMACFilterProfilesTest, EachListWithDevicesMakesAProfileForEachNetwork) {
  const std::string bad = Section("0", "yes", "Bad", "00:11:32:00:00:0g");
  const Devices with_duplicate{kTabletOnly[0], kPhoneOnly[0], kTabletOnly[0]};
  struct Case {
    const char* name;
    std::optional<std::string> deny;
    std::optional<std::string> allow;
    Profiles profiles;
  };
  const Case cases[] = {
      {"no lists", {}, {}, {}},
      {"both", kPhone, kTablet, all_},
      {"deny list", kPhone, {}, of_phone_},
      {"allow list, from id 0", {}, kTablet, of_tablet_},
      {"empty list", kPhone, "", of_phone_},
      {"list without enabled devices takes no ids",
       Section("1", "Yes", "Phone", "00:11:32:00:00:01") + Section("2", "1", "Pad", "00:11:32:00:00:02"),
       kTablet, of_tablet_},
      {"order and duplicates stay",
       kTablet + kPhone + Section("3", "yes", "Tablet", "00:11:32:00:00:02"),
       {},
       {PrimaryDeny(0, with_duplicate), GuestDeny(1, with_duplicate)}},
      {"malformed address", kPhone + bad, kTablet, {}},
      {"malformed address in the second list", kPhone, kTablet + bad, {}},
      {"missing address", kPhone, "[1]\nenable=yes\ndesc=No address\n", {}},
      {"malformed address of a disabled device",
       Section("0", "no", "Bad", "00:11:32") + kPhone,
       {},
       of_phone_},
  };
  for (const Case& list_case : cases) {
    SCOPED_TRACE(list_case.name);
    Write(kPrimaryInfo, "policy=disabled\n");  // which decides nothing here
    for (const auto& [path, text] : {std::pair{kDenyList, list_case.deny}, {kAllowList, list_case.allow}}) {
      if (text) Write(path, *text);
    }
    EXPECT_EQ(Build(), list_case.profiles);
    EXPECT_EQ(device_.Log(), LogLines{});
    device_.Files().Remove(kFolder);
  }
}

TEST_F(BuildMACFilterProfilesTest, OnlyTheExactGuestPolicyDisabledMakesNoGuestCopies) {
  WriteBothLists();
  for (const char* word :
       {"deny", "allow", "Disabled", "DISABLED", "disabled ", " disabled", "disable", "off", "no", ""}) {
    Write(kGuestInfo, std::string("policy=") + word + "\n");
    EXPECT_EQ(Build(), all_) << '"' << word << '"';
  }
  Write(kGuestInfo, "guest_policy=disabled\n");
  EXPECT_EQ(Build(), all_);
  Write(kGuestInfo, "policy=disabled\n");
  EXPECT_EQ(Build(), (Profiles{PrimaryDeny(0, kPhoneOnly), PrimaryAllow(1, kTabletOnly)}));
}

TEST_F(BuildMACFilterProfilesTest, FolderInAListsPlaceIsLoggedAndCountsAsEmpty) {
  device_.Files().MakeDirectory(kDenyList);
  Write(kAllowList, kTablet);
  EXPECT_EQ(Build(), of_tablet_);
  EXPECT_EQ(device_.Log(),
            LogLines{Error(530, "Failed to enum section from /etc/hostapd/mac_filter/mf_deny.conf")});
}

TEST_F(BuildMACFilterProfilesTest, LinksAreFollowedAndADanglingOneIsAMissingList) {
  Write(kAllowList, kTablet);
  device_.Files().Link(kDenyList, "/etc/lists/deny");
  EXPECT_EQ(Build(), of_tablet_);
  Write("/etc/lists/deny", kPhone);
  EXPECT_EQ(Build(), all_);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(BuildMACFilterProfilesTest, WhatCannotBeTestedEmptiesEverythingSilently) {
  Write(kDenyList, kPhone);
  device_.Files().Link(kAllowList, kAllowList);  // a link to itself
  EXPECT_EQ(Build(), Profiles{});
  EXPECT_EQ(device_.Log(), LogLines{});
  device_.Files().Remove(kFolder);
  Write(kFolder, "");
  EXPECT_EQ(Build(), Profiles{});
  EXPECT_EQ(device_.Log(), LogLines{});
}

// FindMACFilterProfileId

class FindMACFilterProfileIdTest : public MACFilterTest {
 protected:
  std::int32_t Find(const Profiles& profiles, bool is_guest) {
    return device_.Run([&] { return FindMACFilterProfileId(profiles, is_guest); });
  }
  void WritePolicies(const std::string& primary, const std::string& guest) {
    Write(kPrimaryInfo, "policy=" + primary + "\n");
    Write(kGuestInfo, "policy=" + guest + "\n");
  }

  // Ids that are no positions.
  const Profiles all_{{40, "Primary Network - Deny", MACFilterPolicy{1}, kPhoneOnly},
                      {30, "Guest Network - Deny", MACFilterPolicy{1}, kPhoneOnly},
                      {20, "Primary Network - Allow", MACFilterPolicy{0}, kTabletOnly},
                      {10, "Guest Network - Allow", MACFilterPolicy{0}, kTabletOnly}};
};

TEST_F(FindMACFilterProfileIdTest, EachNetworksOwnPolicySelectsItsProfile) {
  WritePolicies("deny", "allow");
  EXPECT_EQ(Find(all_, kPrimary), 40);
  EXPECT_EQ(Find(all_, kGuest), 10);
  WritePolicies("allow", "deny");
  EXPECT_EQ(Find(all_, kPrimary), 20);
  EXPECT_EQ(Find(all_, kGuest), 30);
}

TEST_F(FindMACFilterProfileIdTest, AnyOtherPolicySelectsNone) {
  for (const char* word :
       {"disabled", "", "Deny", "ALLOW", "deny ", " allow", "denyallow", "1", "0", "yes"}) {
    WritePolicies(word, word);
    EXPECT_EQ(Find(all_, kPrimary), -1) << '"' << word << '"';
    EXPECT_EQ(Find(all_, kGuest), -1) << '"' << word << '"';
  }
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(FindMACFilterProfileIdTest, MissingFilesSelectNone) {
  EXPECT_EQ(Find(all_, kPrimary), -1);
  EXPECT_EQ(Find(all_, kGuest), -1);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(FindMACFilterProfileIdTest, NoNetworkTakesTheOthersPolicy) {
  Write(kPrimaryInfo, "policy=deny\n");
  EXPECT_EQ(Find(all_, kGuest), -1);
  device_.Files().Remove(kPrimaryInfo);
  Write(kGuestInfo, "policy=deny\n");
  EXPECT_EQ(Find(all_, kPrimary), -1);
}

TEST_F(FindMACFilterProfileIdTest, PolicyKeyHasNoGuestForm) {
  Write(kGuestInfo, "guest_policy=deny\n");
  EXPECT_EQ(Find(all_, kGuest), -1);
}

TEST_F(FindMACFilterProfileIdTest, NoProfilesNoId) {
  WritePolicies("deny", "allow");
  EXPECT_EQ(Find({}, kPrimary), -1);
  EXPECT_EQ(Find({}, kGuest), -1);
}

TEST_F(FindMACFilterProfileIdTest, PolicyWithoutItsProfileSelectsNone) {
  const Profiles deny_only{all_[0], all_[1]};
  const Profiles allow_only{all_[2], all_[3]};
  const Profiles primary_only{all_[0], all_[2]};
  const Profiles guest_only{all_[1], all_[3]};
  WritePolicies("allow", "allow");
  EXPECT_EQ(Find(deny_only, kPrimary), -1);
  EXPECT_EQ(Find(deny_only, kGuest), -1);
  EXPECT_EQ(Find(primary_only, kGuest), -1);
  EXPECT_EQ(Find(guest_only, kPrimary), -1);
  WritePolicies("deny", "deny");
  EXPECT_EQ(Find(allow_only, kPrimary), -1);
  EXPECT_EQ(Find(allow_only, kGuest), -1);
}

TEST_F(FindMACFilterProfileIdTest, NamesAreComparedExactlyAndTheFirstCounts) {
  WritePolicies("deny", "deny");
  const Profiles profiles{{1, "Primary Network - Deny 2", MACFilterPolicy{1}, {}},
                          {2, "primary network - deny", MACFilterPolicy{1}, {}},
                          {3, "Primary Network - Den", MACFilterPolicy{1}, {}},
                          {4, "Primary Network - Deny", MACFilterPolicy{0}, {}},
                          {5, "Primary Network - Deny", MACFilterPolicy{1}, {}}};
  EXPECT_EQ(Find(profiles, kPrimary), 4);
}

TEST_F(FindMACFilterProfileIdTest, OfTheProfilesThatAreBuiltTheRightOneIsFound) {
  Write(kDenyList, kPhone);
  Write(kAllowList, kTablet);
  WritePolicies("allow", "allow");
  EXPECT_EQ(Find(Build(), kPrimary), 2);
  EXPECT_EQ(Find(Build(), kGuest), 3);
  WritePolicies("allow", "disabled");
  EXPECT_EQ(Find(Build(), kPrimary), 1);
  EXPECT_EQ(Find(Build(), kGuest), -1);
}

}  // namespace
}  // namespace KELP::Wifi::Updater
