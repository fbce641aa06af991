#include "lab/random/RandomFaults.h"

#include <fmt/format.h>

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
  static std::vector<Kind> const all = {
      {12, &F::loseSome},       {4, &F::loseShare},   {2, &F::delay},       {3, &F::shuffle},
      {2, &F::corrupt},         {6, &F::cut},         {5, &F::replay},      {6, &F::flapLink},
      {4, &F::remakeInterface}, {1, &F::sendBroken},  {8, &F::restart},     {2, &F::exit},
      {2, &F::shutDown},        {5, &F::hardware},    {3, &F::changeKey},   {2, &F::packetNumber},
      {2, &F::removeKey},       {6, &F::publishAnew}, {3, &F::priority},    {2, &F::rekeyPeriod},
      {2, &F::delayProtection}, {1, &F::suite},       {6, &F::thirdMember}, {3, &F::spendKey},
      {2, &F::deviceDown}};
  return all;
}

void RandomFaults::begin() {
  for (auto const& link : net_.links) {
    if (link.dot1x) publishOn(link, dice_.seconds(0.5, 10), dice_.chance(50) ? 0 : aWhile(15));
    if (link.hasThird) at(0, "link down on C " + link.interface());
  }
}

void RandomFaults::draw() {
  begin();
  uint32_t const faults = dice_.number(1, kMostFaults);
  for (uint32_t i = 0; i < faults; ++i) drawOneOf(kinds());
}

