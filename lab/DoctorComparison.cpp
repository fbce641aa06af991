#include "lab/DoctorComparison.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "lab/judge/SecuredTime.h"
#include "lab/random/RandomScenario.h"
#include "lab/scenario/ScenarioParser.h"
#include "runtime/Assert.h"

namespace Lab {

namespace {

using Macsecd::kPortTroubles;
using Macsecd::PortTrouble;
using Macsecd::PortTroubles;

// Less is the rounding of sums.
constexpr double kSame = 1e-3;

// What a doctor logs as it acts on a port.
constexpr std::array<std::string_view, 3> kActs = {
    "MACSECD_PORT_BOUND_ANEW", "MACSECD_GOES_OVER_LATE", "MACSECD_ELECTS_AGAIN"};

// Whether a doctor acts on a port.
class Doctors final : public Audience {
 public:
  void happened(Event const& event) override {
    auto const* const line = std::get_if<SyslogLine>(&event.what);
    haveActed_ = haveActed_ || (line && std::ranges::find(kActs, line->name) != kActs.end());
  }
  bool haveActed() const { return haveActed_; }

 private:
  bool haveActed_ = false;
};

struct Outcome {
  double secured;  ///< port-seconds
  bool doctorActed;
  std::vector<std::string> nonceRepeats;
};

Outcome play(Scenario scenario, PortTroubles const& treated) {
  scenario.treatedTroubles = treated;
  Simulation simulation(scenario, *scenario.seed);
  SecuredTime secured(simulation);
  Doctors doctors;
  simulation.audienceIs(secured);
  simulation.audienceIs(doctors);
  simulation.run();
  return {secured.seconds(), doctors.haveActed(), simulation.nonceRepeats()};
}

double possibleIn(Scenario const& scenario) {
  double ports = 0;
  for (WireSpec const& wire : scenario.wires) ports += static_cast<double>(wire.ends.size());
  return ports * scenario.runUntil;
}

}  // namespace

void Benefit::add(double secondsWith, double secondsWithout) {
  ++acted;
  with += secondsWith;
  without += secondsWithout;
  if (secondsWith > secondsWithout + kSame) ++better;
  if (secondsWith < secondsWithout - kSame) ++worse;
}

// A doctor that never acts changes nothing, whatever it would act on.
void DoctorComparison::add(uint32_t seed) {
  auto const read = parseScenario(randomScenario(seed), "random");
  VESK_ASSERT(read.good());
  auto const played = [&](PortTroubles const& treated) {
    Outcome outcome = play(read.scenario, treated);
    for (std::string const& repeat : outcome.nonceRepeats) nonceRepeats_[seed].insert(repeat);
    return outcome;
  };
  Outcome const with = played(Macsecd::allPortTroubles());
  ++scenarios_;
  possible_ += possibleIn(read.scenario);
  secured_ += with.secured;
  if (!with.doctorActed) return;
  double const without = played({}).secured;
  all_.add(with.secured, without);
  differences_[seed] = with.secured - without;
  for (PortTrouble const trouble : kPortTroubles) {
    Outcome const alone = played({trouble});
    if (alone.doctorActed) alone_[trouble].add(alone.secured, without);
  }
}

Benefit DoctorComparison::of(PortTrouble trouble) const {
  auto const found = alone_.find(trouble);
  return found == alone_.end() ? Benefit() : found->second;
}

bool DoctorComparison::passes() const {
  return nonceRepeats_.empty() && all_.passes() &&
         std::ranges::all_of(kPortTroubles,
                             [&](PortTrouble trouble) { return of(trouble).passes(); });
}

}  // namespace Lab
