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
class FrameWriter {
 public:
  explicit FrameWriter(Port const& port) : port_(port) {}

  /// Refuses what no frame can say: a message without an actor, an address or a key, a text that is
  /// no member identifier, a key that doesn't decode, more peers than a frame has room for.
  Refusal write(Macsec::MkaMessageInfo const& message);
  std::span<uint8_t const> frame() const { return buffer_.octets(); }

 private:
  Refusal writeSets(Macsec::MkaMessageInfo const& message);
  Refusal writeEapol();
  Refusal writeBasic(Macsec::BasicInfo const& info);
  Refusal writePeers(uint8_t type, Macsec::MkaMessageInfo::LivePeerMap const& peers);
  Refusal writeSakUse(Macsec::SakUseInfo const& info);
  Refusal writeDistSak(Macsec::SakDistInfo const& info);
  Refusal writeDistCak(Macsec::CakDistInfo const& info);
  Refusal writeIcv();

  std::span<uint8_t const> name() const;
  uint8_t* appendSet(size_t head, size_t bodyLength);
  Refusal refusal(SubType subType, char const* what) const;

  Port const& port_;
  ActorKeys* actor_ = nullptr;
  FrameBuffer buffer_;
};

}  // namespace Codec