void RandomFaults::drawSome() {
  begin();
  std::vector<Kind> some;
  for (Kind const& kind : kinds()) {
    if (dice_.chance(kKept)) some.push_back(kind);
  }
  uint32_t const faults = some.empty() ? 0 : dice_.number(1, kMostOfSome);
  for (uint32_t i = 0; i < faults; ++i) drawOneOf(some);
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

void RandomFaults::loseSome() {
  at(now_, fmt::format("lose {} frames {}", dice_.number(1, 8), aWay()));
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
  at(now_, fmt::format("{} {} {}", dice_.chance(50) ? "reorder" : "duplicate",
                       dice_.chance(50) ? "every frame" : "50 percent", way));
  at(now_ + aWhile(), "repair " + way);
}

void RandomFaults::corrupt() {
  at(now_, fmt::format("corrupt byte {} of {} frames {}", dice_.number(0, 120), dice_.number(1, 5),
                       aWay()));
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
  bool const isBoth = dice_.chance(50);
  std::string const end = anEnd();
  for (std::string const& name : {end, other(end)}) {
    if (name != end && !isBoth) continue;
    at(now_, "link down on " + name + " " + link.interface());
    at(up, "link up on " + name + " " + link.interface());
  }
  if (link.dot1x) publishOn(link, up + aWhile(5), dice_.chance(70) ? 0 : aWhile(15));
}

void RandomFaults::deviceDown() {
  std::string const port = aPort();
  at(now_, "device down on " + port);
  at(now_ + aWhile(), "device up on " + port);
}

void RandomFaults::remakeInterface() {
  RandomNet::Link const& link = aLink();
  std::string const end = anEnd(), place = link.interface() + " on " + end;
  double const made = now_ + aWhile(15);
  at(now_, "delete interface " + place);
  at(made, "make interface " + place +
               (dice_.chance(50)
                    ? fmt::format(" with address 02:00:00:00:01:{:02x}", dice_.number(0, 255))
                    : ""));
  if (link.dot1x) publishOn(link, made + aWhile(5), 0);
}

void RandomFaults::sendBroken() {
  at(now_, fmt::format("send a frame with {} to {}",
                       dice_.oneOf<std::string>({"icvValidationErr", "livePeerListErr",
                                                 "sakUseSetErr", "distSakSetErr"}),
                       aPort()));
}

void RandomFaults::thirdMember() {
  if (!net_.hasThird) return loseSome();
  at(now_, "link up on C " + net_.links[0].interface());
  at(now_ + aWhile(), "link down on C " + net_.links[0].interface());
}

void RandomFaults::restart() {
  std::string const end = anEnd();
  at(now_,
     "restart " + end + (dice_.chance(50) ? fmt::format(" after {}", dice_.seconds(0.1, 20)) : ""));
  if (dice_.chance(20)) at(now_, "restart " + other(end));
}

// A process that can't start in FIPS mode ends again and again.
void RandomFaults::exit() {
  std::string const end = anEnd();
  if (dice_.chance(50)) at(now_, "FIPS provider of " + end + " is missing");
  at(now_, "set FIPS of " + end + " to on");
  at(now_ + aWhile(20), "FIPS provider of " + end + " is there");
}

void RandomFaults::shutDown() {
  std::string const end = anEnd();
  at(now_, "shutdown " + end);
  at(now_ + aWhile(20), "no shutdown " + end);
}

void RandomFaults::hardware() {
  std::string const end = anEnd();
  at(now_,
     "hardware of " + end +
         (dice_.chance(50) ? " is silent" : fmt::format(" is slow by {}", dice_.seconds(0.1, 10))));
  at(now_ + aWhile(), "hardware of " + end + " is normal");
}

void RandomFaults::packetNumber() {
  at(now_, fmt::format("hardware of {} reports packet number 0xc0000001 on {}{}", anEnd(),
                       aLink().interface(), dice_.chance(50) ? " for its next key" : ""));
}

void RandomFaults::spendKey() {
  at(now_, fmt::format("hardware of {} has spent its key on {}", anEnd(), aLink().interface()));
}

// A new key on one end and then on the other; the same name now and then.
void RandomFaults::changeKey() {
  RandomNet::Link const& link = aLink();
  bool const isFallback = link.dot1x || dice_.chance(40);
  uint32_t const key = newKeys_++;
  double time = now_;
  std::string const first = anEnd();
  for (std::string const& end : {first, other(first)}) {
    at(time, fmt::format("set {}key of profile {} on {} to {} {}", isFallback ? "fallback " : "",
                         link.profile(), end, keyName(key), keyText(key)));
    time += aWhile();
  }
}

void RandomFaults::removeKey() {
  RandomNet::Link const& link = aLink();
  std::string const end = anEnd();
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
  bool const isAFirst = dice_.chance(50);
  at(time + (isAFirst ? 0 : apart),
     fmt::format("publish 802.1X key on A {} {}", link.interface(), session));
  at(time + (isAFirst ? apart : 0),
     fmt::format("publish 802.1X key on B {} of type 1 {}", link.interface(), session));
}

void RandomFaults::priority() {
  at(now_, fmt::format("set priority of profile {} on {} to {}", aLink().profile(), anEnd(),
                       dice_.number(1, 30)));
}

void RandomFaults::rekeyPeriod() {
  at(now_, fmt::format("set rekey period of profile {} on {} to {}", aLink().profile(), anEnd(),
                       dice_.number(5, 60)));
}

void RandomFaults::delayProtection() {
  std::string const end = anEnd();
  at(now_, "set delay protection of " + end + " to on");
  if (dice_.chance(50)) at(now_ + aWhile(), "set delay protection of " + end + " to off");
}

// Both ends, one after the other, and back.
void RandomFaults::suite() {
  std::string const profile = aLink().profile(), first = anEnd();
  auto const set = [&](double time, std::string const& end, char const* suite) {
    at(time, fmt::format("set cipher suite of profile {} on {} to {}", profile, end, suite));
  };
  double const apart = aWhile(20), back = 20 + aWhile(20);
  set(now_, first, "gcm-aes-xpn-256");
  if (dice_.chance(70)) set(now_ + apart, other(first), "gcm-aes-xpn-256");
  set(now_ + back, first, "gcm-aes-xpn-128");
  set(now_ + back + apart, other(first), "gcm-aes-xpn-128");
}

}  // namespace Lab
