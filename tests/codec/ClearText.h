#pragma once

#include <string>

#include "model/MkaMessageInfo.h"
#include "platform/WardcodeLib.h"
#include "runtime/Text.h"

namespace Codec {

/// The message with its keys in clear, since each encoding of a key differs.
inline std::string clearText(Macsec::MkaMessageInfo const& message) {
  auto const& info = *message.mkaInfo();
  std::string text = Vesk::valueToStrep(info.baseInfo()) + Vesk::valueToStrep(info.sakUseInfo());
  auto sak = info.sakDistInfo();
  sak.sakIs(WardcodeLib::doDecodeKey(sak.sak()));
  auto cak = info.cakDistInfo();
  cak.cakIs(WardcodeLib::doDecodeKey(cak.cak()));
  text += Vesk::valueToStrep(sak) + Vesk::valueToStrep(cak);
  for (auto const& peer : message.livePeer()) {
    text += "L" + std::string(peer.fwkKey().view()) + std::to_string(peer.value());
  }
  for (auto const& peer : message.potentialPeer()) {
    text += "P" + std::string(peer.fwkKey().view()) + std::to_string(peer.value());
  }
  return text;
}

}  // namespace Codec
