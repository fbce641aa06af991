#pragma once

#include <cstdint>
#include <utility>

#include "model/CipherSuite.h"
#include "model/Sci.h"
#include "runtime/Text.h"

namespace Macsec {

/// Decoded basic parameter set (IEEE 802.1X-2010, 11.11.1), also kept for each peer.
class BasicInfo : public Vesk::Value<BasicInfo> {
 public:
  BasicInfo() = default;
  BasicInfo(uint8_t keyServerPriority, bool keyServer, bool macsecDesired, uint8_t macsecCapability,
            Sci sci, Vesk::String8 msgId, uint32_t msgNum, Vesk::String8 ckn)
      : keyServerPriority_(keyServerPriority),
        keyServer_(keyServer),
        macsecDesired_(macsecDesired),
        macsecCapability_(macsecCapability),
        sci_(std::move(sci)),
        msgId_(std::move(msgId)),
        msgNum_(msgNum),
        ckn_(std::move(ckn)) {}

  /// The sender's key server priority, the lower the better.
  uint8_t keyServerPriority() const { return keyServerPriority_; }
  void keyServerPriorityIs(uint8_t v) { keyServerPriority_ = v; }
  /// The sender claims to be key server.
  bool keyServer() const { return keyServer_; }
  void keyServerIs(bool v) { keyServer_ = v; }
  /// The sender wants MACsec.
  bool macsecDesired() const { return macsecDesired_; }
  void macsecDesiredIs(bool v) { macsecDesired_ = v; }
  /// Capability, 2 bits on the wire.
  uint8_t macsecCapability() const { return macsecCapability_; }
  void macsecCapabilityIs(uint8_t v) { macsecCapability_ = v; }
  /// The sender's SCI.
  Sci const& sci() const { return sci_; }
  void sciIs(Sci const& v) { sci_ = v; }
  /// The sender's member identifier, 24 hexadecimal digits.
  Vesk::String8 const& msgId() const { return msgId_; }
  void msgIdIs(Vesk::String8 v) { msgId_ = std::move(v); }
  /// Message number.
  uint32_t msgNum() const { return msgNum_; }
  void msgNumIs(uint32_t v) { msgNum_ = v; }
  /// Name of the CAK that protects the message.
  Vesk::String8 const& ckn() const { return ckn_; }
  void cknIs(Vesk::String8 v) { ckn_ = std::move(v); }

  friend bool operator==(BasicInfo const&, BasicInfo const&) = default;

  static constexpr char const* kTypeName = "Macsec::BasicInfo";
  template <class V>
  static void describe(V&& v) {
    v("keyServerPriority", &BasicInfo::keyServerPriority_);
    v("keyServer", &BasicInfo::keyServer_);
    v("macsecDesired", &BasicInfo::macsecDesired_);
    v("macsecCapability", &BasicInfo::macsecCapability_);
    v("sci", &BasicInfo::sci_);
    v("msgId", &BasicInfo::msgId_);
    v("msgNum", &BasicInfo::msgNum_);
    v("ckn", &BasicInfo::ckn_);
  }

 private:
  uint8_t keyServerPriority_ = 0;
  bool keyServer_ = false;
  bool macsecDesired_ = false;
  uint8_t macsecCapability_ = 0;
  Sci sci_;
  Vesk::String8 msgId_;
  uint32_t msgNum_ = 0;
  Vesk::String8 ckn_;
};

/// One half of a SAK use parameter set.
class KeyInfo : public Vesk::Value<KeyInfo> {
 public:
  KeyInfo() = default;
  KeyInfo(uint8_t keyAN, bool keyTx, bool keyRx, Vesk::String8 keyServerMsgId, uint32_t keyNum,
          uint32_t keyLLPN)
      : keyAN_(keyAN),
        keyTx_(keyTx),
        keyRx_(keyRx),
        keyServerMsgId_(std::move(keyServerMsgId)),
        keyNum_(keyNum),
        keyLLPN_(keyLLPN) {}

