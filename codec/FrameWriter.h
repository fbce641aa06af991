#pragma once

#include "codec/ActorKeys.h"
#include "codec/Dialect.h"
#include "codec/FrameBuffer.h"
#include "codec/Ports.h"
#include "codec/Refusal.h"
#include "model/MkaMessageInfo.h"

namespace Codec {

/// Writes one message as a frame: headers, basic set, peer lists, SAK use, distributed SAK,
/// distributed CAK, ICV indicator, ICV.
///
/// Every frame has room for all of these but the peer lists, which replayed MKPDUs can make as long
/// as they like. What doesn't fit is left out of them, and the frame goes out: first those
/// potential peers that only other members list, then those that were heard, then live peers. A
/// peer that is left out hears the frame all the same, lists this end in its own, and so becomes
/// live. A SAK that another key server has made is left out.
class FrameWriter {
 public:
  explicit FrameWriter(Port& port) : port_(port) {}

  /// Refuses what no frame can say: a message without an actor, an address or a key, a text that is
  /// no member identifier, a key that doesn't decode.
  Refusal write(Macsec::MkaMessageInfo const& message);
  std::span<uint8_t const> frame() const { return buffer_.octets(); }
  /// How many peers were left out of the frame for want of room.
  size_t livePeersLeftOut() const { return livePeersLeftOut_; }
  size_t potentialPeersLeftOut() const { return potentialPeersLeftOut_; }

 private:
  using PeerMap = Macsec::MkaMessageInfo::LivePeerMap;

  Refusal writeSets(Macsec::MkaMessageInfo const& message);
  Refusal writeEapol();
  Refusal writeBasic(Macsec::BasicInfo const& info);
  Refusal writePeers(uint8_t type, PeerMap const& peers);
  bool putPeers(std::span<uint8_t> records, PeerMap const& peers, bool areCut);
  size_t roomForPeers() const;
  Refusal writeSakUse(Macsec::SakUseInfo const& info);
  bool isSakOf(Vesk::String8 const& member) const;
  Refusal writeDistSak(Macsec::SakDistInfo const& info);
  Refusal writeDistCak(Macsec::CakDistInfo const& info);
  Refusal writeIcv();

  std::span<uint8_t const> name() const;
  uint8_t* appendSet(size_t head, size_t bodyLength);
  Refusal refusal(SubType subType, char const* what) const;

  Port& port_;
  ActorKeys* actor_ = nullptr;
  FrameBuffer buffer_;
  size_t livePeersLeftOut_ = 0;
  size_t potentialPeersLeftOut_ = 0;
};

}  // namespace Codec
