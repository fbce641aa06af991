#include "codec/FrameDump.h"

#include <ostream>

#include "codec/ActorKeys.h"
#include "codec/FrameLayout.h"
#include "codec/SetPrint.h"
#include "codec/SetWalk.h"
#include "platform/KeyDerivation.h"

namespace Codec {

namespace {

unsigned char const* chars(Vesk::String8 const& text) {
  return reinterpret_cast<unsigned char const*>(text.charPtr());
}

}  // namespace

/// One of the keys given: KEK and ICK are as long as the CAK.
struct FrameDump::Key {
  explicit Key(KeyPair const& pair) : keys(pair.ckn) {
    int const bits = static_cast<int>(pair.cak.size()) * 4;
    Vesk::String8 ick;
    Vesk::String8 kek;
    Macsec::deriveIck(chars(pair.cak), chars(pair.ckn), bits, ick);
    Macsec::deriveKek(chars(pair.cak), chars(pair.ckn), bits, kek);
    keys.clearKeysIs(ick, kek);
  }
  ActorKeys keys;
};

/// The dump of one frame: each step writes what it finds and says whether the next one can go on.
class FrameDump::Printer {
 public:
  Printer(FrameDump const& dump, std::ostream& out) : dump_(dump), out_(out) {}

  Verdict print(Octets frame) {
    if (damaged(checkEapol(frame, layout_))) return Verdict::damaged;
    printEapol(out_, layout_);
    if (damaged(checkBasicSet(layout_))) return Verdict::damaged;
    printBasicSet(out_, layout_);
    Verdict verdict = icv();
    if (damaged(checkAlgorithm(layout_))) verdict = Verdict::damaged;
    if (damaged(sets())) verdict = Verdict::damaged;
    printIcv(out_, layout_, words(icvVerdict_));
    return verdict;
  }

 private:
  bool damaged(Refusal const& refusal) {
    if (!refusal) return false;
    out_ << "  DAMAGED: octet " << refusal.octet << " " << refusal.what << "\n";
    return true;
  }

  Verdict icv() {
    icvVerdict_ = Verdict::unknownKey;
    for (auto const& key : dump_.keys_) {
      if (!key->keys.isNamed(layout_.name)) continue;
      icvVerdict_ = Verdict::forged;
      if (!key->keys.ick().matches(layout_.covered(), layout_.icv())) continue;
      key_ = &key->keys;
      return icvVerdict_ = Verdict::authentic;
    }
    return icvVerdict_;
  }

  Refusal sets() {
    SetWalk walk(layout_);
    while (walk.next()) {
      if (Refusal refusal = printSet(out_, walk.set(), key_, dump_.showKeys_)) return refusal;
    }
    return walk.refusal();
  }

  static char const* words(Verdict icv) {
    if (icv == Verdict::authentic) return "right";
    return icv == Verdict::forged ? "WRONG" : "not checked, no key of this name was given";
  }

  FrameDump const& dump_;
  std::ostream& out_;
  FrameLayout layout_;
  ActorKeys* key_ = nullptr;
  Verdict icvVerdict_ = Verdict::unknownKey;
};

FrameDump::FrameDump(std::span<KeyPair const> keys, bool showKeys) : showKeys_(showKeys) {
  for (KeyPair const& pair : keys) keys_.push_back(std::make_unique<Key>(pair));
}

FrameDump::~FrameDump() = default;

Verdict FrameDump::dump(std::span<uint8_t const> frame, std::ostream& out) const {
  return Printer(*this, out).print(frame);
}

}  // namespace Codec
