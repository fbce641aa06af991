#include "linux/kernel/MacsecKernel.h"

#include <algorithm>

namespace Linux {

bool sends(SecY const& secY) {
  return std::ranges::any_of(secY.txSas,
                             [&](HeldSa const& sa) { return sa.on && sa.an == secY.encodingSa; });
}

bool receives(SecY const& secY) {
  return std::ranges::any_of(secY.rxScs, [](HeldRxSc const& sc) {
    return sc.on && std::ranges::any_of(sc.sas, &HeldSa::on);
  });
}

}  // namespace Linux
