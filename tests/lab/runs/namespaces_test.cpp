#include "lab/runs/namespaces.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "lab/images/descriptor.h"
#include "lab/images/private_root.h"
#include "lab/plain/plain_way.h"
#include "lab/runs/in_root.h"
#include "tests/support/child_process.h"
#include "tests/support/full_way.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using testing_support::AsOrdinaryUser;
using testing_support::InChild;

class OrdinaryUser : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!testing_support::MayBecomeOrdinaryUser()) GTEST_SKIP() << "needs root of the host";
    const std::string reason = AsOrdinaryUser([] { return WhyNotPossible().value_or(""); });
    if (!reason.empty()) GTEST_SKIP() << reason;
  }
};

TEST(Namespaces, ArePossibleWhereTheseTestsRun) {
  EXPECT_EQ(WhyNotPossible(), std::nullopt);
  EXPECT_TRUE(MayMount() || IsPlainWay());
}

TEST(Namespaces, EnteringTwiceIsHarmless) {
  EXPECT_NO_THROW(EnterNamespaces());
}

TEST(Namespaces, KeepMountsToThemselves) {
  testing_support::RequireFullWay();
  const std::string mounts = lab_test::ReadFile("/proc/self/mounts");
  const std::string answer = InChild([] {
    EnterMountNamespace();
    Checked(::mount("none", "/tmp", "tmpfs", 0, nullptr), "mount", "/tmp");
    return std::string("mounted");
  });
  EXPECT_EQ(answer, "mounted");
  EXPECT_EQ(lab_test::ReadFile("/proc/self/mounts"), mounts);
}

TEST_F(OrdinaryUser, MayNotMountBeforeAndMayAfter) {
  const std::string answer = AsOrdinaryUser([] {
    std::ostringstream out;
    out << MayMount();
    EnterNamespaces();
    out << MayMount() << ::geteuid() << ::getegid();
    return out.str();
  });
  EXPECT_EQ(answer, "0100");
}

TEST_F(OrdinaryUser, EntersPrivateRoots) {
  const std::string answer = AsOrdinaryUser([] {
    EnterNamespaces();
    PrivateRoot root;
    root.Write("/etc/name", "device");
    const InRoot inside(root);
    return lab_test::ReadFile("/etc/name");
  });
  EXPECT_EQ(answer, "device");
}

/// What `operation` gives in a process without privileges, on a host that allows it no user namespace.
std::string WhereNamespacesAreForbidden(const std::string& user,
                                        const std::function<std::string()>& operation) {
  testing_support::RequireFullWay();
  return InChild([&] {
    const std::string outer_user = std::to_string(::geteuid());
    Checked(::unshare(CLONE_NEWUSER), "enter", "a user namespace");
    std::ofstream("/proc/self/uid_map") << user + " " + outer_user + " 1";
    std::ofstream("/proc/sys/user/max_user_namespaces") << "0\n";
    __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
    const std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> none{};
    Checked(::syscall(SYS_capset, &header, none.data()), "drop", "the capabilities");
    return operation();
  });
}

TEST(ForbiddenNamespaces, TellAnOrdinaryUserWhatToDo) {
  const std::string answer =
      WhereNamespacesAreForbidden("1000", [] { return WhyNotPossible().value_or("possible"); });
  EXPECT_THAT(
      answer,
      HasSubstr("may not make a private root and run programs in it (enter a user namespace: No space "
                "left on device)"));
  EXPECT_THAT(answer, ::testing::EndsWith("\nNo user namespaces are allowed here.\n"
                                          "Run this as root (sudo), or allow it, as root: "
                                          "sysctl -w user.max_user_namespaces=15000"));
}

TEST(ForbiddenNamespaces, TellAContainersRootWhatToDo) {
  const std::string answer =
      WhereNamespacesAreForbidden("0", [] { return WhyNotPossible().value_or("possible"); });
  EXPECT_THAT(answer, HasSubstr("capability SYS_CHROOT"));
  EXPECT_THAT(answer, Not(HasSubstr("as root")));
}

