#include "linux/process/Privileges.h"

#include <cap-ng.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <string>

#include "linux/process/SystemCalls.h"

namespace Linux {

namespace {

constexpr unsigned kKept[] = {CAP_NET_ADMIN, CAP_NET_RAW};
constexpr char const* kKeptNames[] = {"CAP_NET_ADMIN", "CAP_NET_RAW"};
constexpr int kLargeBlock = 128 * 1024;  // octets

using Macsecd::Fault;
using Macsecd::Result;

/// What has failed just now; there is nothing to do but to see why the kernel refuses it.
Fault failed(char const* what) { return {std::string(what) + ": " + std::strerror(errno), {}}; }

Result<> done(int result, char const* what) {
  if (result != 0) return failed(what);
  return {};
}

Result<> readOwn() { return done(capng_get_caps_process(), "reading the capabilities"); }

// What the process itself may do, of the two that it needs: no more than it has.
Result<> keepOnlyNetworking() {
  if (auto read = readOwn(); !read) return read;
  bool isPermitted[std::size(kKept)];
  for (size_t i = 0; i < std::size(kKept); ++i) {
    isPermitted[i] = capng_have_capability(CAPNG_PERMITTED, kKept[i]) != 0;
  }
  auto const both = static_cast<capng_type_t>(CAPNG_EFFECTIVE | CAPNG_PERMITTED);
  capng_clear(CAPNG_SELECT_CAPS);
  for (size_t i = 0; i < std::size(kKept); ++i) {
    if (isPermitted[i]) capng_update(CAPNG_ADD, both, kKept[i]);
  }
  return done(capng_apply(CAPNG_SELECT_CAPS), "dropping capabilities");
}

// The bounding set takes CAP_SETPCAP to change, and the library complains to the log of the machine
// when it tries without. A service manager that gave none has limited the set itself.
Result<> limitBounds() {
  if (auto read = readOwn(); !read) return read;
  if (capng_have_capability(CAPNG_EFFECTIVE, CAP_SETPCAP) == 0) return {};
  capng_clear(CAPNG_SELECT_BOUNDS);
  for (unsigned const capability : kKept) {
    capng_update(CAPNG_ADD, CAPNG_BOUNDING_SET, capability);
  }
  capng_apply(CAPNG_SELECT_BOUNDS);
  return {};
}

// What any program could come by that it starts. Without the capability to do so it has no way to
// start one with more either, by the flag that is set after.
Result<> limitSuccessors() {
  prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
  if (auto limited = limitBounds(); !limited) return limited;
  return done(prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), "giving up new privileges");
}

Result<> refuseCoreDumps() {
  rlimit const none{0, 0};
  return done(setrlimit(RLIMIT_CORE, &none), "turning core dumps off");
}

Result<> refuseTracing() { return done(prctl(PR_SET_DUMPABLE, 0), "turning core dumps off"); }

}  // namespace

Result<> checkPrivileges() {
  if (auto read = readOwn(); !read) return read;
  std::string missing;
  for (size_t i = 0; i < std::size(kKept); ++i) {
    if (capng_have_capability(CAPNG_EFFECTIVE, kKept[i]) != 0) continue;
    missing += (missing.empty() ? "" : " and ") + std::string(kKeptNames[i]);
  }
  if (missing.empty()) return {};
  return Fault{"this process lacks " + missing + ", without which no interface can be secured",
               "run it as root, or as the service"};
}

Result<> dropPrivileges() {
  for (auto const step :
       {refuseCoreDumps, limitSuccessors, keepOnlyNetworking, refuseTracing, refuseSystemCalls}) {
    if (auto done = step(); !done) return done;
  }
  return {};
}

// Under a limit, memory that is asked for later could be refused for being locked. What is locked
// is taken from the whole machine: a large block has pages of its own, and goes back when it is
// released, however large the ones before it were (mallopt(3), "dynamic").
Result<> lockMemory() {
  mallopt(M_MMAP_THRESHOLD, kLargeBlock);
  mallopt(M_TRIM_THRESHOLD, kLargeBlock);
  constexpr char const* kRemedy = "set LimitMEMLOCK=infinity, or turn swap off";
  rlimit const unlimited{RLIM_INFINITY, RLIM_INFINITY};
  rlimit present{};
  if (setrlimit(RLIMIT_MEMLOCK, &unlimited) != 0 &&
      (getrlimit(RLIMIT_MEMLOCK, &present) != 0 || present.rlim_max != RLIM_INFINITY)) {
    return Fault{"the limit of locked memory is low", kRemedy};
  }
  if (mlockall(MCL_CURRENT | MCL_FUTURE | MCL_ONFAULT) == 0) return {};
  return Fault{std::strerror(errno), kRemedy};
}

}  // namespace Linux
