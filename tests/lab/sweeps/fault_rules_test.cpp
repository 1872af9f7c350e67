#include "lab/sweeps/fault_rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/lab/sweeps/recorded_calls.h"

namespace lab::sweeps {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Duty = Fault::Duty;

const std::string kFolder = "/usr/kelp/etc/wifi/";

CallSubject About(const std::string& path) {
  CallSubject subject;
  subject.path = path;
  return subject;
}

CallSubject MadeByTheRun(const std::string& path) {
  CallSubject subject = About(path);
  subject.uses_new = true;
  return subject;
}

FaultRule Rule(const std::string& call, const CallSubject& subject, std::string_view error) {
  return RuleFor(Calls({call}).front(), subject, error);
}

TEST(RuleFor, ADocumentThatCannotBeWrittenEndsTheRunAndIsNamedWithTheCause) {
  for (const char* const call :
       {"write(4, '{}', 2) = 2", "fsync(4) = 0", "close(4) = 0", "fchmod(4, 0600) = 0"}) {
    const FaultRule rule = Rule(call, MadeByTheRun(kFolder + "misc.json.new"), "EIO");
    EXPECT_EQ(rule.duty, Duty::Fail) << call;
    EXPECT_THAT(rule.reason, ElementsAre("cannot ", kFolder + "misc.json", "Input/output error")) << call;
  }
  const FaultRule rule = Rule("renameat(3, 'a', 3, 'b') = 0", About(kFolder + "wps.json.new"), "EISDIR");
  EXPECT_THAT(rule.reason, ElementsAre("cannot ", kFolder + "wps.json", "Is a directory"));
}

TEST(RuleFor, AFailedMoveRemovalOrFolderEndsTheRun) {
  EXPECT_THAT(
      Rule("rename('/a', '/b') = 0", About(kFolder + "wifi_wps"), "EXDEV").reason,
      ElementsAre("filesystem error: cannot rename", kFolder + "wifi_wps", "Invalid cross-device link"));
  EXPECT_THAT(
      Rule("unlink('/a') = 0", About(kFolder + "model.json"), "EROFS").reason,
      ElementsAre("filesystem error: cannot remove", kFolder + "model.json", "Read-only file system"));
  EXPECT_THAT(
      Rule("mkdir('/a', 0777) = 0", About(kFolder + "legacy"), "EDQUOT").reason,
      ElementsAre("filesystem error: cannot create directories", kFolder + "legacy", "Disk quota exceeded"));
  // Also where the file was not there anyway.
  EXPECT_EQ(
      Rule("rename('/a', '/b') = -1 ENOENT (No such file or directory)", About(kFolder + "lbd.conf"), "EIO")
          .duty,
      Duty::Fail);
}

TEST(RuleFor, AFolderThatCannotBeFlushedByNatureIsNoFailure) {
  CallSubject folder = About("/usr/kelp/etc/wifi");
  folder.uses_folder = true;
  EXPECT_EQ(Rule("fsync(3) = 0", folder, "EINVAL").duty, Duty::SameResult);
  EXPECT_EQ(Rule("fsync(3) = 0", folder, "EOPNOTSUPP").duty, Duty::SameResult);
  EXPECT_EQ(Rule("fsync(3) = 0", folder, "EIO").duty, Duty::Fail);
  EXPECT_EQ(Rule("fsync(3) = 0", MadeByTheRun(kFolder + "misc.json.new"), "EINVAL").duty, Duty::Fail);
}

TEST(RuleFor, KnowsWhatIsReadForgivingly) {
  for (const char* const file :
       {"/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00", "/usr/kelp/etc/wifi/wifi_wps",
        "/etc/hostapd/mac_filter/mf_deny.conf", "/usr/kelp/etc/mesh/mesh.conf", "/usr/kelp/etc/secret.key",
        "/etc/fw_env.config"}) {
    EXPECT_EQ(Rule("openat(AT_FDCWD, '/a', O_RDONLY) = 3", About(file), "EIO").duty, Duty::Forgive) << file;
    EXPECT_EQ(Rule("read(3, 'text', 9) = 4", About(file), "EIO").duty, Duty::Forgive) << file;
  }
}

TEST(RuleFor, KnowsWhatIsNot) {
  EXPECT_THAT(Rule("read(3, 'text', 9) = 4", About(kFolder + "model.json"), "EIO").reason,
              ElementsAre("cannot read ", kFolder + "model.json", "Input/output error"));
  const FaultRule rule =
      Rule("openat(AT_FDCWD, '/a', O_RDONLY) = 3", About("/proc/sys/kernel/kelp_mac_address4"), "ENOENT");
  EXPECT_EQ(rule.duty, Duty::Fail);
  EXPECT_THAT(rule.reason, ElementsAre("Failed to get bssid from kelp_mac_address"));
  EXPECT_EQ(Rule("read(3, 'text', 9) = 4", About("/usr/kelp/etc/info.conf"), "EIO").duty, Duty::Tell);
}

TEST(RuleFor, KnowsWhatATestForAFileDecides) {
  const std::string absent = "newfstatat(AT_FDCWD, '/a', 0x1, 0) = -1 ENOENT (No such file or directory)";
  const std::string there = "newfstatat(AT_FDCWD, '/a', {st_mode=S_IFREG}, 0) = 0";
  EXPECT_THAT(Rule(absent, About(kFolder + "global.json"), "EIO").reason,
              ElementsAre("filesystem error: status", kFolder + "global.json", "Input/output error"));
  EXPECT_EQ(Rule(absent, About(kFolder + "global.json"), "ENOTDIR").duty, Duty::SameResult);
  EXPECT_THAT(Rule(there, About(kFolder + "model.json"), "ENOENT").reason,
              ElementsAre("some old config files are not existed."));
  EXPECT_EQ(Rule(absent, About(kFolder + "legacy"), "EACCES").duty, Duty::Fail);
  EXPECT_EQ(Rule(there, About("/etc/hostapd/mac_filter/mf_deny.conf"), "EIO").duty, Duty::Forgive);
}

TEST(RuleFor, AnInterruptionAndAClosedInputChangeNothing) {
  EXPECT_EQ(Rule("write(4, '{}', 2) = 2", MadeByTheRun(kFolder + "misc.json.new"), "EINTR").duty,
            Duty::SameResult);
  EXPECT_EQ(Rule("close(3) = 0", About(kFolder + "model.json"), "EIO").duty, Duty::SameResult);
}

TEST(RuleFor, HasNoneForWhatIsAboutNoFile) {
  const FaultRule rule = Rule("poll([], 0, 0) = 0", About(""), "ENOMEM");
  EXPECT_EQ(rule.duty, Duty::None);
  EXPECT_THAT(rule.reason, IsEmpty());
}

TEST(TellsFallbackOfStore, KnowsTheLinesByTheirNumbers) {
  EXPECT_TRUE(TellsFallbackOfStore("3: kelpwifiupdater:280 Failed to country code, use US to instead."));
  EXPECT_FALSE(TellsFallbackOfStore("3: kelpwifiupdater:760 Invalid security mode"));
}

}  // namespace
}  // namespace lab::sweeps
