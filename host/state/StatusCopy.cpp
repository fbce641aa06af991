#include "host/state/StatusCopy.h"

#include "model/Factories.h"

namespace Macsecd {

namespace {

using Macsec::CpStatus;
using Macsec::IntfStatus;
using Macsec::MkaActorStatus;
using Macsec::MkaPeer;
using Macsec::MkaPortStatus;
using Macsec::Status;

void copyMember(Status& to, IntfStatus const& member);
void copyMember(Status& to, CpStatus const& member);
void copyMember(Status& to, MkaPortStatus const& member);
void copyMember(MkaPortStatus& to, MkaActorStatus const& member);

// Walks the description of an entity class and writes what one entity has into another.
template <class E>
struct Copier {
  E const& from;
  E& to;

  template <class F>
  void parameter(char const*, F) {}
  template <class G>
  void derived(char const*, G) {}
  template <class T, class S>
  void value(char const*, T E::*field, S setter) {
    (to.*setter)(from.*field);
  }
  template <class F>
  void values(char const*, F field) {
    for (auto& entry : from.*field) (to.*field).xIs(entry.fwkKey(), entry.value());
  }
  template <class M>
  void members(char const* name, M E::*field) {
    if constexpr (std::is_same_v<E, MkaActorStatus>) {
      copyPeers(name, from.*field);
    } else {
      for (auto& member : from.*field) copyMember(to, member);
    }
  }

  void copyPeers(std::string_view list, MkaActorStatus::LivePeerMap const& peers);
};

template <class E>
void copyAttributes(E const& from, E& to) {
  Copier<E> copier{from, to};
  E::describe(copier);
}

template <class E>
void Copier<E>::copyPeers(std::string_view list, MkaActorStatus::LivePeerMap const& peers) {
  for (MkaPeer& peer : peers) {
    auto const copy =
        list == "livePeer" ? to.livePeerIs(peer.msgId()) : to.potentialPeerIs(peer.msgId());
    copyAttributes(peer, *copy);
  }
}

void copyMember(Status& to, IntfStatus const& member) {
  copyAttributes(member, *to.intfStatusIs(member.intfId(), member.macsecParams()));
}

void copyMember(Status& to, CpStatus const& member) {
  copyAttributes(member, *to.cpStatusIs(member.intfId(), member.macsecParams()));
}

void copyMember(Status& to, MkaPortStatus const& member) {
  copyAttributes(member, *to.portStatusIs(member.intfId()));
}

void copyMember(MkaPortStatus& to, MkaActorStatus const& member) {
  copyAttributes(member, *to.actorStatusIs(member.ckn()));
}

}  // namespace

Vesk::Ptr<Status> copyOf(Status const& status) {
  auto copy = Macsec::statusFactory(status.name());
  copyAttributes(status, *copy);
  return copy;
}

}  // namespace Macsecd
