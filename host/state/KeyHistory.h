#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/state/StateStore.h"
#include "model/Keys.h"
#include "model/MemberIdentifier.h"
#include "runtime/IntfId.h"

namespace Macsecd {

/// What tells one SAK from all others: the member identifier of its key server, and the number that
/// this gave it (the key identifier of IEEE 802.1X-2010, 9.8).
struct SakId {
  Macsec::MemberIdentifier server;
  uint32_t number = 0;

  /// Nothing for the empty key, and for one whose member identifier isn't one.
  static std::optional<SakId> of(Macsec::Sak const& sak);
  friend bool operator==(SakId const&, SakId const&) = default;
};

/// What was sent and received with each SAK on each interface, so that no packet number is sent
/// twice with one key and no frame is taken twice: whatever has happened to the device, the
/// interface or the process since, a key that comes back goes on where it stood.
///
/// A packet number counts as sent from the moment in which it is reserved, `kReserved` at a time,
/// and the store has the reservation before the first of them is sent. So nothing is lost with a
/// process that dies, and the store is written to once in hundreds of millions of frames.
///
/// Bounded, and yet no key starts over:
///  - Of one key server those keys are known one by one that the port asks for, and the newest ones
///    up to `kMostKeys`. Its key numbers rise, so every other one below the newest is known to be
///    spent without being known by itself.
///  - The `kMostServers` key servers met last are known. A key of one before them can't come back:
///    the replay guard takes a key only from a sender that lists this end's present member
///    identifier among its last few messages, and that many sessions, of some seconds each at
///    least, have been made since such a message can have been recorded.
class KeyHistory {
 public:
  static constexpr uint64_t kReserved = uint64_t{1} << 28;
  static constexpr size_t kMostKeys = 4;
  static constexpr size_t kMostServers = 64;
  /// Under which paths it lies in a store; no attribute of the status tree has such a one.
  static constexpr char const* kPathBegin = "%keys/";

  /// Keeps what it learns in `store`, which lives longer; null for nowhere.
  explicit KeyHistory(StateStore* store = nullptr) : store_(store) {}

  /// Begins with what a store held: the values under `kPathBegin`. Returns the paths of those that
  /// can't be read.
  std::vector<std::string> takeUp(StateValues const& values);

  /// What the port asks for now, to be sent or received with. However many newer keys come to
  /// nothing, these aren't forgotten.
  void askedIs(Lumo::IntfId intfId, std::vector<SakId> const& keys);
  /// This end has this SSCI under the key, and never sends with another one under it.
  void bindSsci(Lumo::IntfId intfId, SakId const& sak, uint32_t ssci);
  /// The packet number with which this end may begin to send; nothing if it may never again.
  std::optional<uint64_t> firstToSend(Lumo::IntfId intfId, SakId const& sak, uint32_t ssci) const;
  /// Packet numbers were sent with the key, or are about to be: `next` is the first packet number
  /// that hasn't been sent; 0 after the last one of all.
  void noteSent(Lumo::IntfId intfId, SakId const& sak, uint32_t ssci, uint64_t next);
  /// Nothing is ever sent with this key again.
  void spend(Lumo::IntfId intfId, SakId const& sak);
  bool isSpent(Lumo::IntfId intfId, SakId const& sak) const;
  /// The highest number of a key of this key server; 0 if none is known.
  uint32_t newest(Lumo::IntfId intfId, Macsec::MemberIdentifier const& server) const;

  /// The lowest packet number that may be received from this channel: 1 for a new key.
  uint64_t firstToReceive(Lumo::IntfId intfId, SakId const& sak, uint64_t sci) const;
  /// Goes to the store with the next `commit`.
  void noteReceived(Lumo::IntfId intfId, SakId const& sak, uint64_t sci, uint64_t next);

  /// Gives the store what it hasn't got yet. True if there was something, and the store took it.
  bool commit();

 private:
  struct Key {
    uint32_t number = 0;
    uint32_t ssci = 0;
    uint64_t reserved = 0;                  ///< all below may have been sent; 0 for none
    std::map<uint64_t, uint64_t> received;  ///< by SCI: the next one
  };
  struct Server {
    Macsec::MemberIdentifier id;
    uint64_t order = 0;     ///< of its arrival
    std::vector<Key> keys;  ///< by number
  };
  using Servers = std::vector<Server>;  // by order

  Key const* find(Lumo::IntfId intfId, SakId const& sak) const;
  Server const* server(Lumo::IntfId intfId, Macsec::MemberIdentifier const& id) const;
  bool isAsked(Lumo::IntfId intfId, SakId const& sak) const;
  Key* keyIs(Lumo::IntfId intfId, SakId const& sak);
  Server& serverIs(Lumo::IntfId intfId, Macsec::MemberIdentifier const& id);
  void keep(Lumo::IntfId intfId, Macsec::MemberIdentifier const& server);
  static std::string pathOf(Lumo::IntfId intfId, Macsec::MemberIdentifier const& server);
  static std::string textOf(Server const& server);
  static bool read(std::string const& text, Server& out);

  StateStore* const store_;
  std::map<Lumo::IntfId, Servers> servers_;
  std::map<Lumo::IntfId, std::vector<SakId>> asked_;
  uint64_t arrivals_ = 0;
  StateChange pending_;
};

}  // namespace Macsecd
