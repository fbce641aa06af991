#pragma once

#include <cstdint>

#include "model/DataPath.h"
#include "model/Keys.h"
#include "model/Sci.h"
#include "runtime/Describe.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// What the controlled port asks of the data path of one interface: the record that the hardware
/// follows.
class CpStatus final : public Vesk::DescribedEntity<CpStatus> {
 public:
  static constexpr bool kIsHot = true;
  enum Attribute : uint8_t {
    kProtectFrames,
    kReplayProtect,
    kValidateFrames,
    kConfidentialityOffset,
    kControlledPortEnabled,
    kPortValid,
    kOldSakContext,
    kLatestSakContext,
    kTxSak,
    kRxSak,
    kRxLPN,
    kMySsci,
    kPeerSsci
  };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onProtectFrames() {}
    virtual void onReplayProtect() {}
    virtual void onValidateFrames() {}
    virtual void onConfidentialityOffset() {}
    virtual void onControlledPortEnabled() {}
    virtual void onPortValid() {}
    virtual void onOldSakContext() {}
    virtual void onLatestSakContext() {}
    virtual void onTxSak() {}
    virtual void onRxSak(AssociationNumber const&) {}
    virtual void onRxSak() {}
    virtual void onRxSakImmediate() {}
    virtual void onRxLPN(AssociationNumber const&) {}
    virtual void onRxLPN() {}
    virtual void onRxLPNImmediate() {}
    virtual void onMySsci() {}
    virtual void onPeerSsci() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kProtectFrames, &R::onProtectFrames);
      v.value(kReplayProtect, &R::onReplayProtect);
      v.value(kValidateFrames, &R::onValidateFrames);
      v.value(kConfidentialityOffset, &R::onConfidentialityOffset);
      v.value(kControlledPortEnabled, &R::onControlledPortEnabled);
      v.value(kPortValid, &R::onPortValid);
      v.value(kOldSakContext, &R::onOldSakContext);
      v.value(kLatestSakContext, &R::onLatestSakContext);
      v.value(kTxSak, &R::onTxSak);
      v.template collection<AssociationNumber>(kRxSak, &R::onRxSak, &R::onRxSakImmediate);
      v.template collection<AssociationNumber>(kRxLPN, &R::onRxLPN, &R::onRxLPNImmediate);
      v.value(kMySsci, &R::onMySsci);
      v.value(kPeerSsci, &R::onPeerSsci);
    }
  };
  class Notifiee : public NotifieeConst {};

  using RxSakMap = Vesk::ValueMap<AssociationNumber, Sak>;
  using RxLPNMap = Vesk::ValueMap<AssociationNumber, RxLPN>;

  static constexpr bool controlledPortEnabledDefault = false;

  CpStatus(Lumo::IntfId intfId, MacsecParams const& macsecParams)
      : DescribedEntity(intfId.stringValue()), intfId_(intfId), macsecParams_(macsecParams) {}
  static Vesk::Ptr<CpStatus> CpStatusIs(Lumo::IntfId intfId, MacsecParams const& macsecParams) {
    return Vesk::makeActive<CpStatus>(intfId, macsecParams);
  }

  /// The key of the collection that holds this.
  Lumo::IntfId fwkKey() const { return intfId_; }

  /// The interface.
  Lumo::IntfId intfId() const { return intfId_; }
  /// Copied from `IntfStatus` when the port starts.
  MacsecParams const& macsecParams() const { return macsecParams_; }
  /// Data path control, at its default throughout.
  bool protectFrames() const { return protectFrames_; }
  void protectFramesIs(bool v) { write<kProtectFrames>(protectFrames_, v); }
  /// Data path control, at its default throughout.
  uint32_t replayProtect() const { return replayProtect_; }
  void replayProtectIs(uint32_t v) { write<kReplayProtect>(replayProtect_, v); }
  /// Data path control, at its default throughout.
  bool validateFrames() const { return validateFrames_; }
  void validateFramesIs(bool v) { write<kValidateFrames>(validateFrames_, v); }
  /// Data path control, at its default throughout.
  uint8_t confidentialityOffset() const { return confidentialityOffset_; }
  void confidentialityOffsetIs(uint8_t v) {
    write<kConfidentialityOffset>(confidentialityOffset_, v);
  }
  /// Cipher suite, of `macsecParams`.
  CipherSuite cipher() const { return macsecParams_.cipher(); }
  /// SCI inclusion, of `macsecParams`.
  bool includeSci() const { return macsecParams_.includeSci(); }
  /// Traffic may pass through the controlled port.
  bool controlledPortEnabled() const { return controlledPortEnabled_; }
  void controlledPortEnabledIs(bool v) { write<kControlledPortEnabled>(controlledPortEnabled_, v); }
  /// Reserved flag of the data path.
  bool portValid() const { return portValid_; }
  void portValidIs(bool v) { write<kPortValid>(portValid_, v); }
  /// The key in steady use, or being retired.
  SakContext const& oldSakContext() const { return oldSakContext_; }
  void oldSakContextIs(SakContext const& v) { write<kOldSakContext>(oldSakContext_, v); }
  /// The key being brought in.
  SakContext const& latestSakContext() const { return latestSakContext_; }
  void latestSakContextIs(SakContext const& v) { write<kLatestSakContext>(latestSakContext_, v); }
  /// The SAK for transmit; the default means none.
  Sak const& txSak() const { return txSak_; }
  void txSakIs(Sak const& v) { write<kTxSak>(txSak_, v); }

  /// SAKs for receive, at most one for each association number.
  RxSakMap const& rxSak() const { return rxSak_; }
  Sak const* rxSak(AssociationNumber key) const { return rxSak_[key]; }
  void rxSakIs(Sak const& v) { valueIs<kRxSak>(rxSak_, v.an(), v); }
  void rxSakDel(AssociationNumber key) { valueDel<kRxSak>(rxSak_, key); }
  void rxSakDelAll() { valueDelAll<kRxSak>(rxSak_); }

  /// Lowest acceptable packet number of each receive SA.
  RxLPNMap const& rxLPN() const { return rxLPN_; }
  RxLPN const* rxLPN(AssociationNumber key) const { return rxLPN_[key]; }
  void rxLPNIs(RxLPN const& v) { valueIs<kRxLPN>(rxLPN_, v.an(), v); }
  void rxLPNDel(AssociationNumber key) { valueDel<kRxLPN>(rxLPN_, key); }
  void rxLPNDelAll() { valueDelAll<kRxLPN>(rxLPN_); }

  /// Own short SCI.
  Ssci const& mySsci() const { return mySsci_; }
  void mySsciIs(Ssci const& v) { write<kMySsci>(mySsci_, v); }
  /// Peer's short SCI.
  Ssci const& peerSsci() const { return peerSsci_; }
  void peerSsciIs(Ssci const& v) { write<kPeerSsci>(peerSsci_, v); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("intfId", &CpStatus::intfId_);
    v.parameter("macsecParams", &CpStatus::macsecParams_);
    v.value("protectFrames", &CpStatus::protectFrames_, &CpStatus::protectFramesIs);
    v.value("replayProtect", &CpStatus::replayProtect_, &CpStatus::replayProtectIs);
    v.value("validateFrames", &CpStatus::validateFrames_, &CpStatus::validateFramesIs);
    v.value("confidentialityOffset", &CpStatus::confidentialityOffset_,
            &CpStatus::confidentialityOffsetIs);
    v.derived("cipher", &CpStatus::cipher);
    v.derived("includeSci", &CpStatus::includeSci);
    v.value("controlledPortEnabled", &CpStatus::controlledPortEnabled_,
            &CpStatus::controlledPortEnabledIs);
    v.value("portValid", &CpStatus::portValid_, &CpStatus::portValidIs);
    v.value("oldSakContext", &CpStatus::oldSakContext_, &CpStatus::oldSakContextIs);
    v.value("latestSakContext", &CpStatus::latestSakContext_, &CpStatus::latestSakContextIs);
    v.value("txSak", &CpStatus::txSak_, &CpStatus::txSakIs);
    v.values("rxSak", &CpStatus::rxSak_, &CpStatus::rxSakIs, &Sak::an);
    v.values("rxLPN", &CpStatus::rxLPN_, &CpStatus::rxLPNIs, &RxLPN::an);
    v.value("mySsci", &CpStatus::mySsci_, &CpStatus::mySsciIs);
    v.value("peerSsci", &CpStatus::peerSsci_, &CpStatus::peerSsciIs);
  }

 private:
  // What each MKPDU looks at lies together, in front.
  Lumo::IntfId const intfId_;
  MacsecParams const macsecParams_;
  Ssci peerSsci_;
  SakContext oldSakContext_;
  SakContext latestSakContext_;
  bool protectFrames_ = false;
  uint32_t replayProtect_ = 0;
  bool validateFrames_ = false;
  uint8_t confidentialityOffset_ = 0;
  bool controlledPortEnabled_ = controlledPortEnabledDefault;
  bool portValid_ = false;
  Sak txSak_;
  RxSakMap rxSak_;
  RxLPNMap rxLPN_;
  Ssci mySsci_;
};

}  // namespace Macsec
