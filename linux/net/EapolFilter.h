#pragma once

namespace Linux {

/// Has the kernel pass nothing to a packet socket but received MKPDUs: EtherType 0x888E, packet
/// type EAPOL-MKA, without a VLAN (a priority tag may be there), and nothing that is for another
/// station or goes out. False, with `errno`, if the kernel refuses.
bool attachEapolFilter(int socket);

}  // namespace Linux
