#pragma once

#include <string>
#include <vector>

#include "host/config/ConfigFile.h"

namespace Linux {

/// What of this machine stands on an interface itself: "the address 192.0.2.1/24", "the default
/// route", "the route to 198.51.100.0/24", "the master br0". Not what the kernel gives every
/// interface. Nothing of an interface that isn't there. Throws `std::system_error` if the kernel
/// can't be asked.
std::vector<std::string> usesOf(std::string const& interface);

/// A sentence for each of these interfaces that is cut off from what stands on it: it must be
/// secure, and is used. Never throws: where the kernel can't be asked there is none.
std::vector<std::string> cutOffBy(std::vector<Macsecd::InterfaceConfig> const& interfaces);

/// The sentence for one interface, with what stands on it.
std::string cutOffText(Macsecd::InterfaceConfig const& interface,
                       std::vector<std::string> const& uses);

}  // namespace Linux
