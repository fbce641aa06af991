#pragma once

#include <string>
#include <string_view>

namespace Macsecd {

/// Longest name of a network device in octets.
inline constexpr size_t maxDeviceName = 15;

/// The name of the MACsec device above an interface for which the configuration names none: the
/// interface's with "-sec" behind it, and a "_" for each dot, since ifupdown takes a name with a
/// dot for a VLAN's.
///
///     eth0 -> eth0-sec      eth0.100 -> eth0_100-sec      enx001122334455 -> enx0-bq1ofe-sec
///
/// One that would be too long is cut to four octets, and six letters or digits are added that
/// depend on the whole name. So is one that has a "_" of its own. Two interfaces have two names,
/// but for one in a billion pairs of those.
std::string defaultDeviceName(std::string_view interface);

/// The default of former versions: the interface's with ".sec" behind it. Devices may still bear
/// it.
std::string formerDeviceName(std::string_view interface);

}  // namespace Macsecd
