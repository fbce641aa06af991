#include "lab/scenario/ExpectationParser.h"

#include <fmt/format.h>

#include "lab/scenario/CountParts.h"
#include "lab/scenario/ExpectationParts.h"

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

What parseUses(PortName const& port, Words& words, Known const& known) {
  if (words.take("no key")) return UsesKey{port, std::nullopt};
  if (words.take("a key from 802.1X")) return UsesDerivedKey{port};
  words.need("key");
  return UsesKey{port, words.keyName(known)};
}

HasPeerPacketNumber parsePacketNumber(PortName const& port, Words& words) {
  HasPeerPacketNumber expected{port, words.number("a packet number", 0, UINT32_MAX), {}};
  words.need("from its peer");
  if (words.take("for AN")) {
    expected.an = static_cast<uint8_t>(words.number("an association number", 0, 3));
  }
  return expected;
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
  if (words.take("primary key")) return HasPrimaryKey{port, false};
  words.unknown("thing that a port has", {"key server", "live peer", "forwarding entry",
                                          "sakTransmit", "SAK", "primary key"});
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
  if (words.take("a primary key")) return HasPrimaryKey{port, true};
  if (words.take("packet number")) return parsePacketNumber(port, words);
  if (words.take("the same SAK")) return parseSameSak(port, true, words, known);
  if (words.take("another SAK")) return parseSameSak(port, false, words, known);
  if (words.take("rotated")) return parseRotated(port, words, known);
  if (words.take("live peers") || words.take("live peer")) {
    return parseNamedPeers(port, words, known);
  }
  if (words.atNumber()) return parseCountedPeers(port, words, known);
  words.unknown(
      "thing that a port has",
      {"key server", "live peers", "no", "forwarding entry unauthorized", "sakTransmit", "a SAK",
       "a primary key", "packet number", "the same SAK", "another SAK", "rotated"});
}

What parseWhat(Words& words, Known const& known) {
  Words port = words;
  auto switchName = words.switchName(known);
  if (auto what = parseOfSwitch(switchName, words, known)) return std::move(*what);
  auto name = port.port(known);
  words = port;
  if (words.take("is key server")) return HasKeyServer{name, switchName, parseUnder(words, known)};
  if (words.take("is")) return parseState(name, words);
  if (words.take("uses")) return parseUses(name, words, known);
  if (words.take("has")) return parseHas(name, words, known);
  if (words.take("counts")) return parseCounts(name, words);
  if (words.take("explains")) return parseExplains(name, words);
  words.unknown("expectation", {"is", "uses", "has", "counts", "explains", "logs"});
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

// The mark that the expectation looks back to.
std::optional<Mark> markOf(What const& what) {
  return std::visit(
      [](auto const& expected) -> std::optional<Mark> {
        if constexpr (requires { expected.since; }) {
          return expected.since;
        } else if constexpr (requires { expected.as; }) {
          auto const* mark = std::get_if<Mark>(&expected.as);
          return mark ? std::optional<Mark>(*mark) : std::nullopt;
        } else {
          return std::nullopt;
        }
      },
      what);
}

}  // namespace

Expectation parseExpectation(Words& words, When const& when, Known const& known) {
  int column = words.column();
  Expectation expectation{0, {}, when, parseWhat(words, known)};
  words.needEnd();
  expectation.text = words.text();
  if (auto const* logs = std::get_if<Logs>(&expectation.what)) checkSpan(*logs, when, column);
  auto const mark = markOf(expectation.what);
  double earliest = when.span == Span::by ? when.to : when.from;
  if (mark && known.marks.at(mark->name) > earliest) {
    Words::failAt(column, fmt::format("the mark '{}' is set later than this", mark->name),
                  "set it earlier, or expect this later");
  }
  return expectation;
}

}  // namespace Lab
