#include "host/watch/FormerKeys.h"

#include <algorithm>

#include "runtime/World.h"

namespace Macsecd {

void FormerKeys::isFound(Macsec::AssociationNumber an) {
  double& until = until_.at(an.value());
  if (until == kGone) until = kAsked;
}

bool FormerKeys::stays(Macsec::AssociationNumber an, bool isDelayProtected) {
  double& until = until_.at(an.value());
  double const stay = isDelayProtected ? kStaysProtected : kStays;
  if (until == kAsked) until = Vesk::now() + stay;
  return Vesk::now() < until;
}

bool FormerKeys::stays(Macsec::AssociationNumber an, Macsec::CpStatus const& asked) {
  if (asked.rxSak(an) || asked.rxSak().empty()) return false;
  Macsec::RxLPN const* const lowest = asked.rxLPN(an);
  return stays(an, lowest && lowest->lpn() != 0);
}

double FormerKeys::nextTime() const {
  double next = kAsked;
  for (double const until : until_) {
    if (until > Vesk::now()) next = std::min(next, until);
  }
  return next;
}

}  // namespace Macsecd
