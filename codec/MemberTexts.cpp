#include "codec/MemberTexts.h"

namespace Codec {

using Macsec::MemberIdentifier;

Vesk::String8 MemberTexts::text(MemberIdentifier const& identifier) {
  if (identifier == MemberIdentifier()) return {};
  for (size_t i = 0; i < kKept; ++i) {
    if (known_[i].identifier == identifier) return met(i).text;
  }
  Vesk::String8 text = identifier.stringValue();
  keep(identifier, text);
  return text;
}

std::optional<MemberIdentifier> MemberTexts::identifier(Vesk::String8 const& text) {
  if (text.empty()) return MemberIdentifier();
  for (size_t i = 0; i < kKept; ++i) {
    if (known_[i].text == text) return met(i).identifier;
  }
  auto const identifier = MemberIdentifier::parsed(text.view());
  // Another spelling of the same digits is understood, and never handed up.
  if (identifier && identifier->stringValue() == text) keep(*identifier, text);
  return identifier;
}

MemberTexts::Known& MemberTexts::met(size_t place) {
  if (place < kSettled) return known_[place];
  std::swap(known_[place], known_[place - 1]);
  return known_[place - 1];
}

void MemberTexts::keep(MemberIdentifier const& identifier, Vesk::String8 const& text) {
  for (size_t i = 0; i < kKept; ++i) {
    if (!known_[i].text.empty() && i + 1 < kKept) continue;
    known_[i] = {identifier, text};
    return;
  }
}

}  // namespace Codec
