#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <utility>

#include "codec/Kek.h"
#include "model/MkaActorStatus.h"
#include "platform/CknOctets.h"
#include "platform/SharedCmacs.h"
#include "runtime/String8.h"

namespace Codec {

/// What the codec keeps of one actor: its name on the wire, its place in the status tree, and its
/// two keys as AES takes them. The keys are wiped when this goes.
class ActorKeys : public Vesk::AtHome<Vesk::Home::Part::hot> {
 public:
  /// `status` is the actor's own; who only reads captures has none.
  explicit ActorKeys(Vesk::String8 const& ckn,
                     Vesk::Ptr<Macsec::MkaActorStatus const> status = nullptr)
      : ckn_(ckn), status_(std::move(status)), octets_(ckn.view()) {}

  /// The name as the actor's owner spells it.
  Vesk::String8 const& ckn() const { return ckn_; }
  /// The name as octets.
  Macsec::CknOctets const& name() const { return octets_; }
  std::span<uint8_t const> octets() const { return octets_.octets(); }
  /// The name as characters, or its octets if it has more than 32 of them.
  std::span<uint8_t const> characters() const;
  /// Null for one that stands in no tree.
  Macsec::MkaActorStatus const* status() const { return status_.ptr(); }
  /// Whether an MKPDU of this peer itself has come in: of a potential peer that only others list
  /// nobody knows the SCI.
  bool isHeard(Vesk::String8 const& peer) const;
  /// True for the name in any form that a frame may have it.
  bool isNamed(std::span<uint8_t const> onWire) const;

  /// The keys, in the form in which they are stored. A key that doesn't decode leaves a cipher
  /// without a key, under which no frame is right and none goes out.
  void ickIs(Vesk::String8 const& encoded);
  void kekIs(Vesk::String8 const& encoded);
  /// Both as the hexadecimal text of the clear keys.
  void clearKeysIs(Vesk::String8 const& ick, Vesk::String8 const& kek);

  Macsec::AesCmac& ick() { return *ick_; }
  Kek& kek() { return *kek_; }
  Kek const& kek() const { return *kek_; }

 private:
  void setIck(std::span<uint8_t const> clear) { ick_ = Macsec::SharedCmacs::cmac(clear); }

  Vesk::String8 ckn_;
  Vesk::Ptr<Macsec::MkaActorStatus const> status_;
  Macsec::CknOctets octets_;
  std::shared_ptr<Macsec::AesCmac> ick_ = std::make_shared<Macsec::AesCmac>();
  std::unique_ptr<Kek> const kek_ = std::make_unique<Kek>();
};

}  // namespace Codec
