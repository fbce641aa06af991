#include "linux/serve/LineProtocol.h"

#include <fmt/format.h>

#include "linux/serve/LineBuffer.h"

namespace Linux {

namespace {

class Lines final : public Conversation {
 public:
  Lines(LineProtocol::Handlers const& handlers, SocketPeer peer)
      : handlers_(handlers), peer_(std::move(peer)) {}

  std::span<uint8_t> room() override { return lines_.room(); }
  Verdict take(size_t octets, Answer const& answer) override {
    lines_.filled(octets);
    bool goesOn = true;
    lines_.takeLines(
        [&](std::span<uint8_t> line) { return goesOn = answer(handlers_.take(peer_, line)); });
    if (!goesOn || !lines_.isFull()) return Verdict::goesOn;
    answer(handlers_.refuse({fmt::format("a line of more than {} octets", LineBuffer::kMaxLine),
                             "end each line with a newline"}));
    return Verdict::isBroken;
  }
  Verdict inputEnds(Answer const& answer) override {
    if (!lines_.hasRest()) return Verdict::ends;
    answer(
        handlers_.refuse({"the connection ended within a line", "end each line with a newline"}));
    return Verdict::isBroken;
  }

 private:
  LineProtocol::Handlers const& handlers_;
  SocketPeer const peer_;
  LineBuffer lines_;
};

}  // namespace

std::unique_ptr<Conversation> LineProtocol::begin(SocketPeer const& peer) {
  return std::make_unique<Lines>(handlers_, peer);
}

}  // namespace Linux
