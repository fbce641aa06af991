#include "lab/scenario/ActionParts.h"

// Faults of wires.

namespace Lab {

namespace {

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

}  // namespace

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

}  // namespace Lab
