#include "lab/ExpectationParser.h"

#include <fmt/format.h>

namespace Lab {

namespace {

using What = decltype(Expectation::what);

std::optional<std::string> parseUnder(Words& words, Known const& known) {
  if (!words.take("under")) return std::nullopt;
  return words.keyName(known);
}

PortIs parseState(PortName const& port, Words& words) {
  if (words.take("open")) return {port, PortState::open};
  if (words.take("closed")) return {port, PortState::closed};
  if (words.take("absent")) return {port, PortState::absent};
  if (words.take("not open")) return {port, PortState::notOpen};
  words.unknown("state of a port", {"open", "closed", "absent", "not open", "key server"});
}

UsesKey parseUses(PortName const& port, Words& words, Known const& known) {
  if (words.take("no key")) return {port, std::nullopt};
  words.need("key");
  return {port, words.keyName(known)};
}

HasLivePeers parseCountedPeers(PortName const& port, Words& words, Known const& known) {
  HasLivePeers peers{port, words.number("a number of peers", 0, 1000), {}, {}};
  if (!words.take("live peers")) words.need("live peer");
  peers.under = parseUnder(words, known);
  return peers;
}

HasLivePeers parseNamedPeers(PortName const& port, Words& words, Known const& known) {
  HasLivePeers peers{port, 0, {}, {}};
  do {
    peers.switches.push_back(words.switchName(known));
    words.take("and");
    peers.under = parseUnder(words, known);
  } while (!words.atEnd() && !peers.under);
  peers.count = static_cast<uint32_t>(peers.switches.size());
  return peers;
}

SameSak parseSameSak(PortName const& port, bool same, Words& words, Known const& known) {
  words.need(same ? "as" : "than");
  if (words.take("at")) return {port, same, words.mark(known)};
  return {port, same, words.port(known)};
}

HasRotated parseRotated(PortName const& port, Words& words, Known const& known) {
  HasRotated rotated{port, words.number("a number of rotations", 0, 1000000), {}};
  if (!words.take("times")) words.need("time");
  if (words.take("since")) rotated.since = words.mark(known);
  return rotated;
}

What parseHasNo(PortName const& port, Words& words, Known const& known) {
  if (words.take("key server")) return HasKeyServer{port, {}, parseUnder(words, known)};
  if (words.take("live peer")) return HasLivePeers{port, 0, {}, parseUnder(words, known)};
  if (words.take("forwarding entry")) return HasForwardingEntry{port, false};
  if (words.take("sakTransmit")) return HasSakTransmit{port, false};
  if (words.take("SAK")) return HasSak{port, false};
  words.unknown("thing that a port has",
                {"key server", "live peer", "forwarding entry", "sakTransmit", "SAK"});
}

What parseHas(PortName const& port, Words& words, Known const& known) {
  if (words.take("no")) return parseHasNo(port, words, known);
  if (words.take("key server")) {
    auto name = words.switchName(known);
    return HasKeyServer{port, name, parseUnder(words, known)};
  }
  if (words.take("forwarding entry unauthorized")) return HasForwardingEntry{port, true};
  if (words.take("sakTransmit")) return HasSakTransmit{port, true};
  if (words.take("a SAK")) return HasSak{port, true};
  if (words.take("the same SAK")) return parseSameSak(port, true, words, known);
  if (words.take("another SAK")) return parseSameSak(port, false, words, known);
  if (words.take("rotated")) return parseRotated(port, words, known);
  if (words.take("live peers") || words.take("live peer")) {
    return parseNamedPeers(port, words, known);
  }
  if (words.atNumber()) return parseCountedPeers(port, words, known);
  words.unknown("thing that a port has",
                {"key server", "live peers", "no", "forwarding entry unauthorized", "sakTransmit",
                 "a SAK", "the same SAK", "another SAK", "rotated"});
}

Logs parseLogs(std::string const& switchName, Words& words) {
  Logs logs{switchName, {}, {}, 1, {}};
  if (words.take("no")) {
    logs.min = 0;
    logs.max = 0;
  } else if (words.atNumber()) {
    logs.min = words.number("a number of lines", 1, 1000000);
    logs.max = logs.min;
  }
  logs.name = words.any("the name of a syslog message");
  if (!words.take("with")) return logs;
  do {
    bool whatever = words.take("*");
    if (whatever) {
      logs.arguments.emplace_back();
    } else {
      logs.arguments.emplace_back(words.any("an argument"));
    }
  } while (!words.atEnd());
  return logs;
}

What parseWhat(Words& words, Known const& known) {
  Words port = words;
  auto switchName = words.switchName(known);
  if (words.take("logs")) return parseLogs(switchName, words);
  auto name = port.port(known);
  words = port;
  if (words.take("is key server")) return HasKeyServer{name, switchName, parseUnder(words, known)};
  if (words.take("is")) return parseState(name, words);
  if (words.take("uses")) return parseUses(name, words, known);
  if (words.take("has")) return parseHas(name, words, known);
  words.unknown("expectation", {"is", "uses", "has", "logs"});
}

/// Lines come at instants: not every way to give a time fits them.
void checkSpan(Logs const& logs, When const& when, int column) {
  bool none = logs.max == 0u;
  if (when.span == Span::throughout && logs.min == 1 && !logs.max) {
    Words::failAt(column, "a line doesn't last", "write 'between TIME and TIME expect ...'");
  }
  if (when.span == Span::exactly && logs.max) {
    Words::failAt(column,
                  none ? "no line comes exactly at a time" : "lines are counted over a span",
                  "write 'by TIME' or 'between TIME and TIME'");
  }
}

Mark const* markOf(What const& what) {
  if (auto const* sak = std::get_if<SameSak>(&what)) return std::get_if<Mark>(&sak->as);
  auto const* rotated = std::get_if<HasRotated>(&what);
  return rotated && rotated->since ? &*rotated->since : nullptr;
}

}  // namespace

Expectation parseExpectation(Words& words, When const& when, Known const& known) {
  int column = words.column();
  Expectation expectation{0, {}, when, parseWhat(words, known)};
  words.needEnd();
  expectation.text = words.text();
  if (auto const* logs = std::get_if<Logs>(&expectation.what)) checkSpan(*logs, when, column);
  auto const* mark = markOf(expectation.what);
  double earliest = when.span == Span::by ? when.to : when.from;
  if (mark && known.marks.at(mark->name) > earliest) {
    Words::failAt(column, fmt::format("the mark '{}' is set later than this", mark->name),
                  "set it earlier, or expect this later");
  }
  return expectation;
}

}  // namespace Lab
