#pragma once

#include <cstdint>
#include <utility>

#include "model/AssociationNumber.h"
#include "runtime/Text.h"

namespace Macsec {

/// A connectivity association key with its name.
class Cak : public Vesk::Value<Cak> {
 public:
  Cak() = default;
  Cak(Vesk::String8 ckn, Vesk::String8 cak) : ckn_(std::move(ckn)), cak_(std::move(cak)) {}

  /// The key name, as a text.
  Vesk::String8 const& ckn() const { return ckn_; }
  void cknIs(Vesk::String8 const& v) { ckn_ = v; }
  /// The key, encoded with `WardcodeLib::doEncodeKey`.
  Vesk::String8 const& cak() const { return cak_; }
  void cakIs(Vesk::String8 const& v) { cak_ = v; }

  friend bool operator==(Cak const&, Cak const&) = default;

  static constexpr char const* kTypeName = "Macsec::Cak";
  template <class V>
  static void describe(V&& v) {
    v("ckn", &Cak::ckn_);
    v("cak", &Cak::cak_);
  }

 private:
  Vesk::String8 ckn_;
  Vesk::String8 cak_;
};

/// A distributed CAK, as received. The default value means that there is none.
class CakDistInfo : public Vesk::Value<CakDistInfo> {
 public:
  CakDistInfo() = default;
  CakDistInfo(Vesk::String8 cak, Vesk::String8 ckn) : cak_(std::move(cak)), ckn_(std::move(ckn)) {}

  /// The key, encoded.
  Vesk::String8 const& cak() const { return cak_; }
  void cakIs(Vesk::String8 const& v) { cak_ = v; }
  /// The key name.
  Vesk::String8 const& ckn() const { return ckn_; }
  void cknIs(Vesk::String8 const& v) { ckn_ = v; }

  friend bool operator==(CakDistInfo const&, CakDistInfo const&) = default;

  static constexpr char const* kTypeName = "Macsec::CakDistInfo";
  template <class V>
  static void describe(V&& v) {
    v("cak", &CakDistInfo::cak_);
    v("ckn", &CakDistInfo::ckn_);
  }

 private:
  Vesk::String8 cak_;
  Vesk::String8 ckn_;
};

/// A profile's setting for group CAK distribution.
class GroupCak : public Vesk::Value<GroupCak> {
 public:
  GroupCak() = default;
  GroupCak(bool enabled, uint32_t lifetime) : enabled_(enabled), lifetime_(lifetime) {}

  static constexpr bool enabledDefault = false;
  static constexpr uint32_t lifetimeDefault = 1000;

  /// Whether a group CAK is distributed.
  bool enabled() const { return enabled_; }
  void enabledIs(bool v) { enabled_ = v; }
  /// Its lifetime in minutes.
  uint32_t lifetime() const { return lifetime_; }
  void lifetimeIs(uint32_t v) { lifetime_ = v; }

  friend bool operator==(GroupCak const&, GroupCak const&) = default;

  static constexpr char const* kTypeName = "Macsec::GroupCak";
  template <class V>
  static void describe(V&& v) {
    v("enabled", &GroupCak::enabled_);
    v("lifetime", &GroupCak::lifetime_);
  }

 private:
  bool enabled_ = enabledDefault;
  uint32_t lifetime_ = lifetimeDefault;
};

/// One secure association key as the key server distributes it and the controlled port installs it.
/// `Sak(AssociationNumber(0))` is the empty key, by which the whole system tells that there is
/// none.
class Sak : public Vesk::Value<Sak> {
 public:
  explicit Sak(AssociationNumber an = AssociationNumber(0)) : an_(an) {}

