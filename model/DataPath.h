#pragma once

#include <cstdint>
#include <utility>

#include "model/AssociationNumber.h"
#include "model/CipherSuite.h"
#include "runtime/Text.h"

namespace Macsec {

/// Lowest packet numbers received from the peers.
class KeysLPN : public Vesk::Value<KeysLPN> {
 public:
  KeysLPN() = default;
  KeysLPN(uint32_t oldKeyLPN, uint32_t latestKeyLPN)
      : oldKeyLPN_(oldKeyLPN), latestKeyLPN_(latestKeyLPN) {}

  /// For the old key.
  uint32_t oldKeyLPN() const { return oldKeyLPN_; }
  void oldKeyLPNIs(uint32_t v) { oldKeyLPN_ = v; }
  /// For the latest key.
  uint32_t latestKeyLPN() const { return latestKeyLPN_; }
  void latestKeyLPNIs(uint32_t v) { latestKeyLPN_ = v; }

  friend bool operator==(KeysLPN const&, KeysLPN const&) = default;

  static constexpr char const* kTypeName = "Macsec::KeysLPN";
  template <class V>
  static void describe(V&& v) {
    v("oldKeyLPN", &KeysLPN::oldKeyLPN_);
    v("latestKeyLPN", &KeysLPN::latestKeyLPN_);
  }

 private:
  uint32_t oldKeyLPN_ = 0;
  uint32_t latestKeyLPN_ = 0;
};

/// One entry of the lowest packet number table of `CpStatus`.
class RxLPN : public Vesk::Value<RxLPN> {
 public:
  RxLPN() = default;
  RxLPN(uint32_t lpn, AssociationNumber an) : lpn_(lpn), an_(an) {}

  /// Lowest acceptable packet number.
  uint32_t lpn() const { return lpn_; }
  void lpnIs(uint32_t v) { lpn_ = v; }
  /// The association that it applies to: the key of the table.
  AssociationNumber an() const { return an_; }
  void anIs(AssociationNumber v) { an_ = v; }

  friend bool operator==(RxLPN const&, RxLPN const&) = default;

  static constexpr char const* kTypeName = "Macsec::RxLPN";
  template <class V>
  static void describe(V&& v) {
    v("lpn", &RxLPN::lpn_);
    v("an", &RxLPN::an_);
  }

 private:
  uint32_t lpn_ = 0;
  AssociationNumber an_;
};

/// What the data path needs of the profile: it cannot change on a live interface.
class MacsecParams : public Vesk::Value<MacsecParams> {
 public:
  MacsecParams() = default;
  MacsecParams(CipherSuite cipher, bool includeSci) : cipher_(cipher), includeSci_(includeSci) {}

  /// Cipher suite.
  CipherSuite cipher() const { return cipher_; }
  void cipherIs(CipherSuite v) { cipher_ = v; }
  /// Whether frames carry the SCI in the SecTAG.
  bool includeSci() const { return includeSci_; }
  void includeSciIs(bool v) { includeSci_ = v; }

  friend bool operator==(MacsecParams const&, MacsecParams const&) = default;

  static constexpr char const* kTypeName = "Macsec::MacsecParams";
  template <class V>
  static void describe(V&& v) {
    v("cipher", &MacsecParams::cipher_);
    v("includeSci", &MacsecParams::includeSci_);
  }

 private:
  CipherSuite cipher_ = CipherSuite::gcmAesXpn128;
  bool includeSci_ = false;
};

/// The FIPS state of this process.
class FipsStatus : public Vesk::Value<FipsStatus> {
 public:
  FipsStatus() = default;
  FipsStatus(bool fipsRestrictions, bool fipsModeSuccess)
      : fipsRestrictions_(fipsRestrictions), fipsModeSuccess_(fipsModeSuccess) {}

  /// FIPS restrictions are configured.
  bool fipsRestrictions() const { return fipsRestrictions_; }
  void fipsRestrictionsIs(bool v) { fipsRestrictions_ = v; }
  /// FIPS mode came up.
  bool fipsModeSuccess() const { return fipsModeSuccess_; }
  void fipsModeSuccessIs(bool v) { fipsModeSuccess_ = v; }

  friend bool operator==(FipsStatus const&, FipsStatus const&) = default;

  static constexpr char const* kTypeName = "Macsec::FipsStatus";
  template <class V>
  static void describe(V&& v) {
    v("fipsRestrictions", &FipsStatus::fipsRestrictions_);
    v("fipsModeSuccess", &FipsStatus::fipsModeSuccess_);
  }

 private:
  bool fipsRestrictions_ = false;
  bool fipsModeSuccess_ = false;
};

/// What MACsec adds to a frame: SecTAG and ICV together, in bytes.
struct Constants {
  static constexpr uint8_t secHdrSize = 24;
  static constexpr uint8_t secHdrSizeWithSci = 32;
};

}  // namespace Macsec
