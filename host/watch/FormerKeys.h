#pragma once

#include <array>
#include <limits>

#include "model/CpStatus.h"
#include "model/Keys.h"

namespace Macsecd {

/// The receive keys of a port that aren't asked for any more. The peer leaves a key when it hears
/// that this end has the next one; where two new keys follow one another within seconds, or the
/// peer has just been started again, it still sends with the key that is withdrawn here. So each
/// stays for a while in the hardware, unless its association number is needed. Times are those of
/// `Vesk::now()`, in seconds.
class FormerKeys {
 public:
  /// How long a key stays: as long as a peer is heard to be there.
  static constexpr double kStays = 6.0;
  /// The same under delay protection, which has no frame taken that is older.
  static constexpr double kStaysProtected = 2.0;

  /// There is a key of this association number, and it is asked for.
  void isAsked(Macsec::AssociationNumber an) { until_.at(an.value()) = kAsked; }
  /// There is one that a former process has left: it counts as asked for until now.
  void isFound(Macsec::AssociationNumber an);
  /// Whether the key of this association number, which isn't asked for, stays now. One that never
  /// was asked for doesn't.
  bool stays(Macsec::AssociationNumber an, bool isDelayProtected);
  /// The same for what this port asks for. None stays once it asks for no key at all.
  bool stays(Macsec::AssociationNumber an, Macsec::CpStatus const& asked);
  /// It has gone.
  void forget(Macsec::AssociationNumber an) { until_.at(an.value()) = kGone; }

  /// When the next one has stayed long enough; infinity when none stays.
  double nextTime() const;

 private:
  static constexpr double kAsked = std::numeric_limits<double>::infinity();
  static constexpr double kGone = -kAsked;

  std::array<double, Macsec::AssociationNumber::max + 1> until_ = {kGone, kGone, kGone, kGone};
};

}  // namespace Macsecd
