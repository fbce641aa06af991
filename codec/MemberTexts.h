#pragma once

#include <array>
#include <optional>

#include "model/MemberIdentifier.h"
#include "runtime/String8.h"

namespace Codec {

/// The texts of the member identifiers that one interface meets, of its actors and of their peers:
/// each is made once, and whoever hands it up later shares it with the trees in which it stands.
/// Keeps the ones met last; a CA of more members costs more, and nothing else.
class MemberTexts {
 public:
  /// 24 lower-case digits; the empty text for twelve zero octets.
  Vesk::String8 text(Macsec::MemberIdentifier const& identifier);
  /// Nothing for a text that is no member identifier.
  std::optional<Macsec::MemberIdentifier> identifier(Vesk::String8 const& text);

 private:
  struct Known {
    Macsec::MemberIdentifier identifier;
    Vesk::String8 text;
  };
  static constexpr size_t kKept = 6;
  static constexpr size_t kSettled = 5;

  template <class Is>
  Known* knownBy(Is is);
  void keep(Macsec::MemberIdentifier const& identifier, Vesk::String8 const& text);

  // An identifier that is met again moves up one place, as far as to the settled ones, who only
  // give way to it; a new one takes the last.
  std::array<Known, kKept> known_;
};

}  // namespace Codec