  /// The association number that the key is to use.
  AssociationNumber an() const { return an_; }
  void anIs(AssociationNumber v) { an_ = v; }
  /// Member identifier of the key server that made the key, 24 hexadecimal digits.
  Vesk::String8 const& keyMsgId() const { return keyMsgId_; }
  void keyMsgIdIs(Vesk::String8 const& v) { keyMsgId_ = v; }
  /// The key number given by that key server.
  uint32_t keyNum() const { return keyNum_; }
  void keyNumIs(uint32_t v) { keyNum_ = v; }
  /// The key, encoded with `WardcodeLib::doEncodeKey`.
  Vesk::String8 const& key() const { return key_; }
  void keyIs(Vesk::String8 const& v) { key_ = v; }
  /// The 96-bit salt of the XPN suites in hexadecimal; empty until the controlled port fills it in.
  Vesk::String8 const& salt() const { return salt_; }
  void saltIs(Vesk::String8 const& v) { salt_ = v; }

  friend bool operator==(Sak const&, Sak const&) = default;

  static constexpr char const* kTypeName = "Macsec::Sak";
  template <class V>
  static void describe(V&& v) {
    v("an", &Sak::an_);
    v("keyMsgId", &Sak::keyMsgId_);
    v("keyNum", &Sak::keyNum_);
    v("key", &Sak::key_);
    v("salt", &Sak::salt_);
  }

 private:
  AssociationNumber an_;
  Vesk::String8 keyMsgId_;
  uint32_t keyNum_ = 0;
  Vesk::String8 key_;
  Vesk::String8 salt_;
};

/// Whether two values stand for one SAK. A key server never gives one key number to two keys, so
/// that key material, encoded anew each time, and salt play no part.
inline bool isSameSak(Sak const& a, Sak const& b) {
  return a.an() == b.an() && a.keyMsgId() == b.keyMsgId() && a.keyNum() == b.keyNum();
}

/// The controlled port's record of one key in use.
class SakContext : public Vesk::Value<SakContext> {
 public:
  SakContext() = default;
  SakContext(Sak sak, uint32_t lpn, bool txEnabled, bool rxEnabled, bool txInstalled,
             bool rxInstalled)
      : sak_(std::move(sak)),
        lpn_(lpn),
        txEnabled_(txEnabled),
        rxEnabled_(rxEnabled),
        txInstalled_(txInstalled),
        rxInstalled_(rxInstalled) {}

  /// The key; its `salt` stays empty here.
  Sak const& sak() const { return sak_; }
  void sakIs(Sak const& v) { sak_ = v; }
  /// Lowest acceptable packet number.
  uint32_t lpn() const { return lpn_; }
  void lpnIs(uint32_t v) { lpn_ = v; }
  /// Transmit has been asked of the hardware.
  bool txEnabled() const { return txEnabled_; }
  void txEnabledIs(bool v) { txEnabled_ = v; }
  /// Receive has been asked of the hardware.
  bool rxEnabled() const { return rxEnabled_; }
  void rxEnabledIs(bool v) { rxEnabled_ = v; }
  /// The hardware reports this key as its transmit SA.
  bool txInstalled() const { return txInstalled_; }
  void txInstalledIs(bool v) { txInstalled_ = v; }
  /// The hardware reports this key as a receive SA.
  bool rxInstalled() const { return rxInstalled_; }
  void rxInstalledIs(bool v) { rxInstalled_ = v; }

  friend bool operator==(SakContext const&, SakContext const&) = default;

  static constexpr char const* kTypeName = "Macsec::SakContext";
  template <class V>
  static void describe(V&& v) {
    v("sak", &SakContext::sak_);
    v("lpn", &SakContext::lpn_);
    v("txEnabled", &SakContext::txEnabled_);
    v("rxEnabled", &SakContext::rxEnabled_);
    v("txInstalled", &SakContext::txInstalled_);
    v("rxInstalled", &SakContext::rxInstalled_);
  }

 private:
  Sak sak_;
  uint32_t lpn_ = 0;
  bool txEnabled_ = false;
  bool rxEnabled_ = false;
  bool txInstalled_ = false;
  bool rxInstalled_ = false;
};

}  // namespace Macsec
