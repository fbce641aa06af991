#include "lab/scenario/ScenarioParser.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <variant>

#include "host/config/InputFile.h"
#include "lab/scenario/ActionParser.h"
#include "lab/scenario/ExpectationParser.h"
#include "lab/scenario/SwitchParser.h"
#include "lab/scenario/Words.h"

namespace Lab {

namespace {

constexpr double kLeastDataEvery = 0.001;

std::vector<Line> linesOf(std::string_view text) {
  std::vector<Line> lines;
  int number = 0;
  while (!text.empty()) {
    ++number;
    auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    auto indentation = line.find_first_not_of(" \t\r");
    if (indentation != std::string_view::npos && line[indentation] != '#') {
      lines.push_back({number, indentation, line});
    }
  }
  return lines;
}

// What stands behind the word, as it was written.
std::string titleIn(std::string_view line) {
  line.remove_prefix(std::min(line.size(), std::string_view("title ").size()));
  line = line.substr(0, line.find_last_not_of(" \t\r") + 1);
  return std::string(line);
}

Codec::IcvIndicator parseIcvIndicator(Words& words) {
  if (words.take("of 4")) return Codec::IcvIndicator::length4;
  if (words.take("of 16")) return Codec::IcvIndicator::length16;
  if (words.take("left out")) return Codec::IcvIndicator::leftOut;
  words.unknown("ICV indicator", {"of 4", "of 16", "left out"});
}

/// Reads switches first, then wires, then what happens: so a scenario may tell them in any order,
/// and each name is checked at its place.
class ScenarioParser {
 public:
  ScenarioParser(std::string const& file, ScenarioResult& result)
      : result_(result), scenario_(result.scenario) {
    scenario_.file = file;
    known_.file = file;
  }

  void parse(std::string_view text) {
    std::vector<Line> wires, timed;
    auto lines = linesOf(text);
    scenario_.switches.reserve(lines.size());
    for (size_t at = 0; at < lines.size();) {
      size_t end = at + 1;
      while (end < lines.size() && lines[end].indentation > 0) ++end;
      std::vector<Line> below(lines.begin() + static_cast<long>(at) + 1,
                              lines.begin() + static_cast<long>(end));
      parseHead(lines[at], below, wires, timed);
      at = end;
    }
    for (auto const& line : wires) guarded(line, [&](Words& words) { parseWire(line, words); });
    checkWhole();
    for (auto const& line : timed) guarded(line, [&](Words& words) { parseTimed(line, words); });
    std::stable_sort(scenario_.actions.begin(), scenario_.actions.end(),
                     [](Action const& a, Action const& b) { return a.at < b.at; });
    for (auto const& action : scenario_.actions) {
      if (auto const* reload = std::get_if<Reload>(&action.what)) addLaterInterfaces(*reload);
    }
  }

 private:
  template <class Read>
  void guarded(Line const& line, Read read) {
    try {
      Words words(line.text);
      read(words);
    } catch (LineError const& error) {
      diagnose(line.number, error.column, error.what, error.remedy);
    }
  }

  void parseHead(Line const& line, std::vector<Line> const& below, std::vector<Line>& wires,
                 std::vector<Line>& timed) {
    guarded(line, [&](Words& words) {
      if (words.take("switch")) return parseSwitchHead(line, below, words);
      if (!below.empty() || line.indentation > 0) {
        diagnose(line.indentation > 0 ? line.number : below.front().number, 1,
                 "an indented line stands outside a switch", "begin the line without blanks");
      }
      if (words.take("wire")) return wires.push_back(line);
      for (auto word : {"at", "by", "from", "between", "exactly"}) {
        if (words.take(word)) return timed.push_back(line);
      }
      parseSetting(line, words);
    });
  }

  void parseSetting(Line const& line, Words& words) {
    auto once = [&](std::string const& word) {
      if (seen_.insert(word).second) return;
      Words::failAt(1, fmt::format("'{}' stands twice", word), "remove one");
    };
    if (words.take("title")) {
      once("title");
      scenario_.title = titleIn(line.text);
      return;
    }
    if (words.take("seed")) {
      once("seed");
      scenario_.seed = words.number("a seed", 0, UINT32_MAX);
    } else if (words.take("frame delay")) {
      once("frame delay");
      scenario_.frameDelay = words.time();
    } else if (words.take("data every")) {
      once("data every");
      scenario_.dataEvery = words.decimal("a time in seconds", kLeastDataEvery, 1e9);
    } else if (words.take("icv indicator")) {
      once("icv indicator");
      scenario_.icvIndicator = parseIcvIndicator(words);
    } else if (words.take("replay guard")) {
      once("replay guard");
      scenario_.replayGuard = words.onOrOff();
    } else if (words.take("port doctor")) {
      once("port doctor");
      if (!words.onOrOff()) scenario_.treatedTroubles.clear();
    } else if (words.take("faults end at")) {
      once("faults end at");
      scenario_.faultsEnd = words.time();
    } else if (words.take("invariants hold")) {
      once("invariants hold");
      scenario_.invariantsHold = true;
    } else if (words.take("run until")) {
      once("run until");
      scenario_.runUntil = words.time();
    } else {
      words.unknown("beginning of a line",
                    {"title", "seed", "frame delay", "data every", "icv indicator", "replay guard",
                     "port doctor", "faults end at", "invariants hold", "run until", "switch",
                     "wire", "at", "by", "from", "between", "exactly at"});
    }
    words.needEnd();
  }

