#include "linux/net/EapolFilter.h"

#include <linux/filter.h>
#include <linux/if_packet.h>
#include <sys/socket.h>

#include <array>

#include "model/EapolType.h"
#include "model/MacsecConstants.h"

namespace Linux {

namespace {

// Where the kernel keeps what it knows of a frame beside its octets.
constexpr uint32_t ancillary(int field) { return static_cast<uint32_t>(SKF_AD_OFF + field); }

constexpr sock_filter load(uint16_t size, uint32_t from) {
  return {static_cast<uint16_t>(BPF_LD | size | BPF_ABS), 0, 0, from};
}

/// Goes on if the value compares so, otherwise skips `skip` instructions.
constexpr sock_filter unless(uint16_t compare, uint32_t value, uint8_t skip) {
  return {static_cast<uint16_t>(BPF_JMP | compare | BPF_K), 0, skip, value};
}

/// Skips `skip` instructions if the value is this.
constexpr sock_filter skipIf(uint32_t value, uint8_t skip) {
  return {BPF_JMP | BPF_JEQ | BPF_K, skip, 0, value};
}

constexpr uint32_t kEtherType = 12;
constexpr uint32_t kPacketType = 15;
constexpr uint32_t kVlanBits = 0xfff;

// The value of a tag is told only where there is one: a kernel may still hold that of a tag which
// it has taken away.
std::array<sock_filter, 13> const kProgram = {{
    load(BPF_H, kEtherType),
    unless(BPF_JEQ, Macsec::MacsecConstants::eapolEthType, 10),
    load(BPF_B, kPacketType),
    unless(BPF_JEQ, Macsec::EapolType::eapMka, 8),
    load(BPF_W, ancillary(SKF_AD_VLAN_TAG_PRESENT)),
    skipIf(0, 3),
    load(BPF_W, ancillary(SKF_AD_VLAN_TAG)),
    {BPF_ALU | BPF_AND | BPF_K, 0, 0, kVlanBits},
    unless(BPF_JEQ, 0, 3),
    load(BPF_W, ancillary(SKF_AD_PKTTYPE)),
    {BPF_JMP | BPF_JGT | BPF_K, 1, 0, PACKET_MULTICAST},
    {BPF_RET | BPF_K, 0, 0, UINT32_MAX},
    {BPF_RET | BPF_K, 0, 0, 0},
}};

}  // namespace

bool attachEapolFilter(int socket) {
  sock_fprog const program{static_cast<unsigned short>(kProgram.size()),
                           const_cast<sock_filter*>(kProgram.data())};
  return setsockopt(socket, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) == 0;
}

}  // namespace Linux
