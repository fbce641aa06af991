#include "runtime/PtrInterface.h"

namespace Vesk {

uint8_t VFPtrInterface::enableThreadSafePointers = 0;

// A dying object keeps one reference of its own, so that a `Ptr` to it that comes and goes inside
// its destructor doesn't destroy it a second time.
void PtrInterface::lastReferenceGone() {
  word_ = (word_ & ~kCountMask) | 1;
  zeroReferencesIs();
}

void PtrInterface::zeroReferencesIs() {
  tellZeroReferences();
  delete this;
}

}  // namespace Vesk
