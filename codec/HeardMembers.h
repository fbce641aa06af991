#pragma once

#include <cstdint>
#include <vector>

#include "model/MemberIdentifier.h"
#include "platform/CknOctets.h"
#include "runtime/AtHome.h"

namespace Codec {

/// Who has been heard on one interface, and how far each had counted its messages: by the name of
/// the CAK and the member identifier. It outlives the actors, so that a link that went down doesn't
/// forget.
///
/// Bounded: of one name the `kMostMembers` heard last are known, of an interface the `kMostNames`
/// last. A member that is forgotten may be heard once more; it is then a stranger whose messages
/// list this end with a number of long ago, if at all, and who so can't distribute a key.
class HeardMembers {
 public:
  static constexpr size_t kMostMembers = 1024;
  static constexpr size_t kMostNames = 8;

  /// Whether this message of the member, or a later one, has been heard.
  bool has(Macsec::CknOctets const& ckn, Macsec::MemberIdentifier const& member,
           uint32_t messageNumber) const;
  void heard(Macsec::CknOctets const& ckn, Macsec::MemberIdentifier const& member,
             uint32_t messageNumber);

 private:
  template <class T>
  using HomeVector = std::vector<T, Vesk::HomeAllocator<T>>;
  struct Member {
    Macsec::MemberIdentifier identifier;
    uint32_t messageNumber;
  };
  struct Association {
    Macsec::CknOctets ckn;
    HomeVector<Member> members;  // two, and behind them those heard last first
  };
  Association& associationIs(Macsec::CknOctets const& ckn);

  HomeVector<Association> associations_;  // in the same order
};

}  // namespace Codec
