#include <algorithm>
#include <string>

#include "config/ConfigSmReactors.h"
#include "platform/KeyDerivation.h"
#include "platform/WardcodeLib.h"
#include "runtime/Assert.h"
#include "runtime/Trace.h"

// Primary keys that come from a completed 802.1X authentication.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::Config");

// The CKN's length in bits doesn't follow the cipher suite.
constexpr int kCknBits = 128;

// Both ends build the same text: the lower address first, as 24 hexadecimal digits.
Vesk::String8 addressContext(Lumo::EthAddr const& a, Lumo::EthAddr const& b) {
  std::string text((std::min(a, b).stringValue() + std::max(a, b).stringValue()).view());
  std::erase(text, ':');
  return text;
}

// Hexadecimal digits of a key; 0 for a suite that isn't ours.
size_t keyDigits(CipherSuite cipher) {
  switch (cipher) {
    case CipherSuite::gcmAesXpn128:
      return 32;
    case CipherSuite::gcmAesXpn256:
      return 64;
    default:
      return 0;
  }
}

}  // namespace

void ConfigSm::handleEapKeyStatus() {
  VESK_TRACE(8, "");
  if (!eapKeyStatus()) return;
  for (auto& entry : eapKeyStatus()->key()) handleEapKeyStatus(entry.fwkKey());
}

void ConfigSm::handleEapKeyStatus(Lumo::IntfId intfId) {
  VESK_TRACE(8, ": IntfId ", intfId);
  auto const intfStatus = status()->intfStatus(intfId);
  if (!intfStatus) {
    VESK_TRACE(3, ": No intfStatus found. Ignoring EAP key status update on ", intfId);
    return;
  }
  auto const profile = config()->profile(intfStatus->profileName());
  if (!profile || !profile->dot1xEnabled()) {
    VESK_TRACE(3, ": Profile ", intfStatus->profileName(),
               " is not configured for Dot1x. Ignoring EAP key status update on ", intfId);
    return;
  }
  Dot1x::EapKey const* const published = eapKeyStatus() ? eapKeyStatus()->key(intfId) : nullptr;
  Dot1x::EapKey const eapKey = published ? *published : Dot1x::EapKey();
  if (eapKey == Dot1x::EapKey()) {
    VESK_TRACE(3, ": Ignoring EAP key deletion on ", intfId);
    return;
  }
  Cak const cak = deriveKey(intfStatus->cipher(), eapKey);
  if (cak == Cak()) return;
  intfStatus->dot1xTypeIs(eapKey.type());
  if (keysDiffer(intfStatus->key(), cak)) intfStatus->keyIs(cak);
}

Cak ConfigSm::deriveKey(CipherSuite cipher, Dot1x::EapKey const& eapKey) const {
  VESK_TRACE(8, "");
  if (eapKey.firstAddr() == eapKey.secondAddr()) {
    VESK_TRACE(3, " Self and peer MAC address are the same. Key derivation failed.");
    return Cak();
  }
  Vesk::String8 const addresses = addressContext(eapKey.firstAddr(), eapKey.secondAddr());
  size_t const digits = keyDigits(cipher);
  VESK_ASSERT_NAMED(digits != 0, "0 && \"Unknown cipher\"");
  Vesk::String8 const decoded = WardcodeLib::doDecodeKey(eapKey.masterSessionKey());
  Vesk::String8 const key = Vesk::String8::secret(decoded.view().substr(0, digits));
  int const bits = static_cast<int>(cipher);
  Vesk::String8 cak;
  deriveCak(bytesOf(key), bytesOf(addresses), bits, cak);
  Vesk::String8 ckn;
  deriveCkn(bytesOf(key), bits, bytesOf(eapKey.sessionId() + addresses), kCknBits, ckn);
  if (cak.empty() || ckn.empty()) {
    VESK_TRACE(3, " The 802.1X module's key isn't usable. Key derivation failed.");
    return Cak();
  }
  return Cak(ckn, WardcodeLib::doEncodeKey(cak));
}

// A derived key ends with the link; a configured one stays.
void ConfigSm::EthIntfStatusDirReactor::EthIntfStatusReactor::handleLinkStatus() {
  Lumo::IntfId const intfId = fwkKey();
  VESK_TRACE(8, ": IntfId ", intfId);
  if (!owner().initialized_) {
    VESK_TRACE(3, ": ConfigSm not initialized. Bailing.");
    return;
  }
  auto const intfStatus = owner().status()->intfStatus(intfId);
  if (!intfStatus || notifier()->linkStatus() == Interface::linkUp) return;
  if (intfStatus->dot1xType() == IntfStatus::dot1xTypeDefault) return;
  VESK_TRACE(3, ": Deleting Dot1x derived primary key on ", intfId);
  intfStatus->keyIs(Cak());
}

}  // namespace Macsec
