#include <algorithm>
#include <array>
#include <string_view>

#include "fuzz/FuzzedScenario.h"
#include "fuzz/Require.h"
#include "lab/judge/invariants/Invariants.h"
#include "lab/world/Simulation.h"
#include "model/Eapol.h"
#include "model/Overlay.h"

// Any octets as what happens to two switches, and what somebody on their wire sends. Whatever it
// is, the invariants of the proving ground hold; of who holds a key and sends what no member would,
// those that can.

namespace {

using Fuzz::Member;
using Fuzz::require;

// What somebody who holds the CAK can break: he is the key server if he likes, and distributes what
// he likes. A set of an unknown type in a frame that is taken in counts as a failure beside it.
constexpr std::array<std::string_view, 6> kBreakable = {"data-passes",        "nothing-lost",
                                                        "ends-agree",         "one-key-server",
                                                        "secured-in-the-end", "counters-add-up"};
// Whoever sends anything is a cause that an explanation may name.
constexpr std::string_view kNamesVisitors = "explain-names-causes";

// Who has been heard on the wire last, as frames of visitors may speak of them; and these frames.
class Visitors final : public Lab::Audience {
 public:
  Visitors(Lab::Simulation& simulation, Fuzz::FuzzedScenario const& scenario)
      : simulation_(simulation), scenario_(scenario) {}

  void captured(double, size_t, std::span<uint8_t const> frame) override {
    if (frame.size() < sizeof(Macsec::Eapol) + sizeof(Macsec::BasicParameterSet)) return;
    auto const& basic =
        *Macsec::overlayOn<Macsec::BasicParameterSet>(frame.data() + sizeof(Macsec::Eapol));
    Member& member = cast_[basic.sci().addr().bytes().back() == 1 ? 0 : 1];
    member = {basic.memberIdentifier(), basic.sci(), basic.messageNumber().value()};
  }
  void acts(double, Lab::Action const& action) override {
    auto const* const mark = std::get_if<Lab::Mark>(&action.what);
    if (mark) visit(scenario_.visits[std::stoul(mark->name)]);
  }

 private:
  void visit(Fuzz::Visit const& visit) {
    Lab::Switch& to = *simulation_.switches()[visit.to];
    Lumo::IntfId const intfId("e1");
    if (!to.isUp(intfId)) return;
    if (!visit.isForged) return to.receive(intfId, visit.octets);
    Fuzz::Input in(visit.octets);
    to.receive(intfId, forge(visit.key).made(in, cast_));
  }
  static Fuzz::FrameForge& forge(unsigned key) {
    static auto const forgeOf = [](unsigned number) {
      auto const [ckn, cak] = Fuzz::keyOf(number);
      return Fuzz::FrameForge(cak, ckn);
    };
    static std::array<Fuzz::FrameForge, 2> forges = {forgeOf(1), forgeOf(2)};
    return forges[key - 1];
  }

  Lab::Simulation& simulation_;
  Fuzz::FuzzedScenario const& scenario_;
  std::array<Member, 2> cast_;
};

// All handles of all switches trace everything.
void trace(Lab::Simulation const& simulation) {
  for (auto const& one : simulation.switches()) {
    Vesk::WorldScope const scope(one->world());
    Vesk::TraceHandle::streamLevelsIs("", Vesk::kAllTraceLevels);
  }
}

void judge(std::vector<Lab::Breach> const& breaches, Fuzz::FuzzedScenario const& fuzzed) {
  for (Lab::Breach const& breach : breaches) {
    bool const isBreakable =
        fuzzed.hasInsider() && std::ranges::find(kBreakable, breach.invariant) != kBreakable.end();
    bool const tellsVisitors = !fuzzed.visits.empty() && breach.invariant == kNamesVisitors;
    require(isBreakable || tellsVisitors, breach.text());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* octets, size_t size) {
  Fuzz::Input in({octets, size});
  Fuzz::FuzzedScenario const fuzzed = Fuzz::fuzzedScenario(in);
  Lab::Simulation simulation(fuzzed.scenario, fuzzed.scenario.seed.value());
  if (fuzzed.isTraced) trace(simulation);
  Visitors visitors(simulation, fuzzed);
  simulation.audienceIs(visitors);
  Lab::Invariants invariants(simulation);
  simulation.run();
  judge(invariants.breaches(), fuzzed);
  return 0;
}
