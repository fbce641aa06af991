#include "codec/MemberTexts.h"

#include <algorithm>

namespace Codec {

using Macsec::MemberIdentifier;

Vesk::String8 MemberTexts::text(MemberIdentifier const& identifier) {
  if (identifier == MemberIdentifier()) return {};
  if (Known* const known = knownBy([&](Known const& k) { return k.identifier == identifier; })) {
    return known->text;
  }
  Vesk::String8 text = identifier.stringValue();
  keep(identifier, text);
  return text;
}

std::optional<MemberIdentifier> MemberTexts::identifier(Vesk::String8 const& text) {
  if (text.empty()) return MemberIdentifier();
  if (Known* const known = knownBy([&](Known const& k) { return k.text.isCopyOf(text); })) {
    return known->identifier;
  }
  if (Known* const known = knownBy([&](Known const& k) { return k.text == text; })) {
    return known->identifier;
  }
  auto const identifier = MemberIdentifier::parsed(text.view());
  // Another spelling of the same digits is understood, and never handed up.
  if (identifier && identifier->stringValue() == text) keep(*identifier, text);
  return identifier;
}

template <class Is>
MemberTexts::Known* MemberTexts::knownBy(Is is) {
  auto const known = std::ranges::find_if(known_, is);
  if (known == known_.end()) return nullptr;
  if (known < known_.begin() + kSettled) return &*known;
  std::iter_swap(known, known - 1);
  return &*(known - 1);
}

void MemberTexts::keep(MemberIdentifier const& identifier, Vesk::String8 const& text) {
  for (size_t i = 0; i < kKept; ++i) {
    if (!known_[i].text.empty() && i + 1 < kKept) continue;
    known_[i] = {identifier, text};
    return;
  }
}

}  // namespace Codec
