#include "linux/kernel/SaKey.h"

#include <algorithm>

#include "platform/WardcodeLib.h"

namespace Linux {

namespace {

constexpr size_t kMemberIdentifier = 12;

Macsecd::Fault wrong(char const* what) { return {what, kNextKey}; }

uint32_t numberOf(std::span<uint8_t const> octets) {
  uint32_t number = 0;
  for (uint8_t const octet : octets) number = number << 8 | octet;
  return number;
}

}  // namespace

Macsecd::Result<> openSak(Macsec::Sak const& sak, Macsec::CipherSuite suite, SaKey& out) {
  if (sak.key().empty()) return wrong("it is empty");
  if (!keyIdOf(sak)) return wrong("its member identifier isn't 24 hexadecimal digits");
  if (!Macsec::hexDecode(sak.salt().view(), out.salt)) {
    return wrong("its salt isn't 24 hexadecimal digits");
  }
  Vesk::String8 const clear = WardcodeLib::doDecodeKey(sak.key());
  if (clear.empty() || !out.key.hexIs(clear.view())) return wrong("it doesn't decode");
  if (out.key.size() * 8 != static_cast<size_t>(suite))
    return wrong("its length isn't the suite's");
  return {};
}

std::optional<KeyId> keyIdOf(Macsec::Sak const& sak) {
  KeyId id;
  if (!Macsec::hexDecode(sak.keyMsgId().view(), std::span(id).first(kMemberIdentifier))) return {};
  for (size_t i = 0; i < 4; ++i) {
    id[kMemberIdentifier + i] = static_cast<uint8_t>(sak.keyNum() >> (24 - 8 * i));
  }
  return id;
}

Macsecd::SakId sakIdOf(KeyId const& keyId) {
  std::array<uint8_t, kMemberIdentifier> server;
  std::copy_n(keyId.begin(), server.size(), server.begin());
  return {Macsec::MemberIdentifier(server), numberOf(std::span(keyId).last<4>())};
}

SciNumber sciNumber(Macsec::Sci const& sci) {
  SciNumber number = 0;
  for (uint8_t const octet : sci.addr().bytes()) number = number << 8 | octet;
  return number << 16 | sci.portNum();
}

}  // namespace Linux
