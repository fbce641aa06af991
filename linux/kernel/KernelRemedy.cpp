#include "linux/kernel/KernelRemedy.h"

#include <fmt/format.h>

#include <cerrno>

namespace Linux {

namespace {

constexpr char kTriedAgain[] =
    "it is tried again by itself; if it stays so, see what the kernel logs ('dmesg')";

// The kernel lets one program alone have the frames of an interface.
std::string remedyForBusy(RefusedRequest const& request) {
  Master const& master = request.master;
  if (master.name.empty()) {
    return fmt::format(
        "another MACsec device on {} has the same SCI: find it with 'ip macsec "
        "show', and delete it with 'ip link delete'",
        request.interface);
  }
  if (master.kind == "bond" || master.kind == "team") {
    return fmt::format(
        "{0} is a member of the {1} {2}: configure {2} in its place, or take {0} out "
        "of it ('ip link set {0} nomaster')",
        request.interface, master.kind, master.name);
  }
  return fmt::format(
      "{0} is a member of the {1} {2}: take it out ('ip link set {0} nomaster'), "
      "and put {3} into {2} in its place",
      request.interface, master.kind.empty() ? "device" : master.kind, master.name, request.device);
}

std::string remedyForNewDevice(KernelAnswer const& answer, RefusedRequest const& request) {
  switch (answer.error) {
    case EBUSY:
      return remedyForBusy(request);
    case EEXIST:
      return fmt::format(
          "another device has the name {0}: rename that one, or give {1} another "
          "'device' in the configuration",
          request.device, request.interface);
    case EOPNOTSUPP:
      return "load the kernel's MACsec: 'modprobe macsec'";
    case EINVAL:
      return "use a kernel with extended packet numbers: Linux 5.7 or later";
    case ENODEV:
      return fmt::format("wait until {} is there again", request.interface);
    default:
      return kTriedAgain;
  }
}

}  // namespace

std::string remedyOf(KernelAnswer const& answer, RefusedRequest const& request) {
  switch (answer.error) {
    case EPERM:
    case EACCES:
      return "run macsecd as root, or give it the capability CAP_NET_ADMIN";
    case ENOMEM:
    case ENOBUFS:
      return "free memory: the kernel has none left";
    default:
      break;
  }
  if (request.isNewDevice) return remedyForNewDevice(answer, request);
  if (answer.error == EEXIST) {
    return fmt::format(
        "another MACsec device on {} receives from the same peer: find it with 'ip "
        "macsec show', and delete it with 'ip link delete'",
        request.interface);
  }
  if (answer.error == ENOENT) {
    return "load what the kernel encrypts with: 'modprobe gcm'; if it is there, it is tried again";
  }
  return kTriedAgain;
}

}  // namespace Linux
