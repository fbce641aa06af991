#include "runtime/Pkt.h"

#include "runtime/Exceptions.h"

namespace Lumo {

void Pkt::positionIs(size_t position) {
  if (position > bytes_.size()) {
    Vesk::throwRangeException("Pkt::position > Pkt::size not allowed");
  }
  position_ = position;
}

}  // namespace Lumo
