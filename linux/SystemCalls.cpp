#include "linux/SystemCalls.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <system_error>
#include <vector>

namespace Linux {

namespace {

#if defined(__x86_64__)
constexpr uint32_t kMachine = AUDIT_ARCH_X86_64;
// From here on the numbers are those of another way to call the same kernel.
constexpr uint32_t kForeignFrom = 0x40000000;
#elif defined(__aarch64__)
constexpr uint32_t kMachine = AUDIT_ARCH_AARCH64;
constexpr uint32_t kForeignFrom = UINT32_MAX;
#else
#error "add the machine's AUDIT_ARCH"
#endif

constexpr uint32_t kRefused[] = {
    SYS_execve,
    SYS_execveat,
    SYS_process_vm_readv,
    SYS_process_vm_writev,
    SYS_pidfd_getfd,
    SYS_setns,
    SYS_unshare,
    SYS_mount,
    SYS_umount2,
    SYS_pivot_root,
    SYS_chroot,
    SYS_init_module,
    SYS_finit_module,
    SYS_delete_module,
    SYS_kexec_load,
    SYS_kexec_file_load,
    SYS_bpf,
    SYS_perf_event_open,
    SYS_userfaultfd,
    SYS_io_uring_setup,
    SYS_add_key,
    SYS_request_key,
    SYS_keyctl,
    SYS_reboot,
    SYS_swapon,
    SYS_swapoff,
    SYS_acct,
    SYS_syslog,
    SYS_settimeofday,
    SYS_clock_settime,
    SYS_personality,
#if !defined(__SANITIZE_ADDRESS__)  // which looks for leaks with it, at the end
    SYS_ptrace,
#endif
};

constexpr sock_filter load(size_t from) {
  return {BPF_LD | BPF_W | BPF_ABS, 0, 0, static_cast<uint32_t>(from)};
}
constexpr sock_filter verdict(uint32_t value) { return {BPF_RET | BPF_K, 0, 0, value}; }

// A verdict of refusal follows each test; who doesn't meet it skips that.
void refuseIf(std::vector<sock_filter>& program, uint16_t test, uint32_t value, bool met = true) {
  uint8_t const skipIfMet = met ? 0 : 1;
  uint8_t const skipOtherwise = met ? 1 : 0;
  program.push_back(
      {static_cast<uint16_t>(BPF_JMP | test | BPF_K), skipIfMet, skipOtherwise, value});
  program.push_back(verdict(SECCOMP_RET_ERRNO | EPERM));
}

std::vector<sock_filter> filter() {
  std::vector<sock_filter> program = {load(offsetof(seccomp_data, arch))};
  refuseIf(program, BPF_JEQ, kMachine, false);
  program.push_back(load(offsetof(seccomp_data, nr)));
  refuseIf(program, BPF_JGE, kForeignFrom);
  for (uint32_t const number : kRefused) refuseIf(program, BPF_JEQ, number);
  program.push_back(verdict(SECCOMP_RET_ALLOW));
  return program;
}

}  // namespace

void refuseSystemCalls() {
  std::vector<sock_filter> program = filter();
  sock_fprog const whole{static_cast<unsigned short>(program.size()), program.data()};
  if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &whole) == 0) return;
  throw std::system_error(errno, std::generic_category(), "filter of system calls");
}

}  // namespace Linux
