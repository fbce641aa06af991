#include "runtime/PtrInterface.h"

namespace Vesk {

uint8_t VFPtrInterface::enableThreadSafePointers = 0;

// A dying object keeps one reference of its own, so that a `Ptr` to it that comes and goes inside
// its destructor doesn't destroy it a second time.
void PtrInterface::lastReferenceGone() const {
  word_ = (word_ & ~kCountMask) | 1;
  const_cast<PtrInterface*>(this)->zeroReferencesIs();
}

void PtrInterface::referenceIncAtomically() const {
  std::atomic_ref(word_).fetch_add(1, std::memory_order_relaxed);
}

void PtrInterface::referenceDecAtomically() const {
  uint32_t const left = std::atomic_ref(word_).fetch_sub(1, std::memory_order_acq_rel) - 1;
  if ((left & kCountMask) == 0) lastReferenceGone();
}

void PtrInterface::zeroReferencesIs() {
  tellZeroReferences();
  delete this;
}

}  // namespace Vesk
