#include "lab/judge/SecuredTime.h"

#include <algorithm>

namespace Lab {

namespace {

// One end of a wire.
struct End {
  Switch const& owner;
  Lumo::IntfId intfId;

  bool isOpen() const { return owner.isUp(intfId) && owner.host().isOpen(intfId); }
  Vesk::Ptr<Macsec::CpStatus const> cpStatus() const {
    return owner.host().status()->cpStatus(intfId);
  }
  Vesk::Ptr<Macsec::MacSecIntfStatus const> hardware() const {
    return owner.hardware().slice()->status(intfId);
  }
};

// The emulated hardware goes on receiving with a key that nobody asks for any more; no other does.
bool passes(End const& from, End const& to) {
  auto const sends = from.hardware(), receives = to.hardware();
  auto const tx = sends ? sends->txSaStatus() : nullptr;
  auto const rx = tx && receives ? receives->rxSaStatus(tx->associationNumber()) : nullptr;
  return rx && to.cpStatus()->rxSak(tx->associationNumber()) && rx->keyId() == tx->keyId() &&
         rx->keyNum() == tx->keyNum() && to.cpStatus()->peerSsci() == from.cpStatus()->mySsci();
}

bool arePaired(End const& a, End const& b) {
  return a.isOpen() && b.isOpen() && passes(a, b) && passes(b, a);
}

}  // namespace

void SecuredTime::instantDone(double time) {
  seconds_ += static_cast<double>(secured_) * (time - last_);
  last_ = time;
  secured_ = securedPorts();
}

size_t SecuredTime::securedPorts() const {
  size_t secured = 0;
  for (WireSpec const& wire : simulation_.scenario().wires) {
    std::vector<End> ends;
    for (PortName const& port : wire.ends) {
      ends.push_back({simulation_.switchOf(port.switchName), Lumo::IntfId(port.interface.c_str())});
    }
    for (End const& end : ends) {
      secured += std::ranges::any_of(
          ends, [&](End const& other) { return &other != &end && arePaired(end, other); });
    }
  }
  return secured;
}

}  // namespace Lab
