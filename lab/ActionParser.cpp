#include "lab/ActionParser.h"

#include <fmt/format.h>

namespace Lab {

namespace {

using Macsecd::Fault;

LinkChange parseLink(Words& words, Known const& known) {
  bool up = words.take("up");
  if (!up && !words.take("down")) words.unknown("state of a link", {"up", "down"});
  words.need("on");
  return {words.port(known), up};
}

Share parseShare(Words& words) {
  if (words.take("every frame")) return {std::nullopt, 100};
  double amount = words.decimal("a number of frames or percent", 0, UINT32_MAX);
  if (words.take("percent")) {
    if (amount <= 100) return {std::nullopt, amount};
    words.fail("more than 100 percent", "write a number from 0 to 100");
  }
  if (!words.take("frames") && !words.take("frame")) {
    words.unknown("share", {"frames", "percent"});
  }
  auto frames = static_cast<uint32_t>(amount);
  if (frames != amount || frames == 0) words.fail("no whole number of frames", "write 1 or more");
  return {frames, 0};
}

WireFault parseFault(FaultKind kind, Words& words, Known const& known) {
  WireFault fault{kind, {}, false, {}};
  if (kind == FaultKind::corrupt) {
    words.need("byte");
    fault.octet = words.number("the number of a byte", 0, 65535);
    words.need("of");
  }
  if (kind == FaultKind::delay) {
    words.need("frames by");
    fault.delay = words.time();
  } else if (kind != FaultKind::cut && kind != FaultKind::repair) {
    fault.share = parseShare(words);
  }
  fault.bothWays = words.take("both ways at");
  if (!fault.bothWays && !words.take("from")) words.unknown("way", {"from", "both ways at"});
  fault.port = words.wiredPort(known);
  return fault;
}

void check(std::optional<Fault> const& fault, int column) {
  if (fault) Words::failAt(column, fault->what, fault->remedy);
}

KeyChange parseNewKey(bool fallback, Words& words, Known& known) {
  KeyChange change{words.profileOn(known), fallback, {}};
  words.need("to");
  int column = words.column();
  Macsecd::KeyConfig key;
  key.ckn = words.any("the name of the key");
  check(Macsecd::faultOfKeyName(key.ckn), column);
  column = words.column();
  auto text = words.any("the key");
  key.cak = Vesk::String8::secret(text);
  auto fault = Macsecd::faultOfKey(text);
  Macsecd::wipe(text);
  check(fault, column);
  known.keyNames.insert(key.ckn);
  change.key = std::move(key);
  return change;
}

SuiteChange parseSuite(Words& words, Known const& known) {
  auto profile = words.profileOn(known);
  words.need("to");
  for (auto const& word : Macsecd::suiteWords()) {
    if (words.take(word)) return {profile, *Macsecd::suiteOf(word)};
  }
  words.unknown("cipher suite", Macsecd::suiteWords());
}

decltype(Action::what) parseSet(Words& words, Known& known) {
  if (words.take("key")) return parseNewKey(false, words, known);
  if (words.take("fallback key")) return parseNewKey(true, words, known);
  if (words.take("cipher suite")) return parseSuite(words, known);
  if (words.take("priority")) {
    auto profile = words.profileOn(known);
    words.need("to");
    return PriorityChange{profile, static_cast<uint8_t>(words.number("a priority", 0, 255))};
  }
  if (words.take("rekey period")) {
    auto profile = words.profileOn(known);
    words.need("to");
    return RekeyPeriodChange{profile, words.number("a number of seconds", 0, UINT32_MAX)};
  }
  words.unknown("setting", {"key", "fallback key", "priority", "rekey period", "cipher suite"});
}

KeyChange parseRemove(Words& words, Known const& known) {
  bool fallback = words.take("fallback");
  words.need("key");
  return {words.profileOn(known), fallback, std::nullopt};
}

decltype(Action::what) parseHardware(Words& words, Known const& known) {
  words.need("of");
  auto name = words.switchName(known);
  if (words.take("is normal")) return HardwareChange{name, HardwareMood::normal};
  if (words.take("is silent")) return HardwareChange{name, HardwareMood::silent};
  if (words.take("is slow by")) return HardwareChange{name, HardwareMood::slow, words.time()};
  if (words.take("reports packet number")) {
    auto number = words.number("a packet number", 0, UINT32_MAX);
    words.need("on");
    int column = words.column();
    PortName port{name, words.any("the interface")};
    if (!known.ports.count(port) && !known.unsure.count(name)) {
      Words::failAt(column, fmt::format("{} has no interface {}", name, port.interface),
                    Macsecd::remedyForUnknown(port.interface, known.interfacesOf(name)));
    }
    return PacketNumber{port, number};
  }
  words.unknown("state of hardware",
                {"is normal", "is silent", "is slow by", "reports packet number"});
}

Mark parseMark(Words& words, double at, Known& known) {
  int column = words.column();
  Mark mark{words.any("the name of the mark")};
  if (known.marks.emplace(mark.name, at).second) return mark;
  Words::failAt(column, fmt::format("the mark '{}' is set twice", mark.name),
                "give each mark a name of its own");
}

std::optional<FaultKind> takeFault(Words& words) {
  struct {
    char const* word;
    FaultKind kind;
  } const kinds[] = {
      {"lose", FaultKind::lose},       {"duplicate", FaultKind::duplicate},
      {"reorder", FaultKind::reorder}, {"corrupt", FaultKind::corrupt},
      {"delay", FaultKind::delay},     {"cut", FaultKind::cut},
      {"repair", FaultKind::repair},
  };
  for (auto const& [word, kind] : kinds) {
    if (words.take(word)) return kind;
  }
  return std::nullopt;
}

decltype(Action::what) parseWhat(Words& words, double at, Known& known) {
  if (auto kind = takeFault(words)) return parseFault(*kind, words, known);
  if (words.take("link")) return parseLink(words, known);
  if (words.take("set")) return parseSet(words, known);
  if (words.take("remove")) return parseRemove(words, known);
  if (words.take("shutdown")) return ShutdownChange{words.switchName(known), true};
  if (words.take("no shutdown")) return ShutdownChange{words.switchName(known), false};
  if (words.take("restart")) return Restart{words.switchName(known)};
  if (words.take("hardware")) return parseHardware(words, known);
  if (words.take("mark")) return parseMark(words, at, known);
  words.unknown("action", {"expect", "link", "lose", "duplicate", "reorder", "corrupt", "delay",
                           "cut", "repair", "set", "remove", "shutdown", "no shutdown", "restart",
                           "hardware", "mark"});
}

}  // namespace

Action parseAction(Words& words, double at, Known& known) {
  Action action{0, at, {}, parseWhat(words, at, known)};
  words.needEnd();
  auto const* change = std::get_if<KeyChange>(&action.what);
  bool hasKey = change && change->key;
  action.text = words.text(hasKey ? words.position() - 1 : SIZE_MAX);
  return action;
}

}  // namespace Lab
