#include "lab/random/RandomFaults.h"

#include <fmt/format.h>

#include <algorithm>

namespace Lab {

namespace {

// Between these times faults begin; repairs come at `kLastRepair` at the latest.
constexpr double kFirstFault = 3, kLastFault = 100, kLastRepair = 125;
constexpr uint32_t kMostFaults = 5;
// Where kinds are left out: how many of a hundred are kept, and how many faults there are at most.
constexpr double kKept = 40;
constexpr uint32_t kMostOfSome = 12;

}  // namespace

// How often a kind is drawn against the others.
std::vector<RandomFaults::Kind> const& RandomFaults::kinds() {
  using F = RandomFaults;
  using P = FaultProfile;
  static std::vector<Kind> const all = {{12, &F::loseSome, P::wires},
                                        {4, &F::loseShare, P::wires},
                                        {2, &F::delay, P::wires},
                                        {3, &F::shuffle, P::wires},
                                        {2, &F::corrupt, P::wires},
                                        {6, &F::cut, P::wires},
                                        {5, &F::replay, P::wires},
                                        {6, &F::flapLink, P::interfaces},
                                        {4, &F::remakeInterface, P::interfaces},
                                        {1, &F::sendBroken, P::wires},
                                        {8, &F::restart, P::processes, true},
                                        {2, &F::exit, P::processes, true},
                                        {2, &F::shutDown, P::configurations},
                                        {5, &F::hardware, P::hardware},
                                        {3, &F::changeKey, P::configurations},
                                        {2, &F::packetNumber, P::hardware},
                                        {2, &F::removeKey, P::configurations},
                                        {6, &F::publishAnew, P::configurations},
                                        {3, &F::priority, P::configurations},
                                        {2, &F::rekeyPeriod, P::configurations},
                                        {2, &F::delayProtection, P::configurations},
                                        {1, &F::suite, P::configurations},
                                        {6, &F::thirdMember, P::interfaces},
                                        {3, &F::spendKey, P::hardware},
                                        {2, &F::deviceDown, P::interfaces}};
  return all;
}

// What happens in swarms alone.
std::vector<RandomFaults::Kind> const& RandomFaults::kindsOfSwarms() {
  using F = RandomFaults;
  using P = FaultProfile;
  static std::vector<Kind> const all = {
      {6, &F::kill, P::processes, true},      {3, &F::standStill, P::processes},
      {2, &F::loseState, P::processes, true}, {2, &F::fillStore, P::processes},
      {3, &F::loseKey, P::hardware},          {2, &F::suiteOfOne, P::configurations},
      {2, &F::clockRate, P::processes}};
  return all;
}

void RandomFaults::begin() {
  for (auto const& link : net_.links) {
    if (link.dot1x) {
      double const time = dice_.seconds(0.5, 10);
      publishOn(link, time, dice_.chance(50) ? 0 : aWhile(15));
    }
    if (link.hasThird) at(0, "link down on Z " + link.interface());
  }
}

void RandomFaults::draw() {
  begin();
  uint32_t const faults = dice_.number(1, kMostFaults);
  for (uint32_t i = 0; i < faults; ++i) drawOneOf(kinds());
}

void RandomFaults::drawSome(FaultProfile profile) {
  begin();
  std::vector<Kind> some;
  for (auto const* from : {&kinds(), &kindsOfSwarms()}) {
    for (Kind const& kind : *from) {
      bool const isMeant = profile == FaultProfile::all || kind.profile == profile;
      if (isMeant && dice_.chance(kKept)) some.push_back(kind);
    }
  }
  leaveStatesWhole(some);
  uint32_t const faults = some.empty() ? 0 : dice_.number(1, kMostOfSome);
  for (uint32_t i = 0; i < faults; ++i) drawOneOf(some);
}

// A process that ends while its store refuses leaves an older state, from which nobody can go on as
// if nothing had happened.
void RandomFaults::leaveStatesWhole(std::vector<Kind>& kinds) {
  auto const fillsStore = [](Kind const& kind) { return kind.draw == &RandomFaults::fillStore; };
  if (std::ranges::none_of(kinds, fillsStore)) return;
  std::erase_if(kinds, [](Kind const& kind) { return kind.endsProcesses; });
}

void RandomFaults::drawOneOf(std::vector<Kind> const& kinds) {
  now_ = dice_.seconds(kFirstFault, kLastFault);
  uint32_t sum = 0;
  for (Kind const& kind : kinds) sum += kind.weight;
  uint32_t drawn = dice_.number(1, sum);
  for (Kind const& kind : kinds) {
    if (drawn <= kind.weight) return (this->*kind.draw)();
    drawn -= kind.weight;
  }
}

void RandomFaults::at(double time, std::string const& action) {
  text_ += fmt::format("at {:.1f} {}\n", std::min(time, kLastRepair), action);
}

std::string RandomFaults::otherThan(std::string const& name) const {
  auto const found = std::ranges::find(net_.switches, name.front());
  bool const isLast = found + 1 == net_.switches.end();
  return {isLast ? net_.switches.front() : found[1]};
}

std::string RandomFaults::aPort() {
  RandomNet::Link const& link = aLink();
  return anEndOf(link) + " " + link.interface();
}

std::string RandomFaults::aProfile() {
  RandomNet::Link const& link = aLink();
  return "profile " + link.profile() + " on " + anEndOf(link);
}

std::string RandomFaults::aWay() {
  bool const isOneWay = dice_.chance(65);
  return (isOneWay ? "from " : "both ways at ") + aPort();
}

void RandomFaults::loseSome() {
  uint32_t const frames = dice_.number(1, 8);
  at(now_, fmt::format("lose {} frames {}", frames, aWay()));
}

void RandomFaults::loseShare() {
  std::string const way = aWay();
  at(now_, fmt::format("lose {} percent {}", dice_.number(5, 70), way));
  at(now_ + aWhile(60), "repair " + way);
}

void RandomFaults::delay() {
  std::string const way = aWay();
  at(now_, fmt::format("delay frames by {} {}", dice_.seconds(0.1, 4), way));
  at(now_ + aWhile(), "repair " + way);
}

void RandomFaults::shuffle() {
  std::string const way = aWay();
  std::string const what = dice_.chance(50) ? "reorder" : "duplicate";
  std::string const share = dice_.chance(50) ? "every frame" : "50 percent";
  at(now_, what + " " + share + " " + way);
  at(now_ + aWhile(), "repair " + way);
}

void RandomFaults::corrupt() {
  uint32_t const octet = dice_.number(0, 120), frames = dice_.number(1, 5);
  at(now_, fmt::format("corrupt byte {} of {} frames {}", octet, frames, aWay()));
}

void RandomFaults::cut() {
  std::string const way = aWay();
  at(now_, "cut " + way);
  if (dice_.chance(95)) at(now_ + aWhile(), "repair " + way);
}

void RandomFaults::replay() {
  std::string const which = dice_.oneOf<std::string>(
      {"first frame", "last frame", "every frame", "every frame with dist-sak"});
  at(now_, fmt::format("replay {} to {}", which, aPort()));
}

// 802.1X gives another key on the way up.
void RandomFaults::flapLink() {
  RandomNet::Link const& link = aLink();
  double const up = now_ + aWhile();
  bool const isBoth = dice_.chance(50), first = dice_.chance(50);
  for (bool const end : {first, !first}) {
    if (end != first && !isBoth) continue;
    at(now_, "link down on " + link.end(end) + " " + link.interface());
    at(up, "link up on " + link.end(end) + " " + link.interface());
  }
  if (!link.dot1x) return;
  double const published = up + aWhile(5);
  publishOn(link, published, dice_.chance(70) ? 0 : aWhile(15));
}

void RandomFaults::deviceDown() {
  std::string const port = aPort();
  at(now_, "device down on " + port);
  at(now_ + aWhile(), "device up on " + port);
}

void RandomFaults::remakeInterface() {
  RandomNet::Link const& link = aLink();
  std::string const place = link.interface() + " on " + anEndOf(link);
  double const made = now_ + aWhile(15);
  std::string const address =
      dice_.chance(50) ? fmt::format(" with address 02:00:00:00:01:{:02x}", dice_.number(0, 255))
                       : "";
  at(now_, "delete interface " + place);
  at(made, "make interface " + place + address);
  if (link.dot1x) publishOn(link, made + aWhile(5), 0);
}

void RandomFaults::sendBroken() {
  std::string const defect = dice_.oneOf<std::string>(
      {"icvValidationErr", "livePeerListErr", "sakUseSetErr", "distSakSetErr"});
  at(now_, fmt::format("send a frame with {} to {}", defect, aPort()));
}

void RandomFaults::thirdMember() {
  if (!net_.hasThird) return loseSome();
  at(now_, "link up on Z " + net_.links[0].interface());
  at(now_ + aWhile(), "link down on Z " + net_.links[0].interface());
}

void RandomFaults::restart() {
  std::string const name = aSwitch();
  std::string const after =
      dice_.chance(50) ? fmt::format(" after {}", dice_.seconds(0.1, 20)) : "";
  at(now_, "restart " + name + after);
  if (dice_.chance(20)) at(now_, "restart " + otherThan(name));
}

// At one of the next commits to its store.
void RandomFaults::kill() {
  std::string const name = aSwitch();
  std::string const moment = dice_.chance(70) ? "at" : "before";
  uint32_t const commit = dice_.number(1, 40);
  std::string const after =
      dice_.chance(60) ? fmt::format(" after {}", dice_.seconds(0.1, 10)) : "";
  at(now_, fmt::format("kill {} {} commit {}{}", name, moment, commit, after));
}

void RandomFaults::standStill() {
  std::string const name = aSwitch();
  at(now_, fmt::format("stop {} for {}", name, dice_.seconds(0.5, 15)));
}

void RandomFaults::clockRate() {
  std::string const name = aSwitch();
  uint32_t const percent = dice_.number(1, 3);
  std::string const way = dice_.chance(50) ? "fast" : "slow";
  at(now_, fmt::format("clock of {} runs {} percent {}", name, percent, way));
  if (dice_.chance(50)) at(now_ + aWhile(), "clock of " + name + " runs right");
}

void RandomFaults::loseState() {
  std::string const name = aSwitch();
  at(now_, fmt::format("restart {} without its state after {}", name, dice_.seconds(0.1, 20)));
}

void RandomFaults::fillStore() {
  std::string const name = aSwitch();
  at(now_, "store of " + name + " refuses");
  at(now_ + aWhile(), "store of " + name + " is well");
}

// A process that can't start in FIPS mode ends again and again.
void RandomFaults::exit() {
  std::string const name = aSwitch();
  if (dice_.chance(50)) at(now_, "FIPS provider of " + name + " is missing");
  at(now_, "set FIPS of " + name + " to on");
  at(now_ + aWhile(20), "FIPS provider of " + name + " is there");
}

void RandomFaults::shutDown() {
  std::string const name = aSwitch();
  at(now_, "shutdown " + name);
  at(now_ + aWhile(20), "no shutdown " + name);
}

void RandomFaults::hardware() {
  std::string const name = aSwitch();
  std::string const mood =
      dice_.chance(50) ? " is silent" : fmt::format(" is slow by {}", dice_.seconds(0.1, 10));
  at(now_, "hardware of " + name + mood);
  at(now_ + aWhile(), "hardware of " + name + " is normal");
}

void RandomFaults::packetNumber() {
  RandomNet::Link const& link = aLink();
  std::string const end = anEndOf(link);
  at(now_, fmt::format("hardware of {} reports packet number 0xc0000001 on {}{}", end,
                       link.interface(), dice_.chance(50) ? " for its next key" : ""));
}

void RandomFaults::spendKey() {
  RandomNet::Link const& link = aLink();
  at(now_, fmt::format("hardware of {} has spent its key on {}", anEndOf(link), link.interface()));
}

void RandomFaults::loseKey() {
  RandomNet::Link const& link = aLink();
  at(now_, fmt::format("hardware of {} loses its key on {}", anEndOf(link), link.interface()));
}

// A new key on one end and then on the other; the same name now and then.
void RandomFaults::changeKey() {
  RandomNet::Link const& link = aLink();
  bool const isFallback = link.dot1x || dice_.chance(40), first = dice_.chance(50);
  uint32_t const key = newKeys_++;
  double time = now_;
  for (bool const end : {first, !first}) {
    at(time, fmt::format("set {}key of profile {} on {} to {} {}", isFallback ? "fallback " : "",
                         link.profile(), link.end(end), keyName(key), keyText(key)));
    time += aWhile();
  }
}

void RandomFaults::removeKey() {
  RandomNet::Link const& link = aLink();
  std::string const end = anEndOf(link);
  bool const isFallback = link.dot1x || dice_.chance(60);
  std::string const what =
      fmt::format("{}key of profile {} on {}", isFallback ? "fallback " : "", link.profile(), end);
  uint32_t const key = isFallback ? 2 : 1;
  at(now_, "remove " + what);
  at(now_ + aWhile(), fmt::format("set {} to {} {}", what, keyName(key), keyText(key)));
}

void RandomFaults::publishAnew() {
  RandomNet::Link const& link = aLink();
  if (!link.dot1x) return changeKey();
  publishOn(link, now_, dice_.chance(30) ? 0 : aWhile());
}

// The authenticator's end may come first or last.
void RandomFaults::publishOn(RandomNet::Link const& link, double time, double apart) {
  ++sessions_;
  std::string const session =
      fmt::format("of session {0:04x} and master key {0:04x}{1:0124x}", sessions_, 1);
  bool const isFirst = dice_.chance(50);
  at(time + (isFirst ? 0 : apart),
     fmt::format("publish 802.1X key on {} {} {}", link.a, link.interface(), session));
  at(time + (isFirst ? apart : 0),
     fmt::format("publish 802.1X key on {} {} of type 1 {}", link.b, link.interface(), session));
}

void RandomFaults::priority() {
  std::string const profile = aProfile();
  at(now_, fmt::format("set priority of {} to {}", profile, dice_.number(1, 30)));
}

void RandomFaults::rekeyPeriod() {
  std::string const profile = aProfile();
  at(now_, fmt::format("set rekey period of {} to {}", profile, dice_.number(20, 60)));
}

void RandomFaults::delayProtection() {
  std::string const name = aSwitch();
  at(now_, "set delay protection of " + name + " to on");
  if (dice_.chance(50)) at(now_ + aWhile(), "set delay protection of " + name + " to off");
}

// Both ends, one after the other, and back.
void RandomFaults::suite() {
  RandomNet::Link const& link = aLink();
  bool const first = dice_.chance(50);
  auto const set = [&](double time, bool end, char const* suite) {
    at(time, fmt::format("set cipher suite of profile {} on {} to {}", link.profile(),
                         link.end(end), suite));
  };
  double const apart = aWhile(20), back = 20 + aWhile(20);
  set(now_, first, "gcm-aes-xpn-256");
  if (dice_.chance(70)) set(now_ + apart, !first, "gcm-aes-xpn-256");
  set(now_ + back, first, "gcm-aes-xpn-128");
  set(now_ + back + apart, !first, "gcm-aes-xpn-128");
}

// For long enough that neither end is in the middle of anything.
void RandomFaults::suiteOfOne() {
  RandomNet::Link const& link = aLink();
  std::string const what =
      fmt::format("set cipher suite of profile {} on {} to ", link.profile(), anEndOf(link));
  at(now_, what + "gcm-aes-xpn-256");
  at(now_ + 40 + aWhile(20), what + "gcm-aes-xpn-128");
}

}  // namespace Lab
