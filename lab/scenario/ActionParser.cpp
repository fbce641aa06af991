#include "lab/scenario/ActionParser.h"

#include <fmt/format.h>

#include "lab/scenario/ActionParts.h"
#include "lab/scenario/CountParts.h"

namespace Lab {

namespace {

constexpr size_t kMostCommits = 1'000'000;

// "up on A Ethernet1".
template <class Change>
Change parseUpOrDown(std::string_view what, Words& words, Known const& known) {
  bool up = words.take("up");
  if (!up && !words.take("down")) words.unknown(what, {"up", "down"});
  words.need("on");
  return {words.port(known), up};
}

// "on Ethernet1", behind the name of the switch.
PortName parseInterfaceOf(std::string const& name, Words& words, Known const& known) {
  words.need("on");
  int column = words.column();
  PortName port{name, words.any("the interface")};
  if (known.ports.count(port) || known.unsure.count(name)) return port;
  Words::failAt(column, fmt::format("{} has no interface {}", name, port.interface),
                Macsecd::remedyForUnknown(port.interface, known.interfacesOf(name)));
}

decltype(Action::what) parseHardware(Words& words, Known const& known) {
  words.need("of");
  auto name = words.switchName(known);
  if (words.take("is normal")) return HardwareChange{name, HardwareMood::normal};
  if (words.take("is silent")) return HardwareChange{name, HardwareMood::silent};
  if (words.take("is slow by")) return HardwareChange{name, HardwareMood::slow, words.time()};
  if (words.take("has spent its key")) return KeySpent{parseInterfaceOf(name, words, known)};
  if (words.take("loses its key")) return KeyLost{parseInterfaceOf(name, words, known)};
  if (words.take("reports packet number")) {
    auto number = words.number("a packet number", 0, UINT32_MAX);
    PortName const port = parseInterfaceOf(name, words, known);
    return PacketNumber{port, number, words.take("for its next key")};
  }
  words.unknown("state of hardware", {"is normal", "is silent", "is slow by", "has spent its key",
                                      "loses its key", "reports packet number"});
}

FipsProviderChange parseFipsProvider(Words& words, Known const& known) {
  auto name = words.switchName(known);
  bool isThere = words.take("is there");
  if (!isThere && !words.take("is missing")) words.unknown("state", {"is there", "is missing"});
  return {name, isThere};
}

Restart parseRestart(Words& words, Known const& known) {
  Restart restart{words.switchName(known)};
  restart.keepsState = !words.take("without its state");
  if (words.take("after")) restart.deadFor = words.time();
  return restart;
}

Kill parseKill(Words& words, Known const& known) {
  Kill kill{words.switchName(known)};
  kill.isTaken = words.take("at commit");
  if (!kill.isTaken && !words.take("before commit")) {
    words.unknown("moment", {"at commit", "before commit"});
  }
  kill.commit = words.number("the number of a commit", 1, kMostCommits);
  if (words.take("after")) kill.deadFor = words.time();
  return kill;
}

Standstill parseStandstill(Words& words, Known const& known) {
  auto name = words.switchName(known);
  if (!words.take("for")) words.unknown("span", {"for"});
  return {name, words.time()};
}

ClockRate parseClock(Words& words, Known const& known) {
  ClockRate clock{words.switchName(known)};
  if (words.take("runs right")) return clock;
  if (!words.take("runs")) words.unknown("rate", {"runs", "runs right"});
  double const share = words.number("a number of percent", 1, 50) / 100.0;
  bool const isFast = words.take("percent fast");
  if (!isFast && !words.take("percent slow")) {
    words.unknown("rate", {"percent fast", "percent slow"});
  }
  clock.rate = isFast ? 1 + share : 1 - share;
  return clock;
}

StoreChange parseStore(Words& words, Known const& known) {
  auto name = words.switchName(known);
  bool const refuses = words.take("refuses");
  if (!refuses && !words.take("is well")) words.unknown("state", {"refuses", "is well"});
  return {name, refuses};
}

Mark parseMark(Words& words, double at, Known& known) {
  int column = words.column();
  Mark mark{words.any("the name of the mark")};
  if (known.marks.emplace(mark.name, at).second) return mark;
  Words::failAt(column, fmt::format("the mark '{}' is set twice", mark.name),
                "give each mark a name of its own");
}

decltype(Action::what) parseWhat(Words& words, double at, Known& known) {
  if (auto kind = takeFault(words)) return parseFault(*kind, words, known);
  if (words.take("link")) return parseUpOrDown<LinkChange>("state of a link", words, known);
  if (words.take("device")) return parseUpOrDown<DeviceChange>("state of a device", words, known);
  if (words.take("set")) return parseSet(words, known);
  if (words.take("remove")) return parseRemove(words, known);
  if (words.take("publish")) return parsePublish(words, known);
  if (words.take("withdraw")) return parseWithdraw(words, known);
  if (words.take("shutdown")) return ShutdownChange{words.switchName(known), true};
  if (words.take("no shutdown")) return ShutdownChange{words.switchName(known), false};
  if (words.take("reload")) return parseReload(words, known);
  if (words.take("clear counters of")) return CountersCleared{words.switchName(known)};
  if (words.take("FIPS provider of")) return parseFipsProvider(words, known);
  if (words.take("restart")) return parseRestart(words, known);
  if (words.take("kill")) return parseKill(words, known);
  if (words.take("stop")) return parseStandstill(words, known);
  if (words.take("clock of")) return parseClock(words, known);
  if (words.take("store of")) return parseStore(words, known);
  if (words.take("hardware")) return parseHardware(words, known);
  if (words.take("send a frame with")) return parseSendFrame(words, known);
  if (words.take("replay")) return parseReplay(words, known);
  if (words.take("delete interface")) return parseInterface(false, words, known);
  if (words.take("make interface")) return parseInterface(true, words, known);
  if (words.take("mark")) return parseMark(words, at, known);
  words.unknown("action", {"expect",
                           "link",
                           "device",
                           "lose",
                           "duplicate",
                           "reorder",
                           "corrupt",
                           "delay",
                           "cut",
                           "repair",
                           "set",
                           "remove",
                           "publish",
                           "withdraw",
                           "shutdown",
                           "no shutdown",
                           "reload",
                           "clear counters of",
                           "FIPS provider of",
                           "restart",
                           "kill",
                           "stop",
                           "clock of",
                           "store of",
                           "hardware",
                           "send a frame with",
                           "replay",
                           "delete interface",
                           "make interface",
                           "mark"});
}

// Whether the last word of the action is a key.
bool endsWithKey(Action const& action) {
  auto const* change = std::get_if<KeyChange>(&action.what);
  auto const* dot1x = std::get_if<Dot1xKeyChange>(&action.what);
  return (change && change->key) || (dot1x && dot1x->key);
}

}  // namespace

Action parseAction(Words& words, double at, Known& known) {
  Action action{0, at, {}, parseWhat(words, at, known)};
  words.needEnd();
  action.text = words.text(endsWithKey(action) ? words.position() - 1 : SIZE_MAX);
  return action;
}

}  // namespace Lab
