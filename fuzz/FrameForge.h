#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "fuzz/Input.h"
#include "model/BasicParameterSet.h"
#include "platform/AesCmac.h"
#include "platform/KeyWrap.h"

namespace Fuzz {

using Frame = std::vector<uint8_t>;

/// Somebody of whom a frame may speak, as the sender or as a peer.
struct Member {
  Macsec::MemberIdentifier identifier;
  Macsec::SciParameterSet sci;
  uint32_t messageNumber = 0;
};

/// Makes MKPDUs with right ICVs and wrapped keys out of the octets of an input: what a member of
/// the CA can send that holds the CAK and nothing else of the protocol. Most fields are right most
/// of the time, so that what lies behind each check is reached.
class FrameForge {
 public:
  /// Both hexadecimal texts.
  FrameForge(std::string_view cak, std::string_view ckn);

  /// A frame by one of the cast or a stranger.
  Frame made(Input& in, std::span<Member const> cast);
  /// Puts the length of what follows the EAPOL header into it, and a right ICV behind it.
  void seal(Frame& frame);
  /// A right ICV alone.
  void sign(Frame& frame);

 private:
  void putBasicSet(Input& in, Member const& sender, Frame& frame);
  void putSet(Input& in, std::span<Member const> cast, Frame& frame);
  void putPeers(Input& in, uint8_t type, std::span<Member const> cast, Frame& frame);
  static void putKeyUse(Input& in, std::span<Member const> cast, Frame& frame);
  static void putSakUse(Input& in, std::span<Member const> cast, Frame& frame);
  void putDistSak(Input& in, Frame& frame);
  void putDistCak(Input& in, Frame& frame);
  void putWrapped(Input& in, size_t octets, Frame& frame);

  std::vector<uint8_t> name_;
  Macsec::AesCmac ick_;
  Macsec::KeyWrap kek_;
};

}  // namespace Fuzz
