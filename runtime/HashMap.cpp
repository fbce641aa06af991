#include "runtime/HashMap.h"

namespace Vesk {

uint32_t reversedBits(uint32_t w) {
  w = (w >> 1 & 0x55555555) | (w & 0x55555555) << 1;
  w = (w >> 2 & 0x33333333) | (w & 0x33333333) << 2;
  w = (w >> 4 & 0x0f0f0f0f) | (w & 0x0f0f0f0f) << 4;
  return __builtin_bswap32(w);
}

}  // namespace Vesk
