#include "model/EapolType.h"

#include <ostream>

#include "model/BitPart.h"
#include "runtime/Exceptions.h"

namespace Macsec {

EapolType EapolType::parsed(std::string_view text) { return EapolType(octetFromStrep(text)); }

void EapolType::typeIs(uint8_t type) {
  if (type > max) Vesk::throwRangeException("EapolType::type < 0 or > 8 not allowed");
  type_ = type;
}

std::string valueToStrep(EapolType const& type) { return std::to_string(type.type()); }

std::ostream& operator<<(std::ostream& out, EapolType const& type) {
  return out << valueToStrep(type);
}

}  // namespace Macsec