  /// Association number.
  uint8_t keyAN() const { return keyAN_; }
  void keyANIs(uint8_t v) { keyAN_ = v; }
  /// The sender transmits with this key.
  bool keyTx() const { return keyTx_; }
  void keyTxIs(bool v) { keyTx_ = v; }
  /// The sender receives with this key.
  bool keyRx() const { return keyRx_; }
  void keyRxIs(bool v) { keyRx_ = v; }
  /// Member identifier of the key server that made the key.
  Vesk::String8 const& keyServerMsgId() const { return keyServerMsgId_; }
  void keyServerMsgIdIs(Vesk::String8 v) { keyServerMsgId_ = std::move(v); }
  /// Key number.
  uint32_t keyNum() const { return keyNum_; }
  void keyNumIs(uint32_t v) { keyNum_ = v; }
  /// Lowest acceptable packet number.
  uint32_t keyLLPN() const { return keyLLPN_; }
  void keyLLPNIs(uint32_t v) { keyLLPN_ = v; }

  friend bool operator==(KeyInfo const&, KeyInfo const&) = default;

  static constexpr char const* kTypeName = "Macsec::KeyInfo";
  template <class V>
  static void describe(V&& v) {
    v("keyAN", &KeyInfo::keyAN_);
    v("keyTx", &KeyInfo::keyTx_);
    v("keyRx", &KeyInfo::keyRx_);
    v("keyServerMsgId", &KeyInfo::keyServerMsgId_);
    v("keyNum", &KeyInfo::keyNum_);
    v("keyLLPN", &KeyInfo::keyLLPN_);
  }

 private:
  uint8_t keyAN_ = 0;
  bool keyTx_ = false;
  bool keyRx_ = false;
  Vesk::String8 keyServerMsgId_;
  uint32_t keyNum_ = 0;
  uint32_t keyLLPN_ = 0;
};

/// The plain text flags of a SAK use parameter set.
class PlainTextInfo : public Vesk::Value<PlainTextInfo> {
 public:
  PlainTextInfo() = default;
  PlainTextInfo(bool plainTx, bool plainRx, bool delayProtect)
      : plainTx_(plainTx), plainRx_(plainRx), delayProtect_(delayProtect) {}

  /// The sender transmits plain text.
  bool plainTx() const { return plainTx_; }
  void plainTxIs(bool v) { plainTx_ = v; }
  /// The sender accepts plain text.
  bool plainRx() const { return plainRx_; }
  void plainRxIs(bool v) { plainRx_ = v; }
  /// Delay protection is in force at the sender.
  bool delayProtect() const { return delayProtect_; }
  void delayProtectIs(bool v) { delayProtect_ = v; }

  friend bool operator==(PlainTextInfo const&, PlainTextInfo const&) = default;

  static constexpr char const* kTypeName = "Macsec::PlainTextInfo";
  template <class V>
  static void describe(V&& v) {
    v("plainTx", &PlainTextInfo::plainTx_);
    v("plainRx", &PlainTextInfo::plainRx_);
    v("delayProtect", &PlainTextInfo::delayProtect_);
  }

 private:
  bool plainTx_ = false;
  bool plainRx_ = false;
  bool delayProtect_ = false;
};

/// A SAK use parameter set. The default value means that there is none.
class SakUseInfo : public Vesk::Value<SakUseInfo> {
 public:
  SakUseInfo() = default;
  SakUseInfo(KeyInfo oldKeyInfo, KeyInfo latestKeyInfo, PlainTextInfo plainTextInfo)
      : oldKeyInfo_(std::move(oldKeyInfo)),
        latestKeyInfo_(std::move(latestKeyInfo)),
        plainTextInfo_(std::move(plainTextInfo)) {}

  /// The old key.
  KeyInfo const& oldKeyInfo() const { return oldKeyInfo_; }
  void oldKeyInfoIs(KeyInfo const& v) { oldKeyInfo_ = v; }
  /// The latest key.
  KeyInfo const& latestKeyInfo() const { return latestKeyInfo_; }
  void latestKeyInfoIs(KeyInfo const& v) { latestKeyInfo_ = v; }
  /// Plain text flags.
  PlainTextInfo const& plainTextInfo() const { return plainTextInfo_; }
  void plainTextInfoIs(PlainTextInfo const& v) { plainTextInfo_ = v; }

  friend bool operator==(SakUseInfo const&, SakUseInfo const&) = default;

  static constexpr char const* kTypeName = "Macsec::SakUseInfo";
  template <class V>
  static void describe(V&& v) {
    v("oldKeyInfo", &SakUseInfo::oldKeyInfo_);
    v("latestKeyInfo", &SakUseInfo::latestKeyInfo_);
    v("plainTextInfo", &SakUseInfo::plainTextInfo_);
  }

