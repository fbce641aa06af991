#pragma once

#include <cstdint>
#include <utility>

#include "model/PeerListSet.h"
#include "runtime/String8.h"

namespace Codec {

/// One entry of a peer list, as it stands in the tables of a message.
class ListedPeer {
 public:
  ListedPeer() = default;
  ListedPeer(Vesk::String8 msgId, uint32_t msgNum) : msgId_(std::move(msgId)), msgNum_(msgNum) {}

  /// Member identifier.
  Vesk::String8 const& msgId() const { return msgId_; }
  void msgIdIs(Vesk::String8 v) { msgId_ = std::move(v); }
  /// Message number last heard from it.
  uint32_t msgNum() const { return msgNum_; }
  void msgNumIs(uint32_t v) { msgNum_ = v; }

 private:
  Vesk::String8 msgId_;
  uint32_t msgNum_ = 0;
};

/// The list of live peers (type 1) or of potential peers (type 2). An empty list is left out.
///
///       0               1               2               3
///      +---------------+---------------+-------+-----------------------+
///    0 | type (1, 2)   | 0             | 0     | body length           |
///      +---------------+---------------+-------+-----------------------+
///    4 | member identifier (12)                                        |  16 octets for each
///      +---------------------------------------------------------------+  peer
///   16 | message number                                                |
///      +---------------------------------------------------------------+
struct PeerList {
  using Set = Macsec::PeerInfoParameter;
  using Info = ListedPeer;

  template <class Walk>
  static void fields(Walk&& walk) {
    walk("member identifier", &Set::memberIdentifier, &Set::memberIdentifierIs, &Info::msgId,
         &Info::msgIdIs);
    walk("message number", &Set::messageNumber, &Set::messageNumberIs, &Info::msgNum,
         &Info::msgNumIs);
  }
};

}  // namespace Codec
