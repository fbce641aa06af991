#include "lab/report/Decode.h"

#include <fmt/format.h>

#include <ostream>
#include <sstream>

#include "codec/FrameLayout.h"
#include "host/client/Pcap.h"
#include "host/text/KeyText.h"

namespace Lab {

namespace {

using Codec::Verdict;

/// Frames of a capture by what they turned out to be.
struct Tally {
  size_t authentic = 0;
  size_t unknownKey = 0;
  size_t forged = 0;
  size_t damaged = 0;
  size_t others = 0;

  void add(Verdict verdict) {
    authentic += verdict == Verdict::authentic;
    unknownKey += verdict == Verdict::unknownKey;
    forged += verdict == Verdict::forged;
    damaged += verdict == Verdict::damaged;
  }
};

char const* words(Verdict verdict) {
  switch (verdict) {
    case Verdict::authentic:
      return "authentic";
    case Verdict::unknownKey:
      return "not authenticated, its key is not known";
    case Verdict::forged:
      return "FORGED or changed on its way";
    case Verdict::damaged:
      return "DAMAGED";
  }
  return "";
}

std::string otherFrame(Macsecd::PcapFrame const& frame) {
  auto const& octets = frame.octets;
  if (octets.size() < 14) return fmt::format("{} octets are no Ethernet frame", octets.size());
  int const type = octets[12] << 8 | octets[13];
  if (type != 0x888e) return fmt::format("EtherType 0x{:04x}", type);
  return fmt::format("EAPOL type {}", octets[15]);
}

void report(Codec::KeyPair const& pair, Macsecd::Fault const& fault, std::ostream& err) {
  err << "key " << pair.ckn << ": " << fault.what << "; " << fault.remedy << "\n";
}

bool isUsable(Codec::KeyPair const& pair, std::ostream& err) {
  auto const name = Macsecd::faultOfKeyName(pair.ckn.view());
  auto const key = Macsecd::faultOfKey(pair.cak.view());
  if (name) report(pair, *name, err);
  if (key) report(pair, *key, err);
  return !name && !key;
}

void printFrame(size_t number, Macsecd::PcapFrame const& frame, Codec::FrameDump const& dump,
                std::ostream& out, Tally& tally) {
  out << fmt::format("frame {}, {:.6f} s: ", number, frame.time);
  if (!Codec::isMkpdu(frame.octets)) {
    ++tally.others;
    out << "no MKPDU, " << otherFrame(frame) << "; skipped\n";
    return;
  }
  std::ostringstream sets;
  Verdict const verdict = dump.dump(frame.octets, sets);
  tally.add(verdict);
  out << "MKPDU, " << words(verdict) << "\n";
  if (frame.length > frame.octets.size()) {
    out << fmt::format("  the capture holds {} of its {} octets\n", frame.octets.size(),
                       frame.length);
  }
  out << sets.str();
}

}  // namespace

std::optional<Codec::KeyPair> keyPairOf(std::string_view text, std::ostream& err) {
  size_t const colon = text.rfind(':');
  if (colon == std::string_view::npos) {
    err << "a key has no colon; give it as CKN:CAK\n";
    return std::nullopt;
  }
  Codec::KeyPair pair{Vesk::String8(text.substr(0, colon)),
                      Vesk::String8::secret(text.substr(colon + 1))};
  if (!isUsable(pair, err)) return std::nullopt;
  return pair;
}

int decode(std::string const& file, std::vector<Codec::KeyPair> const& keys, bool showKeys,
           std::ostream& out, std::ostream& err) {
  bool usable = true;
  for (auto const& pair : keys) usable = isUsable(pair, err) && usable;
  if (!usable) return 2;
  Macsecd::Pcap const pcap = Macsecd::readPcap(file);
  Codec::FrameDump const dump(keys, showKeys);
  Tally tally;
  size_t number = 0;
  for (auto const& frame : pcap.frames) printFrame(++number, frame, dump, out, tally);
  if (!pcap.fault.empty()) {
    err << file << ": " << pcap.fault << "\n";
    return 2;
  }
  out << fmt::format(
      "{} frames: {} authentic, {} of unknown keys, {} forged, {} damaged, {} no MKPDU\n", number,
      tally.authentic, tally.unknownKey, tally.forged, tally.damaged, tally.others);
  bool const unvouched = tally.unknownKey > 0 && !keys.empty();
  return tally.forged > 0 || tally.damaged > 0 || unvouched ? 1 : 0;
}

}  // namespace Lab
