#include "lab/MadeFrame.h"
#include "lab/Simulation.h"
#include "runtime/Assert.h"

// Frames that no switch has sent.

namespace Lab {

void Simulation::carryOut(SendFrame const& send) {
  WireEnd const* const at = wireAt(send.port);
  VESK_ASSERT(at);
  Switch& to = switchOf(send.port.switchName);
  Lumo::IntfId const intfId(send.port.interface.c_str());
  auto const port = to.host().status()->portStatus(intfId);
  auto const frame = port ? madeFrame(to.lastAccepted(intfId), send.defect, *port) : std::nullopt;
  if (!frame || !to.isUp(intfId)) {
    std::string const text =
        "no frame is made: " + send.port.text() + " is down or has accepted none";
    for (Audience* audience : audience_) audience->acted(clock_.now, text);
    return;
  }
  for (Audience* audience : audience_) audience->captured(clock_.now, at->wire, *frame);
  to.receive(intfId, *frame);
}

}  // namespace Lab