  void parseSwitchHead(Line const& line, std::vector<Line> const& below, Words& words) {
    SwitchSpec spec;
    int column = words.column();
    spec.line = line.number;
    spec.name = words.any("the name of the switch");
    words.needEnd();
    size_t before = result_.diagnostics.size();
    parseSwitch(below, scenario_.file, spec, result_.diagnostics);
    if (auto first = known_.switches.find(spec.name); first != known_.switches.end()) {
      Words::failAt(column, fmt::format("switch {} stands twice", spec.name),
                    fmt::format("rename it here or in line {}", first->second->line));
    }
    scenario_.switches.push_back(std::move(spec));
    known_.add(scenario_.switches.back(), before == result_.diagnostics.size());
  }

  void parseWire(Line const& line, Words& words) {
    WireSpec wire;
    wire.line = line.number;
    words.need("wire");
    do {
      int column = words.column();
      PortName port{words.switchName(known_), words.any("the interface")};
      known_.ports.insert(port);
      if (!known_.wired.try_emplace(port).second) {
        Words::failAt(column, fmt::format("{} is on a wire already", port.text()),
                      "join all ports of a segment in one line: wire A e1 to B e1 to C e1");
      }
      wire.ends.push_back(port);
    } while (words.take("to"));
    for (auto const& port : wire.ends) {
      auto& others = known_.wired[port];
      std::copy_if(wire.ends.begin(), wire.ends.end(), std::back_inserter(others),
                   [&](PortName const& other) { return other != port; });
    }
    if (wire.ends.size() < 2) words.fail("a wire needs two ends", "add 'to SWITCH INTERFACE'");
    if (words.take("with delay")) wire.delay = words.time();
    words.needEnd();
    scenario_.wires.push_back(std::move(wire));
  }

  void parseTimed(Line const& line, Words& words) {
    if (words.take("at")) {
      double at = time(words);
      if (words.take("expect")) return addExpectation(line, words, {Span::at, at, at});
      scenario_.actions.push_back(parseAction(words, at, known_));
      scenario_.actions.back().line = line.number;
      return;
    }
    auto when = parseSpan(words);
    words.need("expect");
    addExpectation(line, words, when);
  }

  When parseSpan(Words& words) {
    if (words.take("exactly")) {
      words.need("at");
      double at = time(words);
      return {Span::exactly, at, at};
    }
    if (words.take("by")) return {Span::by, 0, time(words)};
    bool between = words.take("between");
    if (!between) words.need("from");
    double from = time(words);
    words.need(between ? "and" : "to");
    int column = words.column();
    double to = time(words);
    if (to < from) Words::failAt(column, "the span ends before it begins", "swap the times");
    return {between ? Span::between : Span::throughout, from, to};
  }

  /// A time within the run.
  double time(Words& words) {
    int column = words.column();
    double time = words.time();
    if (scenario_.runUntil > 0 && time > scenario_.runUntil) {
      Words::failAt(column, fmt::format("the run ends before, at {}", scenario_.runUntil),
                    "raise 'run until'");
    }
    return time;
  }

  void addExpectation(Line const& line, Words& words, When const& when) {
    scenario_.expectations.push_back(parseExpectation(words, when, known_));
    scenario_.expectations.back().line = line.number;
  }

  void addLaterInterfaces(Reload const& reload) {
    if (!reload.read.good()) return;
    for (SwitchSpec& spec : scenario_.switches) {
      if (spec.name != reload.switchName) continue;
      auto& later = spec.laterInterfaces;
      for (auto const& interface : reload.read.config.interfaces) {
        bool known = spec.config.interface(interface.name) ||
                     std::any_of(later.begin(), later.end(),
                                 [&](auto const& other) { return other.name == interface.name; });
        if (!known) later.push_back(interface);
      }
    }
  }

  void checkWhole() {
    if (scenario_.switches.empty()) {
      diagnose(1, 1, "the scenario has no switch", "add 'switch A' and its entries");
    }
    if (!seen_.count("run until")) {
      diagnose(1, 1, "the scenario has no end", "add 'run until TIME'");
    }
  }

  void diagnose(int line, int column, std::string what, std::string remedy) {
    result_.diagnostics.push_back(
        {scenario_.file, line, column, std::move(what), std::move(remedy)});
  }

  ScenarioResult& result_;
  Scenario& scenario_;
  Known known_;
  std::set<std::string> seen_;
};

}  // namespace

ScenarioResult parseScenario(std::string_view text, std::string const& file) {
  ScenarioResult result;
  ScenarioParser(file, result).parse(text);
  Macsecd::sortByPlace(result.diagnostics);
  return result;
}

ScenarioResult readScenario(std::string const& path) {
  auto refused = [&](Macsecd::Fault const& fault) {
    return ScenarioResult{{}, {{path, 1, 1, fault.what, fault.remedy}}};
  };
  Macsecd::InputFile file(path);
  if (file.fault()) return refused(*file.fault());
  auto const text = file.read(Macsecd::maxTextSize);
  if (!text) return refused(text.fault());
  return parseScenario(text->view(), path);
}

}  // namespace Lab