TEST(ForbiddenNamespaces, MakeEnteringThrowTheSame) {
  const std::string answer = WhereNamespacesAreForbidden("1000", [] {
    EnterNamespaces();
    return std::string("entered");
  });
  EXPECT_THAT(answer, HasSubstr("Run this as root (sudo), or allow it"));
}

/// What `operation` gives in a plain chroot: a folder with a /proc that is the root folder, but no mount
/// point. The mount that it is in spreads to other namespaces what is mounted in it, as those of most hosts
/// do.
std::string InPlainChroot(const lab_test::TemporaryFolder& folder,
                          const std::function<std::string()>& operation) {
  testing_support::RequireFullWay();
  return InChild([&] {
    const std::string outside = folder.Path().native();
    EnterMountNamespace();
    Checked(::mount("none", outside.c_str(), "tmpfs", 0, nullptr), "mount", outside);
    Checked(::mount("none", outside.c_str(), nullptr, MS_SHARED, nullptr), "share", outside);
    for (const char* name : {"root", "root/proc", "root/tmp", "root/sys"}) {
      std::filesystem::create_directory(folder / name);
    }
    const std::string proc = (folder / "root/proc").native();
    Checked(::mount("/proc", proc.c_str(), nullptr, MS_BIND | MS_REC, nullptr), "mount", proc);
    const std::string mounts = lab_test::ReadFile("/proc/self/mountinfo");
    std::string answer = InChild([&] {
      Checked(::chroot((folder / "root").c_str()), "chroot to", "the folder");
      Checked(::chdir("/tmp"), "enter", "/tmp");
      return operation();
    });
    if (lab_test::ReadFile("/proc/self/mountinfo") != mounts) answer += ", and mounts have spread";
    return answer;
  });
}

TEST(PlainChroot, IsGoodEnoughForRoot) {
  const lab_test::TemporaryFolder folder;
  EXPECT_EQ(InPlainChroot(folder, [] { return WhyNotPossible().value_or("possible"); }), "possible");
}

TEST(PlainChroot, KeepsMountsToThemselvesAndTheCurrentFolder) {
  const lab_test::TemporaryFolder folder;
  const std::string answer = InPlainChroot(folder, [] {
    EnterMountNamespace();
    const std::string current = std::filesystem::current_path();
    Checked(::mount("none", "/tmp", "tmpfs", 0, nullptr), "mount", "/tmp");
    std::ofstream("/tmp/file") << "x";
    return current + (std::filesystem::exists("/tmp/file") ? " has the file" : " lacks the file");
  });
  EXPECT_EQ(answer, "/tmp has the file");
}

TEST(PlainChroot, IsNamedToOrdinaryUsersWithoutAdviceThatDoesNotHelp) {
  if (!testing_support::MayBecomeOrdinaryUser()) GTEST_SKIP() << "needs root of the host";
  const lab_test::TemporaryFolder folder;
  const std::string answer = InPlainChroot(
      folder, [] { return AsOrdinaryUser([] { return WhyNotPossible().value_or("possible"); }); });
  EXPECT_THAT(answer, HasSubstr("Run it as root: in a chroot, container or sandbox others may not."));
  EXPECT_THAT(answer, Not(HasSubstr("max_user_namespaces")));
}

TEST(TemporaryFiles, AreThisProcessesOwn) {
  testing_support::RequireFullWay();
  const lab_test::TemporaryFolder folder;
  const std::string answer = InChild([&] {
    ::setenv("TMPDIR", folder.Path().c_str(), 1);
    KeepTemporaryFilesToThisProcess();
    const PrivateRoot root;
    // The parent of this process is in the namespace that it was in before.
    const std::string others = "/proc/" + std::to_string(::getppid()) + "/root" + root.Path().native();
    return std::string(std::filesystem::exists(root.Path()) ? "here, " : "not here, ") +
           (std::filesystem::exists(others) ? "there" : "not there") +
           (std::filesystem::is_empty(folder.Path()) ? "" : ", in the host's folder");
  });
  EXPECT_EQ(answer, "here, not there");
}

}  // namespace
}  // namespace lab
