#include "lab/judge/invariants/NothingLost.h"

#include <fmt/format.h>

#include <algorithm>

namespace Lab {

NothingLost::NothingLost(Simulation const& simulation, Calm const& calm)
    : Invariant(
          simulation, "nothing-lost",
          fmt::format("Between two open ports that frames pass, and that nothing has disturbed "
                      "for {} seconds, no frame of data is lost, and neither of them closes, "
                      "whatever key takes over.",
                      kSettled)),
      calm_(calm),
      loss_(simulation) {}

void NothingLost::dataSent(double time, DataSent const& sent) {
  loss_.dataSent(time, sent);
  judge();
}

void NothingLost::dataArrived(double time, DataArrived const& arrived) {
  loss_.dataArrived(time, arrived);
  judge();
  bool const passed = arrived.verdict == SecY::Verdict::valid && arrived.isSame && arrived.isOpen;
  if (passed) passed_.insert({arrived.from, arrived.to});
}

void NothingLost::happened(Event const& event) {
  auto const* const changed = eventOf(event, Macsecd::EventKind::state);
  if (!changed) return;
  PortName const port{event.switchName, changed->interface};
  judgeChange(port);
  std::erase_if(passed_, [&](auto const& way) { return way.first == port || way.second == port; });
}

void NothingLost::judgeChange(PortName const& port) {
  auto const isOfPort = [&](auto const& way) { return way.first == port; };
  auto const wire = wireOf(simulation(), port);
  if (!wire || calm_.of(*wire) < kSettled || std::ranges::none_of(passed_, isOfPort)) return;
  breaks(port.text() + " closes, and nothing has disturbed it");
}

void NothingLost::judge() {
  for (; judged_ < loss_.lost().size(); ++judged_) {
    DataLoss::Lost const& lost = loss_.lost()[judged_];
    auto const wire = wireOf(simulation(), lost.from);
    bool const isMeant =
        passed_.contains({lost.from, lost.to}) && passed_.contains({lost.to, lost.from});
    if (wire && isMeant && calm_.of(*wire) >= kSettled) breaks(lost.text());
  }
}

}  // namespace Lab
