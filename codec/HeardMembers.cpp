#include "codec/HeardMembers.h"

#include <algorithm>

namespace Codec {

namespace {

// Two names and one other member: as many as have room from the start leave no gaps behind.
constexpr size_t kExpected = 2;

// What was met last is met next: it goes to the front, unless it is among the first already.
template <class All, class Is>
typename All::value_type* broughtToFront(All& all, Is is) {
  auto const found = std::ranges::find_if(all, is);
  if (found == all.end()) return nullptr;
  if (found < all.begin() + kExpected) return &*found;
  std::rotate(all.begin(), found, found + 1);
  return &all.front();
}

// In front of all others; the last one makes room.
template <class All>
typename All::value_type& putInFront(All& all, size_t most, typename All::value_type one) {
  if (all.size() >= most) all.pop_back();
  if (all.empty()) all.reserve(kExpected);
  all.insert(all.begin(), std::move(one));
  return all.front();
}

}  // namespace

bool HeardMembers::has(Macsec::CknOctets const& ckn, Macsec::MemberIdentifier const& member,
                       uint32_t messageNumber) const {
  for (Association const& association : associations_) {
    if (association.ckn != ckn) continue;
    for (Member const& known : association.members) {
      if (known.identifier == member) return messageNumber <= known.messageNumber;
    }
  }
  return false;
}

HeardMembers::Association& HeardMembers::associationIs(Macsec::CknOctets const& ckn) {
  auto* const known =
      broughtToFront(associations_, [&](Association const& a) { return a.ckn == ckn; });
  return known ? *known : putInFront(associations_, kMostNames, Association{ckn, {}});
}

void HeardMembers::heard(Macsec::CknOctets const& ckn, Macsec::MemberIdentifier const& member,
                         uint32_t messageNumber) {
  auto& members = associationIs(ckn).members;
  auto* const known =
      broughtToFront(members, [&](Member const& m) { return m.identifier == member; });
  if (known) {
    known->messageNumber = std::max(known->messageNumber, messageNumber);
  } else {
    putInFront(members, kMostMembers, Member{member, messageNumber});
  }
}

}  // namespace Codec
