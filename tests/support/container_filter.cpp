#include "tests/support/container_filter.h"

#include <sched.h>
#include <seccomp.h>
#include <sys/personality.h>

#include <array>
#include <cerrno>
#include <memory>
#include <stdexcept>

namespace testing_support {
namespace {

constexpr std::array kMounts{SCMP_SYS(mount),      SCMP_SYS(umount2), SCMP_SYS(open_tree),
                             SCMP_SYS(move_mount), SCMP_SYS(fsopen),  SCMP_SYS(fsconfig),
                             SCMP_SYS(fsmount),    SCMP_SYS(fspick),  SCMP_SYS(mount_setattr),
                             SCMP_SYS(pivot_root)};
constexpr std::array kPrivileged{
    SCMP_SYS(unshare),          SCMP_SYS(setns),   SCMP_SYS(bpf),         SCMP_SYS(perf_event_open),
    SCMP_SYS(quotactl),         SCMP_SYS(add_key), SCMP_SYS(keyctl),      SCMP_SYS(request_key),
    SCMP_SYS(sethostname),      SCMP_SYS(swapon),  SCMP_SYS(swapoff),     SCMP_SYS(reboot),
    SCMP_SYS(fanotify_init),    SCMP_SYS(acct),    SCMP_SYS(init_module), SCMP_SYS(userfaultfd),
    SCMP_SYS(open_by_handle_at)};
constexpr unsigned kNamespaces =
    CLONE_NEWNS | CLONE_NEWUTS | CLONE_NEWIPC | CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET | CLONE_NEWCGROUP;

void Check(int result) {
  if (result != 0) throw std::runtime_error("libseccomp refuses the filter");
}

/// Refuses a call that has one of these bits in its first argument.
void RefuseBits(scmp_filter_ctx filter, int call, unsigned bits) {
  for (unsigned bit = 1; bit != 0; bit <<= 1U) {
    if ((bits & bit) == 0) continue;
    Check(::seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), call, 1, SCMP_A0(SCMP_CMP_MASKED_EQ, bit, bit)));
  }
}

}  // namespace

void Refuse(Refused refused) {
  const std::unique_ptr<void, void (*)(scmp_filter_ctx)> filter(::seccomp_init(SCMP_ACT_ALLOW),
                                                                ::seccomp_release);
  if (!filter) throw std::runtime_error("libseccomp makes no filter");
  const bool are_mounts_alone = refused == Refused::MountsAlone;
  for (const int call : kMounts) {
    Check(::seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(are_mounts_alone ? EACCES : EPERM), call, 0));
  }
  if (!are_mounts_alone) {
    for (const int call : kPrivileged)
      Check(::seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(EPERM), call, 0));
    RefuseBits(filter.get(), SCMP_SYS(clone), kNamespaces);
    RefuseBits(filter.get(), SCMP_SYS(personality), ADDR_NO_RANDOMIZE);
    // Its flags are out of a filter's sight; the C library goes on with clone(2).
    Check(::seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0));
  }
  if (refused == Refused::AndChroot) {
    Check(::seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(EPERM), SCMP_SYS(chroot), 0));
  }
  Check(::seccomp_load(filter.get()));
}

}  // namespace testing_support
