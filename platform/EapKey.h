#pragma once

#include <utility>

#include "platform/Dot1xType.h"
#include "runtime/EthAddr.h"
#include "runtime/Text.h"

namespace Dot1x {

/// What the 802.1X module publishes when an authentication has completed. The default value means
/// that there is no key. A module must not publish type 2, which stands for a key that is
/// configured.
class EapKey : public Vesk::Value<EapKey> {
 public:
  EapKey() = default;
  EapKey(Dot1xType type, Vesk::String8 masterSessionKey, Vesk::String8 sessionId,
         Lumo::EthAddr firstAddr, Lumo::EthAddr secondAddr)
      : type_(std::move(type)),
        masterSessionKey_(std::move(masterSessionKey)),
        sessionId_(std::move(sessionId)),
        firstAddr_(std::move(firstAddr)),
        secondAddr_(std::move(secondAddr)) {}

  /// The kind of the key.
  Dot1xType const& type() const { return type_; }
  void typeIs(Dot1xType const& v) { type_ = v; }
  /// Keying material, encoded with `WardcodeLib::doEncodeKey`.
  Vesk::String8 const& masterSessionKey() const { return masterSessionKey_; }
  void masterSessionKeyIs(Vesk::String8 const& v) { masterSessionKey_ = v; }
  /// EAP session identifier, in hexadecimal.
  Vesk::String8 const& sessionId() const { return sessionId_; }
  void sessionIdIs(Vesk::String8 const& v) { sessionId_ = v; }
  /// One end of the link.
  Lumo::EthAddr const& firstAddr() const { return firstAddr_; }
  void firstAddrIs(Lumo::EthAddr const& v) { firstAddr_ = v; }
  /// The other end of the link.
  Lumo::EthAddr const& secondAddr() const { return secondAddr_; }
  void secondAddrIs(Lumo::EthAddr const& v) { secondAddr_ = v; }

  friend bool operator==(EapKey const&, EapKey const&) = default;

  static constexpr char const* kTypeName = "Dot1x::EapKey";
  template <class V>
  static void describe(V&& v) {
    v("type", &EapKey::type_);
    v("masterSessionKey", &EapKey::masterSessionKey_);
    v("sessionId", &EapKey::sessionId_);
    v("firstAddr", &EapKey::firstAddr_);
    v("secondAddr", &EapKey::secondAddr_);
  }

 private:
  Dot1xType type_ = 0;
  Vesk::String8 masterSessionKey_;
  Vesk::String8 sessionId_;
  Lumo::EthAddr firstAddr_;
  Lumo::EthAddr secondAddr_;
};

}  // namespace Dot1x
