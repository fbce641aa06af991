#pragma once

#include <cstdint>
#include <utility>

#include "runtime/EthAddr.h"
#include "runtime/Text.h"

namespace Macsec {

/// A secure channel identifier. The zero `Sci` stands for no key server.
class Sci : public Vesk::Value<Sci> {
 public:
  Sci() = default;
  Sci(Lumo::EthAddr addr, uint16_t portNum) : addr_(std::move(addr)), portNum_(portNum) {}

  /// System identifier: a MAC address.
  Lumo::EthAddr const& addr() const { return addr_; }
  void addrIs(Lumo::EthAddr const& v) { addr_ = v; }
  /// Port number.
  uint16_t portNum() const { return portNum_; }
  void portNumIs(uint16_t v) { portNum_ = v; }

  friend bool operator==(Sci const&, Sci const&) = default;

  static constexpr char const* kTypeName = "Macsec::Sci";
  template <class V>
  static void describe(V&& v) {
    v("addr", &Sci::addr_);
    v("portNum", &Sci::portNum_);
  }

 private:
  Lumo::EthAddr addr_;
  uint16_t portNum_ = 0;
};

/// A short secure channel identifier with its owner.
class Ssci : public Vesk::Value<Ssci> {
 public:
  Ssci() = default;
  Ssci(Sci sci, Vesk::String8 ssci) : sci_(std::move(sci)), ssci_(std::move(ssci)) {}

  /// The channel.
  Sci const& sci() const { return sci_; }
  void sciIs(Sci const& v) { sci_ = v; }
  /// The 32-bit SSCI as 8 hexadecimal digits.
  Vesk::String8 const& ssci() const { return ssci_; }
  void ssciIs(Vesk::String8 const& v) { ssci_ = v; }

  friend bool operator==(Ssci const&, Ssci const&) = default;

  static constexpr char const* kTypeName = "Macsec::Ssci";
  template <class V>
  static void describe(V&& v) {
    v("sci", &Ssci::sci_);
    v("ssci", &Ssci::ssci_);
  }

 private:
  Sci sci_;
  Vesk::String8 ssci_;
};

}  // namespace Macsec
