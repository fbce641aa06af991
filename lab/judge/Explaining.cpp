#include <fmt/format.h>
#include <fmt/ranges.h>

#include "lab/judge/Finding.h"
#include "lab/scenario/ExpectationParts.h"

// What a switch says of why a port isn't secured.

namespace Lab {

namespace {

using Macsecd::Cause;
using Macsecd::CauseKind;

std::vector<std::string> wordsOf(std::vector<CauseKind> const& kinds) {
  std::vector<std::string> words;
  for (CauseKind const kind : kinds) words.push_back(Vesk::stringValue(kind));
  return words;
}

CauseKind parseKind(Words& words) {
  std::vector<std::string> known;
  for (auto const& [kind, name] : Vesk::EnumNames<CauseKind>::names) {
    if (words.take(name)) return kind;
    known.push_back(name);
  }
  words.unknown("cause", known);
}

}  // namespace

Explains parseExplains(PortName const& port, Words& words) {
  Explains explains{port, {}};
  if (words.take("nothing")) return explains;
  do {
    explains.kinds.push_back(parseKind(words));
  } while (!words.atEnd());
  return explains;
}

Finding Findings::of(Explains const& expected) const {
  Switch& owner = simulation_.switchOf(expected.port.switchName);
  Lumo::IntfId const intfId(expected.port.interface.c_str());
  std::vector<CauseKind> kinds;
  for (Cause const& cause : explain(owner.host(), intfId).causes) kinds.push_back(cause.kind);
  auto const words = wordsOf(kinds);
  return {kinds == expected.kinds,
          fmt::format("{} explains {}", expected.port.text(),
                      words.empty() ? "nothing" : fmt::format("{}", fmt::join(words, ", ")))};
}

}  // namespace Lab
