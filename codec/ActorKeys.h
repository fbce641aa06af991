#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>

#include "codec/MemberTexts.h"
#include "model/MkaActorStatus.h"
#include "platform/CknOctets.h"
#include "platform/KeyWrap.h"
#include "platform/SharedCmacs.h"
#include "runtime/String8.h"

namespace Codec {

/// What the codec keeps of one actor: its name on the wire, its place in the status tree, its two
/// keys as AES takes them, and the texts that its frames repeat. The keys are wiped when this goes.
class ActorKeys {
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
  Macsec::KeyWrap const& kek() const { return kek_; }
  MemberTexts& members() { return members_; }

  /// True for a wrapped key that came under the KEK of now and is stored already: it needn't be
  /// unwrapped again.
  bool hasStored(std::span<uint8_t const> wrapped) const;
  /// The stored form of a distributed key that arrived wrapped. A key that is repeated keeps the
  /// stored form that it got first, and `clear` isn't looked at.
  Vesk::String8 storedKey(std::span<uint8_t const> wrapped, std::span<uint8_t const> clear);

 private:
  void setIck(std::span<uint8_t const> clear) { ick_ = Macsec::SharedCmacs::cmac(clear); }
  void setKek(std::span<uint8_t const> clear);

  static constexpr size_t kMaxWrapped = 40;

  Vesk::String8 ckn_;
  Vesk::Ptr<Macsec::MkaActorStatus const> status_;
  Macsec::CknOctets octets_;
  std::shared_ptr<Macsec::AesCmac> ick_ = std::make_shared<Macsec::AesCmac>();
  Macsec::KeyWrap kek_{{}};
  MemberTexts members_;
  std::array<uint8_t, kMaxWrapped> wrapped_{};
  size_t wrappedSize_ = 0;
  Vesk::String8 stored_;
};

}  // namespace Codec
