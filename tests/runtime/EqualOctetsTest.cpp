#include "runtime/EqualOctets.h"

#include <gtest/gtest.h>

namespace Vesk {
namespace {

template <size_t N>
void differInEachOctet() {
  std::array<uint8_t, N> a;
  a.fill(0x5a);
  EXPECT_TRUE(equalOctets(a, a));
  for (size_t i = 0; i < N; ++i) {
    std::array<uint8_t, N> b = a;
    b[i] ^= 1;
    EXPECT_FALSE(equalOctets(a, b)) << "octet " << i << " of " << N;
  }
}

TEST(EqualOctets, AreEqualInEachOctet) {
  differInEachOctet<4>();
  differInEachOctet<6>();
  differInEachOctet<8>();
  differInEachOctet<12>();
  differInEachOctet<16>();
}

}  // namespace
}  // namespace Vesk
