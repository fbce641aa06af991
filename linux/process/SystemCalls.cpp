#include "linux/process/SystemCalls.h"

#include <sched.h>
#include <seccomp.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

namespace Linux {

namespace {

constexpr int kRefused[] = {
    SCMP_SYS(execve),
    SCMP_SYS(execveat),
    SCMP_SYS(process_vm_readv),
    SCMP_SYS(process_vm_writev),
    SCMP_SYS(pidfd_getfd),
    SCMP_SYS(setns),
    SCMP_SYS(unshare),
    SCMP_SYS(mount),
    SCMP_SYS(umount2),
    SCMP_SYS(pivot_root),
    SCMP_SYS(chroot),
    SCMP_SYS(init_module),
    SCMP_SYS(finit_module),
    SCMP_SYS(delete_module),
    SCMP_SYS(kexec_load),
    SCMP_SYS(kexec_file_load),
    SCMP_SYS(bpf),
    SCMP_SYS(perf_event_open),
    SCMP_SYS(userfaultfd),
    SCMP_SYS(io_uring_setup),
    SCMP_SYS(add_key),
    SCMP_SYS(request_key),
    SCMP_SYS(keyctl),
    SCMP_SYS(reboot),
    SCMP_SYS(swapon),
    SCMP_SYS(swapoff),
    SCMP_SYS(acct),
    SCMP_SYS(syslog),
    SCMP_SYS(settimeofday),
    SCMP_SYS(clock_settime),
    SCMP_SYS(personality),
#if !defined(__SANITIZE_ADDRESS__)  // which looks for leaks with it, at the end
    SCMP_SYS(ptrace),
#endif
};

// The flags of new namespaces that clone takes.
constexpr scmp_datum_t kNamespaces[] = {CLONE_NEWNS,  CLONE_NEWCGROUP, CLONE_NEWUTS, CLONE_NEWIPC,
                                        CLONE_NEWPID, CLONE_NEWNET,    CLONE_NEWUSER};
#if defined(__s390__)
constexpr unsigned kCloneFlagsAt = 1;
#else
constexpr unsigned kCloneFlagsAt = 0;
#endif

struct Release {
  void operator()(void* filter) const { seccomp_release(filter); }
};

/// The first error of several steps, as a negative number; 0 while there is none.
class Steps {
 public:
  void add(int result) {
    if (error_ == 0) error_ = result;
  }
  int error() const { return error_; }

 private:
  int error_ = 0;
};

// The flags of clone3 lie in memory, where no filter looks: it counts as a call that the kernel
// doesn't have, and the library takes clone instead.
void refuseNamespaces(void* filter, uint32_t refusal, Steps& steps) {
  for (scmp_datum_t const flag : kNamespaces) {
    scmp_arg_cmp const isSet{kCloneFlagsAt, SCMP_CMP_MASKED_EQ, flag, flag};
    steps.add(seccomp_rule_add_array(filter, refusal, SCMP_SYS(clone), 1, &isSet));
  }
  steps.add(seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0));
}

}  // namespace

// The calls of another machine or of another way to call the same kernel are refused as a whole.
Macsecd::Result<> refuseSystemCalls() {
  std::unique_ptr<void, Release> const filter(seccomp_init(SCMP_ACT_ALLOW));
  if (!filter) throw std::bad_alloc();
  uint32_t const refusal = SCMP_ACT_ERRNO(EPERM);
  Steps steps;
  steps.add(seccomp_attr_set(filter.get(), SCMP_FLTATR_ACT_BADARCH, refusal));
  steps.add(seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_NNP, 0));
  for (int const number : kRefused) steps.add(seccomp_rule_add(filter.get(), refusal, number, 0));
  refuseNamespaces(filter.get(), refusal, steps);
  if (steps.error() == 0) steps.add(seccomp_load(filter.get()));
  if (steps.error() == 0) return {};
  return Macsecd::Fault{std::string("filter of system calls: ") + std::strerror(-steps.error()),
                        {}};
}

}  // namespace Linux
