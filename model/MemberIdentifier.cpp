#include "model/MemberIdentifier.h"

#include <ostream>

#include "platform/Hex.h"

namespace Macsec {

std::optional<MemberIdentifier> MemberIdentifier::parsed(std::string_view text) {
  std::array<uint8_t, 12> bytes{};
  if (!text.empty() && !hexDecode(text, bytes)) return std::nullopt;
  return MemberIdentifier(bytes);
}

Vesk::String8 MemberIdentifier::stringValue() const {
  return *this == MemberIdentifier() ? Vesk::String8() : hexString(bytes_);
}

std::ostream& operator<<(std::ostream& out, MemberIdentifier const& identifier) {
  return out << identifier.stringValue();
}

}  // namespace Macsec
