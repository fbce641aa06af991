#include "lab/judge/DataLoss.h"

#include <fmt/format.h>

#include <algorithm>

#include "lab/world/Clock.h"

namespace Lab {

namespace {

char const* textOf(SecY::Verdict verdict) {
  switch (verdict) {
    case SecY::Verdict::valid:
      return "valid, and not what was sent";
    case SecY::Verdict::untagged:
      return "in clear";
    case SecY::Verdict::noSa:
      return "under no key that is installed";
    case SecY::Verdict::late:
      return "with a packet number that has come before";
    case SecY::Verdict::invalid:
      return "under another key";
  }
  return "";
}

}  // namespace

std::string DataLoss::Lost::text() const {
  return fmt::format("frame {} from {} to {}, sent at {}, is lost: {}", number, from.text(),
                     to.text(), timeText(sentAt), why);
}

bool DataLoss::isOpen(PortName const& port) const {
  return simulation_.switchOf(port.switchName).passes(Lumo::IntfId(port.interface.c_str()));
}

void DataLoss::dataSent(double time, DataSent const& sent) {
  for (WireSpec const& wire : simulation_.scenario().wires) {
    if (std::ranges::find(wire.ends, sent.from) == wire.ends.end()) continue;
    for (PortName const& to : wire.ends) {
      if (to == sent.from || !isOpen(to)) continue;
      if (sent.frame.empty()) {
        lost_.push_back(
            {time, sent.from, to, sent.number, "the port is open, and has no key to send with"});
      } else {
        expected_.insert({sent.from, to, sent.number});
      }
    }
  }
}

void DataLoss::dataArrived(double, DataArrived const& arrived) {
  bool const wasOpen = expected_.erase({arrived.from, arrived.to, arrived.number}) > 0;
  bool const passed = arrived.verdict == SecY::Verdict::valid && arrived.isSame;
  if (arrived.isOpen && passed) ++passed_;
  if (passed || !wasOpen || !arrived.isOpen) return;
  lost_.push_back({arrived.sentAt, arrived.from, arrived.to, arrived.number,
                   std::string("it came ") + textOf(arrived.verdict)});
}

}  // namespace Lab
