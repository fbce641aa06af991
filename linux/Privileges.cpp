#include "linux/Privileges.h"

#include <linux/capability.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <system_error>

#include "linux/SystemCalls.h"

namespace Linux {

namespace {

using Sets = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

constexpr uint32_t kKept = CAP_TO_MASK(CAP_NET_ADMIN) | CAP_TO_MASK(CAP_NET_RAW);

void checked(long result, char const* what) {
  if (result != 0) throw std::system_error(errno, std::generic_category(), what);
}

// What the process itself may do; both are among the first 32.
void keepOnlyNetworking() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  Sets sets{};
  checked(syscall(SYS_capget, &header, sets.data()), "reading the capabilities");
  sets[0].permitted &= kKept;
  sets[0].effective = sets[0].permitted;
  sets[0].inheritable = 0;
  sets[1] = {};
  checked(syscall(SYS_capset, &header, sets.data()), "dropping capabilities");
}

// What any program could come by that it starts. Without the capability to do so it has no way to
// start one with more either, by the flag that is set after.
void limitSuccessors() {
  prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
  for (unsigned long capability = 0; prctl(PR_CAPBSET_READ, capability) >= 0; ++capability) {
    bool const isKept = capability < 32 && (kKept >> capability & 1) != 0;
    if (!isKept) prctl(PR_CAPBSET_DROP, capability);
  }
  checked(prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), "giving up new privileges");
}

}  // namespace

void dropPrivileges() {
  rlimit const none{0, 0};
  checked(setrlimit(RLIMIT_CORE, &none), "turning core dumps off");
  limitSuccessors();
  keepOnlyNetworking();
  checked(prctl(PR_SET_DUMPABLE, 0), "turning core dumps off");
  refuseSystemCalls();
}

// Under a limit, memory that is asked for later could be refused for being locked.
std::optional<std::string> lockMemory() {
  rlimit const unlimited{RLIM_INFINITY, RLIM_INFINITY};
  rlimit present{};
  if (setrlimit(RLIMIT_MEMLOCK, &unlimited) != 0 &&
      (getrlimit(RLIMIT_MEMLOCK, &present) != 0 || present.rlim_max != RLIM_INFINITY)) {
    return "the limit of locked memory is low; set LimitMEMLOCK=infinity, or turn swap off";
  }
  if (mlockall(MCL_CURRENT | MCL_FUTURE | MCL_ONFAULT) == 0) return std::nullopt;
  return std::string(std::strerror(errno)) + "; set LimitMEMLOCK=infinity, or turn swap off";
}

}  // namespace Linux
