#include <arpa/inet.h>
#include <endian.h>
#include <linux/if_macsec.h>
#include <linux/netlink.h>
#include <netlink/genl/genl.h>

#include "linux/kernel/MacsecNetlink.h"

namespace Linux {

template <class Fill>
KernelAnswer MacsecNetlink::request(uint8_t command, int index, Fill fill) {
  if (auto answer = present(); !answer) return answer;
  NetlinkMessage message;
  genlmsg_put(message.get(), NL_AUTO_PORT, NL_AUTO_SEQ, family_, 0, 0, command,
              MACSEC_GENL_VERSION);
  message.u32(MACSEC_ATTR_IFINDEX, static_cast<uint32_t>(index));
  fill(message);
  return checked(generic_.ask(message));
}

KernelAnswer MacsecNetlink::rxScRequest(uint8_t command, int index, SciNumber sci) {
  return request(command, index, [&](NetlinkMessage& message) {
    message.nest(MACSEC_ATTR_RXSC_CONFIG, [&] {
      message.u64(MACSEC_RXSC_ATTR_SCI, htobe64(sci));
      if (command == MACSEC_CMD_ADD_RXSC) message.u8(MACSEC_RXSC_ATTR_ACTIVE, 1);
    });
  });
}

KernelAnswer MacsecNetlink::rxScAdd(int index, SciNumber sci) {
  return rxScRequest(MACSEC_CMD_ADD_RXSC, index, sci);
}

KernelAnswer MacsecNetlink::rxScDel(int index, SciNumber sci) {
  return rxScRequest(MACSEC_CMD_DEL_RXSC, index, sci);
}

template <class Fill>
KernelAnswer MacsecNetlink::saRequest(uint8_t onTx, uint8_t onRx, SaPlace const& place, Fill fill) {
  return request(place.rxSci ? onRx : onTx, place.index, [&](NetlinkMessage& message) {
    if (place.rxSci) {
      message.nest(MACSEC_ATTR_RXSC_CONFIG,
                   [&] { message.u64(MACSEC_RXSC_ATTR_SCI, htobe64(*place.rxSci)); });
    }
    message.nest(MACSEC_ATTR_SA_CONFIG, [&] {
      message.u8(MACSEC_SA_ATTR_AN, place.an);
      fill(message);
    });
  });
}

// The packet number goes in the machine's order, the SSCI in network order.
KernelAnswer MacsecNetlink::saAdd(SaPlace const& place, NewSa const& sa) {
  return saRequest(MACSEC_CMD_ADD_TXSA, MACSEC_CMD_ADD_RXSA, place, [&](NetlinkMessage& message) {
    message.u64(MACSEC_SA_ATTR_PN, sa.packetNumber);
    message.octets(MACSEC_SA_ATTR_KEYID, sa.keyId);
    message.octets(MACSEC_SA_ATTR_KEY, sa.key);
    message.u32(MACSEC_SA_ATTR_SSCI, htonl(sa.ssci));
    message.octets(MACSEC_SA_ATTR_SALT, sa.salt);
    message.u8(MACSEC_SA_ATTR_ACTIVE, 1);
  });
}

KernelAnswer MacsecNetlink::saOnIs(SaPlace const& place, bool on) {
  return saRequest(MACSEC_CMD_UPD_TXSA, MACSEC_CMD_UPD_RXSA, place,
                   [&](NetlinkMessage& message) { message.u8(MACSEC_SA_ATTR_ACTIVE, on); });
}

KernelAnswer MacsecNetlink::packetNumberIs(SaPlace const& place, uint64_t packetNumber) {
  return saRequest(MACSEC_CMD_UPD_TXSA, MACSEC_CMD_UPD_RXSA, place,
                   [&](NetlinkMessage& message) { message.u64(MACSEC_SA_ATTR_PN, packetNumber); });
}

KernelAnswer MacsecNetlink::saDel(SaPlace const& place) {
  return saRequest(MACSEC_CMD_DEL_TXSA, MACSEC_CMD_DEL_RXSA, place, [](NetlinkMessage&) {});
}

}  // namespace Linux
