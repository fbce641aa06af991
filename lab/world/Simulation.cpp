#include "lab/world/Simulation.h"

#include "runtime/Assert.h"

namespace Lab {

namespace {

// More than ever happens at one instant: beyond it something arms itself for the present for ever.
constexpr int kMostAtOneInstant = 1'000'000;

PortName portOf(Switch const& owner, Lumo::IntfId intfId) {
  return {owner.name(), intfId.stringValue().charPtr()};
}

}  // namespace

Simulation::Simulation(Scenario const& scenario, uint32_t seed)
    : scenario_(scenario),
      nextData_(scenario.dataEvery.value_or(kNever)),
      faultsEnd_(scenario.faultsEnd.value_or(kNever)) {
  audienceIs(sakHistory_);
  for (WireSpec const& wire : scenario.wires) {
    size_t const index = wires_.size();
    for (size_t end = 0; end < wire.ends.size(); ++end) ends_[wire.ends[end]] = {index, end};
    wires_.emplace_back(wire.ends.size(), wire.delay.value_or(scenario.frameDelay),
                        Random(seed, Stream::wire, static_cast<uint32_t>(index)));
  }
  for (Expectation const& expectation : scenario.expectations) {
    looks_.insert({expectation.when.from, expectation.when.to});
  }
  looks_.insert(scenario.runUntil);
  recorded_.resize(wires_.size());
  makeSwitches(seed);
}

Simulation::~Simulation() {
  switches_.clear();
  VESK_ASSERT(nonces_.repeats().empty() || noncesAreLookedAt_);
}

std::vector<std::string> const& Simulation::nonceRepeats() {
  noncesAreLookedAt_ = true;
  return nonces_.repeats();
}

void Simulation::makeSwitches(uint32_t seed) {
  Switch::Outlets const outlets{
      [this](Switch& from, Lumo::IntfId intfId, std::span<uint8_t const> frame) {
        carry(from, intfId, frame);
      },
      [this](Switch const& from, TreeWatch::What what) { tell(from, std::move(what)); }};
  for (SwitchSpec const& spec : scenario_.switches) {
    auto const index = static_cast<uint32_t>(switches_.size());
    switches_.push_back(
        std::make_unique<Switch>(spec, scenario_, clock_, seed, index, nonces_, outlets));
    starts_.emplace(spec.start, switches_.back().get());
  }
}

Switch& Simulation::switchOf(std::string const& name) const {
  for (auto const& one : switches_) {
    if (one->name() == name) return *one;
  }
  VESK_ASSERT_NAMED(false, "the parser lets no unknown switch through");
  std::abort();
}

SwitchRecord Simulation::markedRecord(Mark const& mark, std::string const& switchName) const {
  auto const marked = marked_.find({mark.name, switchName});
  return marked == marked_.end() ? SwitchRecord() : marked->second;
}

void Simulation::run() {
  for (;;) {
    double const next = nextTime();
    if (!notAfter(next, scenario_.runUntil)) return;
    clock_.now = instantFrom(next);
    settle();
    for (Audience* audience : audience_) audience->instantDone(clock_.now);
  }
}

double Simulation::nextTime() const {
  double next = std::min(nextData_, faultsEnd_);
  if (!dataInFlight_.empty()) next = std::min(next, dataInFlight_.front().time);
  if (!starts_.empty()) next = std::min(next, starts_.begin()->first);
  if (nextAction_ < scenario_.actions.size()) {
    next = std::min(next, scenario_.actions[nextAction_].at);
  }
  for (auto const& one : switches_) next = std::min(next, one->nextTime());
  if (!inFlight_.empty()) next = std::min(next, inFlight_.top().time);
  if (!looks_.empty()) next = std::min(next, *looks_.begin());
  return next;
}

// The time that the clock shows at the instant that begins with `next`: in whole microseconds if it
// may, and after no timer that belongs to it.
double Simulation::instantFrom(double next) const {
  double const rounded = roundedTime(next);
  double now = std::max(clock_.now, sameInstant(rounded, next) ? rounded : next);
  for (auto const& one : switches_) {
    double const time = one->nextTime();
    if (time > now && sameInstant(time, now)) now = time;
  }
  return now;
}

void Simulation::settle() {
  looks_.erase(looks_.begin(), looks_.upper_bound(clock_.now + kInstant));
  startDue();
  actDue();
  for (int i = 0; runOne() || deliverOne(); ++i) VESK_ASSERT(i < kMostAtOneInstant);
  deliverDueData();
  sendDueData();
}

void Simulation::startDue() {
  while (!starts_.empty() && notAfter(starts_.begin()->first, clock_.now)) {
    Switch* const starting = starts_.begin()->second;
    starts_.erase(starts_.begin());
    for (Audience* audience : audience_) audience->acted(clock_.now, starting->name() + " starts");
    starting->start();
  }
}

void Simulation::actDue() {
  auto const& actions = scenario_.actions;
  while (nextAction_ < actions.size() && notAfter(actions[nextAction_].at, clock_.now)) {
    act(actions[nextAction_++]);
  }
  if (!notAfter(faultsEnd_, clock_.now)) return;
  faultsEnd_ = kNever;
  endFaults();
}

bool Simulation::runOne() {
  for (auto const& one : switches_) {
    if (one->runOne()) return true;
  }
  return false;
}

bool Simulation::deliverOne() {
  if (inFlight_.empty() || !notAfter(inFlight_.top().time, clock_.now)) return false;
  InFlight const flight = inFlight_.top();
  inFlight_.pop();
  deliver(flight);
  return true;
}

void Simulation::deliver(InFlight const& flight) {
  auto const& ends = scenario_.wires[flight.wire].ends;
  for (size_t end = 0; end < ends.size(); ++end) {
    if (end == flight.from) continue;
    Switch& to = switchOf(ends[end].switchName);
    Lumo::IntfId const intfId(ends[end].interface.c_str());
    if (to.isUp(intfId)) to.receive(intfId, flight.frame);
  }
}

void Simulation::carry(Switch& from, Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  WireEnd const* const at = wireAt(portOf(from, intfId));
  if (!at || !from.isUp(intfId)) return;
  for (Audience* audience : audience_) audience->captured(clock_.now, at->wire, frame);
  recorded_[at->wire].push_back(
      {clock_.now, portOf(from, intfId), Frame(frame.begin(), frame.end())});
  for (Flight& flight : wires_[at->wire].sent(at->end, frame)) {
    inFlight_.push(
        {clock_.now + flight.delay, departures_++, at->wire, at->end, std::move(flight.frame)});
  }
}

Simulation::WireEnd const* Simulation::wireAt(PortName const& port) const {
  auto const end = ends_.find(port);
  return end == ends_.end() ? nullptr : &end->second;
}

void Simulation::tell(Switch const& from, TreeWatch::What what) {
  Event const event{clock_.now, from.name(), std::move(what)};
  for (Audience* audience : audience_) audience->happened(event);
}

}  // namespace Lab
