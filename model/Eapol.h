#pragma once

#include <cstddef>
#include <cstdint>

#include "model/EapolType.h"
#include "model/MacsecConstants.h"
#include "model/Overlay.h"
#include "runtime/EthAddr.h"
#include "runtime/NetValues.h"

namespace Macsec {

/// The Ethernet and EAPOL headers of an MKPDU (IEEE 802.1X-2010 11.3). Constructed as they are
/// sent, but for the source, the type and the length.
///
///     0         6         12        14        15          16        18
///     |   dst   |   src   | ethType | version | eapolType | bodyLen |
///
/// `bodyLen` counts the octets behind it. The type is a plain octet here, as any may come in.
class Eapol {
 public:
  Lumo::EthAddr const& dst() const { return dst_; }
  void dstIs(Lumo::EthAddr const& value) { dst_ = value; }
  Lumo::EthAddr const& src() const { return src_; }
  void srcIs(Lumo::EthAddr const& value) { src_ = value; }
  uint16_t ethType() const { return ethType_.value(); }
  void ethTypeIs(uint16_t value) { ethType_.valueIs(value); }
  uint8_t version() const { return version_.value(); }
  void versionIs(uint8_t value) { version_.valueIs(value); }
  uint8_t eapolType() const { return eapolType_.value(); }
  void eapolTypeIs(uint8_t value) { eapolType_.valueIs(value); }
  void eapolTypeIs(EapolType type) { eapolTypeIs(type.type()); }
  uint16_t bodyLen() const { return bodyLen_.value(); }
  void bodyLenIs(uint16_t value) { bodyLen_.valueIs(value); }

 private:
  static constexpr void checkLayout() {
    static_assert(offsetof(Eapol, dst_) == 0);
    static_assert(offsetof(Eapol, src_) == 6);
    static_assert(offsetof(Eapol, ethType_) == 12);
    static_assert(offsetof(Eapol, version_) == 14);
    static_assert(offsetof(Eapol, eapolType_) == 15);
    static_assert(offsetof(Eapol, bodyLen_) == 16);
  }

  Lumo::EthAddr dst_{{0x01, 0x80, 0xC2, 0x00, 0x00, 0x03}};
  Lumo::EthAddr src_;
  Lumo::NetU16 ethType_{MacsecConstants::eapolEthType};
  Lumo::NetU8 version_{MacsecConstants::eapolVersion};
  Lumo::NetU8 eapolType_;
  Lumo::NetU16 bodyLen_;
};

static_assert(isOverlay<Eapol, 18>);

}  // namespace Macsec