 private:
  KeyInfo oldKeyInfo_;
  KeyInfo latestKeyInfo_;
  PlainTextInfo plainTextInfo_;
};

/// Association number and confidentiality offset of a distributed SAK.
class ANOffset : public Vesk::Value<ANOffset> {
 public:
  ANOffset() = default;
  ANOffset(uint8_t distAN, uint8_t offset) : distAN_(distAN), offset_(offset) {}

  /// Distributed association number.
  uint8_t distAN() const { return distAN_; }
  void distANIs(uint8_t v) { distAN_ = v; }
  /// Confidentiality offset code.
  uint8_t offset() const { return offset_; }
  void offsetIs(uint8_t v) { offset_ = v; }

  friend bool operator==(ANOffset const&, ANOffset const&) = default;

  static constexpr char const* kTypeName = "Macsec::ANOffset";
  template <class V>
  static void describe(V&& v) {
    v("distAN", &ANOffset::distAN_);
    v("offset", &ANOffset::offset_);
  }

 private:
  uint8_t distAN_ = 0;
  uint8_t offset_ = 0;
};

/// A distributed SAK parameter set. The default value means that there is none.
class SakDistInfo : public Vesk::Value<SakDistInfo> {
 public:
  SakDistInfo() = default;
  SakDistInfo(ANOffset anAndOffset, uint32_t keyNum, CipherSuite cipherSuite, Vesk::String8 sak)
      : anAndOffset_(std::move(anAndOffset)),
        keyNum_(keyNum),
        cipherSuite_(cipherSuite),
        sak_(std::move(sak)) {}

  /// Association number and offset.
  ANOffset const& anAndOffset() const { return anAndOffset_; }
  void anAndOffsetIs(ANOffset const& v) { anAndOffset_ = v; }
  /// Key number.
  uint32_t keyNum() const { return keyNum_; }
  void keyNumIs(uint32_t v) { keyNum_ = v; }
  /// Cipher suite of the key.
  CipherSuite cipherSuite() const { return cipherSuite_; }
  void cipherSuiteIs(CipherSuite v) { cipherSuite_ = v; }
  /// The key in the same encoded form as `Sak::key`.
  Vesk::String8 const& sak() const { return sak_; }
  void sakIs(Vesk::String8 const& v) { sak_ = v; }

  friend bool operator==(SakDistInfo const&, SakDistInfo const&) = default;

  static constexpr char const* kTypeName = "Macsec::SakDistInfo";
  template <class V>
  static void describe(V&& v) {
    v("anAndOffset", &SakDistInfo::anAndOffset_);
    v("keyNum", &SakDistInfo::keyNum_);
    v("cipherSuite", &SakDistInfo::cipherSuite_);
    v("sak", &SakDistInfo::sak_);
  }

 private:
  ANOffset anAndOffset_;
  uint32_t keyNum_ = 0;
  CipherSuite cipherSuite_ = CipherSuite::gcmAesXpn128;
  Vesk::String8 sak_;
};

/// An ICV indicator.
class IcvIndicatorInfo : public Vesk::Value<IcvIndicatorInfo> {
 public:
  IcvIndicatorInfo() = default;
  explicit IcvIndicatorInfo(uint16_t icvLength) : icvLength_(icvLength) {}

  /// Length of the ICV in bytes.
  uint16_t icvLength() const { return icvLength_; }
  void icvLengthIs(uint16_t v) { icvLength_ = v; }

  friend bool operator==(IcvIndicatorInfo const&, IcvIndicatorInfo const&) = default;

  static constexpr char const* kTypeName = "Macsec::IcvIndicatorInfo";
  static constexpr bool kPrintsBare = true;
  uint64_t number() const { return icvLength_; }
  static IcvIndicatorInfo fromNumber(uint64_t number) {
    if (number > UINT16_MAX) Vesk::throwParseException("expected an ICV length up to 65535");
    return IcvIndicatorInfo(static_cast<uint16_t>(number));
  }
  template <class V>
  static void describe(V&& v) {
    v("icvLength", &IcvIndicatorInfo::icvLength_);
  }

 private:
  uint16_t icvLength_ = 0;
};

}  // namespace Macsec
