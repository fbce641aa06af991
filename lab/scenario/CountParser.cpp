#include "lab/scenario/CountParts.h"
#include "lab/scenario/Defect.h"

namespace Lab {

namespace {

std::vector<std::string> wordsOf(std::vector<Defect> const& defects) {
  std::vector<std::string> words;
  for (Defect const defect : defects) words.push_back(Macsec::reasonName(defect));
  return words;
}

std::optional<Defect> takeFrom(std::vector<Defect> const& defects, Words& words) {
  for (Defect const defect : defects) {
    if (words.take(Macsec::reasonName(defect))) return defect;
  }
  return std::nullopt;
}

}  // namespace

SendFrame parseSendFrame(Words& words, Known const& known) {
  auto const defect = takeFrom(defects(), words);
  if (!defect) words.unknown("defect of a frame", wordsOf(defects()));
  words.need("to");
  return {words.wiredPort(known), *defect};
}

HasCounted parseCounts(PortName const& port, Words& words) {
  HasCounted counted{port, {}, {}, {}, {}, {}, {}};
  counted.atLeast = words.take("at least");
  counted.frames = words.number("a number of frames", 0, UINT32_MAX);
  bool const received = words.take("rx");
  if (!received && !words.take("tx")) words.unknown("direction", {"rx", "tx"});
  using enum Macsec::MessageCounterDirection;
  counted.direction = received ? rx : tx;
  using enum Macsec::MessageCounterType;
  counted.type = words.take("success") ? success : failure;
  auto all = defects();
  all.insert(all.begin(), Defect::invalid);
  namespace Reason = Macsec::MessageCounterReason;
  all.insert(all.end(), {Reason::replayErr, Reason::livenessErr, Reason::tooManyPeersErr});
  if (counted.type == failure) {
    if (!words.take("failure")) words.unknown("type of counter", {"success", "failure"});
    counted.defect = takeFrom(all, words);
  }
  counted.sinceClear = words.take("since clear");
  bool const hasKind = counted.type == success || counted.defect;
  if (!hasKind && !words.atEnd()) words.unknown("kind of failure", wordsOf(all));
  return counted;
}

}  // namespace Lab
