#include "lab/scenario/ExpectationParts.h"

namespace Lab {

namespace {

using What = decltype(Expectation::what);

constexpr uint32_t kMost = 1000000;

Logs parseLogs(std::string const& switchName, Words& words) {
  Logs logs{switchName, {}, {}, 1, {}};
  if (words.take("no")) {
    logs.min = 0;
    logs.max = 0;
  } else if (words.atNumber()) {
    logs.min = words.number("a number of lines", 1, kMost);
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

std::optional<Mark> parseSince(Words& words, Known const& known) {
  if (!words.take("since")) return std::nullopt;
  return words.mark(known);
}

HasExited parseExited(std::string const& name, Words& words, Known const& known) {
  HasExited exited{name, words.number("a number of exits", 0, kMost), {}, {}};
  if (!words.take("times")) words.need("time");
  if (words.take("with status")) {
    exited.status = static_cast<int>(words.number("a status", 0, 255));
  }
  exited.since = parseSince(words, known);
  return exited;
}

HasFipsMode parseFips(std::string const& name, Words& words) {
  if (words.take("on")) return {name, FipsMode::on};
  if (words.take("off")) return {name, FipsMode::off};
  if (words.take("unset")) return {name, FipsMode::unset};
  words.unknown("FIPS mode", {"on", "off", "unset"});
}

HasWrittenNothing parseWritten(std::string const& name, Words& words, Known const& known) {
  bool const configuration = words.take("to its configuration");
  words.need("since");
  return {name, configuration, words.mark(known)};
}

HasReloadDiagnostic parseReloadDiagnostic(std::string const& name, Words& words) {
  int line = static_cast<int>(words.number("a line", 1, kMost));
  words.need("column");
  int column = static_cast<int>(words.number("a column", 1, kMost));
  HasReloadDiagnostic diagnostic{name, line, column, {}};
  if (words.take("saying")) diagnostic.says = words.any("words of the mistake");
  return diagnostic;
}

What parseReloadDiagnostics(std::string const& name, uint32_t count, Words& words) {
  if (!words.take("mistakes")) words.need("mistake");
  words.need("in its reload");
  return HasReloadDiagnostics{name, count};
}

std::optional<What> parseHas(std::string const& name, Words& words, Known const& known) {
  if (words.take("exited")) return parseExited(name, words, known);
  if (words.take("not exited")) return HasExited{name, 0, {}, parseSince(words, known)};
  if (words.take("FIPS mode")) return parseFips(name, words);
  if (words.take("delay protection")) return HasDelayProtection{name, true};
  if (words.take("no delay protection")) return HasDelayProtection{name, false};
  if (words.take("MKPDU period")) return HasMkpduPeriod{name, words.time()};
  if (words.take("MKPDU threshold")) {
    return HasMkpduThreshold{name, words.number("a number of MKPDUs", 0, kMost)};
  }
  if (words.take("written nothing")) return parseWritten(name, words, known);
  if (words.take("no mistake in its reload")) return HasReloadDiagnostics{name, 0};
  if (words.take("a mistake in its reload at line")) return parseReloadDiagnostic(name, words);
  if (!words.atNumber()) return std::nullopt;
  return parseReloadDiagnostics(name, words.number("a number of mistakes", 0, kMost), words);
}

}  // namespace

std::optional<What> parseOfSwitch(std::string const& switchName, Words& words, Known const& known) {
  if (words.take("logs")) return parseLogs(switchName, words);
  if (words.take("is running")) return IsRunning{switchName, true};
  if (words.take("is not running")) return IsRunning{switchName, false};
  if (!words.take("has")) return std::nullopt;
  if (auto what = parseHas(switchName, words, known)) return what;
  words.unknown("thing that a switch has",
                {"exited", "not exited", "FIPS mode", "delay protection", "no delay protection",
                 "MKPDU period", "MKPDU threshold", "written nothing", "no mistake in its reload",
                 "a mistake in its reload at line"});
}

}  // namespace Lab
