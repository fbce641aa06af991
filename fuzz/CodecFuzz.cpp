#include <sstream>

#include "codec/FrameDump.h"
#include "codec/PeerLimit.h"
#include "fuzz/FrameForge.h"
#include "fuzz/Require.h"
#include "tests/codec/ClearText.h"
#include "tests/codec/CodecBench.h"

// Any octets as frames that come in on an interface with a key. What is taken in and what is
// refused is looked at: a refusal changes nothing, and what was taken in goes out again as the same
// values.

namespace {

using Fuzz::Frame;
using Fuzz::Input;
using Fuzz::require;

// What stands in front of the octets of a frame: how they become one.
enum Making : uint8_t { kRaw, kSigned, kSealed, kForged };

constexpr size_t kMostFrames = 4;
constexpr unsigned kCrowd = 2 * Codec::PeerLimit::kMostPeers;

Fuzz::Member memberOf(char const* identifier, uint8_t address, uint32_t messageNumber) {
  Fuzz::Member member{*Macsec::MemberIdentifier::parsed(identifier), {}, messageNumber};
  member.sci.addrIs(Lumo::EthAddr({2, 0, 0, 0, 0, address}));
  member.sci.portIdIs(Lumo::NetU16(1));
  return member;
}

Fuzz::FrameForge& forge() {
  static Fuzz::FrameForge one(Codec::kCak, Codec::kCkn);
  return one;
}

// The keys of an actor as they are stored: made once, since that takes longer than most runs.
struct StoredKeys {
  explicit StoredKeys(std::string const& ckn)
      : ckn(ckn),
        ick(WardcodeLib::doEncodeKey(Codec::derived(Codec::kCak, ckn, true))),
        kek(WardcodeLib::doEncodeKey(Codec::derived(Codec::kCak, ckn, false))) {}
  Vesk::String8 ckn, ick, kek;
};

Codec::FrameDump const& dump(bool showsKeys) {
  static std::vector<Codec::KeyPair> const keys{{Codec::kCkn, Codec::kCak}};
  static Codec::FrameDump const masked(keys, false), shown(keys, true);
  return showsKeys ? shown : masked;
}

// An interface with a codec and an actor that are made anew for each input.
class Bench {
 public:
  explicit Bench(Codec::CodecBench& bench, Input& in) : bench_(bench) {
    // The first octet says how the interface stands: replay guard, dialect, how many peers it has.
    uint8_t const setting = in.octet();
    static StoredKeys const own(Codec::kCkn);
    actor_ = actorIs(own);
    actor_->msgIdIs(Codec::kMemberB);
    actor_->msgNumIs(kOwnNumber);
    bench_.hasReplayGuard = (setting & 1) != 0;
    looksClosely_ = (setting & 2) != 0;
    showsKeys_ = (setting & 0x20) != 0;
    bench_.codec().dialectIs(bench_.intf,
                             {static_cast<Codec::NameOnWire>(setting >> 2 & 1),
                              static_cast<Codec::IcvIndicator>((setting >> 3 & 3) % 3)});
    if (setting >= 0xf8) crowdComes();
  }
  ~Bench() {
    bench_.sent.clear();
    bench_.codecDel();
    bench_.status->portStatusDel(bench_.intf);
  }
  Bench(Bench const&) = delete;
  Bench& operator=(Bench const&) = delete;

  void take(Input& in) {
    uint8_t const making = in.octet();
    if (making >= kKeysChange) return keyChanges(making);
    if (making >= kSends) return send(making);
    Frame const frame = frameOf(static_cast<Making>(making % 4), in);
    std::string const before = looksClosely_ ? Codec::textOf(bench_.rx()) : std::string();
    uint32_t const count = bench_.rx().count();
    auto const refusal = bench_.codec().receive(bench_.intf, frame);
    require(bench_.rx().count() == count + (refusal ? 0 : 1), "a frame is told although refused");
    require(!refusal || refusal.octet <= frame.size(), "a refusal names an octet behind the frame");
    if (looksClosely_) lookClosely(frame, !refusal, before);
    if (refusal) return;
    cast_[1].messageNumber = bench_.rx().mkaInfo()->baseInfo().msgNum();
    if (looksClosely_) goesRound();
  }

 private:
  static constexpr uint32_t kOwnNumber = 20;
  static constexpr uint8_t kSends = 0xf4, kKeysChange = 0xfc;

  static Frame frameOf(Making making, Input& in, std::span<Fuzz::Member const> cast) {
    if (making == kForged) return forge().made(in, cast);
    Fuzz::Octets const octets = in.take(in.word());
    Frame frame(octets.begin(), octets.end());
    if (making == kSigned) forge().sign(frame);
    if (making == kSealed) forge().seal(frame);
    return frame;
  }
  Frame frameOf(Making making, Input& in) const { return frameOf(making, in, cast_); }

  Vesk::Ptr<Macsec::MkaActorStatus> actorIs(StoredKeys const& keys) {
    auto actor = bench_.status->portStatusIs(bench_.intf)->actorStatusIs(keys.ckn);
    actor->ickIs(keys.ick);
    actor->kekIs(keys.kek);
    return actor;
  }
  // What was taken in last, with something that no frame can say, or more than one holds.
  void send(uint8_t how) {
    if (!bench_.rx().mkaInfo()) return;
    copyToSend();
    auto& info = bench_.txInfo();
    auto sak = info.sakDistInfo();
    sak.sakIs(how == kSends ? Vesk::String8("w1:00") : WardcodeLib::doEncodeKey(Codec::kSak));
    sak.cipherSuiteIs(Macsec::CipherSuite::gcmAesXpn256);
    if (how < kSends + 2) info.sakDistInfoIs(sak);
    if (how == kSends + 2) info.cakDistInfoIs(Macsec::CakDistInfo("w1:00", "6162"));
    if (how == kSends + 3) bench_.tx().livePeerIs("nobody", 1);
    if (how == kSends + 4)
      info.sakUseInfoIs(Macsec::SakUseInfo({}, {0, true, true, "x", 1, 1}, {}));
    if (how == kSends + 5) info.baseInfoIs(Macsec::BasicInfo());
    for (unsigned i = 0; how == kSends + 6 && i < kCrowd; ++i) {
      bench_.tx().potentialPeerIs(strangerOf(i), i);
      if (i % 4 == 0) bench_.tx().livePeerIs(strangerOf(i), i);
    }
    bench_.codec().expect(bench_.intf);
    auto const frame = bench_.sentFrame();
    bool const isRefusedForSure = how < kSends + 6;
    require(!isRefusedForSure || frame.empty(), "what no frame can say is sent");
  }
  static Vesk::String8 strangerOf(unsigned i) {
    std::array<uint8_t, 12> const octets{0xee, static_cast<uint8_t>(i >> 8),
                                         static_cast<uint8_t>(i)};
    return Macsec::MemberIdentifier(octets).stringValue();
  }
  // Its keys go, come back, or are those of another actor as well.
  void keyChanges(uint8_t how) {
    static StoredKeys const own(Codec::kCkn), other("6162");
    auto const port = bench_.status->portStatusIs(bench_.intf);
    if (how == kKeysChange) actor_->ickIs(Vesk::String8("w1:00"));
    if (how == kKeysChange + 1) port->actorStatusDel(own.ckn);
    if (how == kKeysChange + 2) actorIs(other);
    if (how == kKeysChange + 3) actorIs(own);
  }
  // Of whose key the dump knows nothing.
  bool isOfOther() { return bench_.rx().mkaInfo()->baseInfo().ckn() != Codec::kCkn; }
  void crowdComes() {
    for (unsigned i = 0; i < kCrowd; ++i) {
      Vesk::String8 const id = strangerOf(i);
      (i % 2 == 0 ? actor_->livePeerIs(id) : actor_->potentialPeerIs(id));
    }
  }
  void lookClosely(Frame const& frame, bool isTaken, std::string const& before) {
    std::ostringstream out;
    auto const verdict = dump(showsKeys_).dump(frame, out);
    require(isTaken || Codec::textOf(bench_.rx()) == before,
            "a frame that is refused changes the message");
    require(!isTaken || verdict == Codec::Verdict::authentic || isOfOther(),
            "a frame is taken in that the dump finds wrong");
  }
  void goesRound();
  void copyToSend();
  bool hasRoom();

  Codec::CodecBench& bench_;
  Vesk::Ptr<Macsec::MkaActorStatus> actor_;
  bool looksClosely_;  // with what takes longer
  bool showsKeys_;
  std::vector<Fuzz::Member> cast_{memberOf(Codec::kMemberB, 1, kOwnNumber),
                                  memberOf(Codec::kMemberA, 2, 7)};
};

void Bench::copyToSend() {
  auto const& from = bench_.rx();
  auto& to = bench_.tx();
  to.intfIdIs(bench_.intf);
  auto const& info = *from.mkaInfo();
  bench_.txInfo().baseInfoIs(info.baseInfo());
  bench_.txInfo().sakUseInfoIs(info.sakUseInfo());
  bench_.txInfo().sakDistInfoIs(info.sakDistInfo());
  bench_.txInfo().cakDistInfoIs(info.cakDistInfo());
  to.livePeerDelAll();
  to.potentialPeerDelAll();
  for (auto const& peer : from.livePeer()) to.livePeerIs(peer.fwkKey(), peer.value());
  for (auto const& peer : from.potentialPeer()) to.potentialPeerIs(peer.fwkKey(), peer.value());
}

// Lists that fill a frame are cut, and a name of a CAK that is longer than ours can be isn't kept.
bool Bench::hasRoom() {
  constexpr size_t kMostPeers = 70, kLongestName = 2 * Macsec::CknOctets::kMaxSize;
  return bench_.rx().livePeer().members() + bench_.rx().potentialPeer().members() <= kMostPeers &&
         bench_.rx().mkaInfo()->cakDistInfo().ckn().size() <= kLongestName;
}

// What was taken in goes out, and comes in as the same: by way of an end without a replay guard.
void Bench::goesRound() {
  bool const isWhole = hasRoom();
  std::string const taken = Codec::clearText(bench_.rx());
  copyToSend();
  Frame const again = bench_.sentFrame();
  require(!again.empty(), "what was taken in can't be sent");
  bench_.codec().replayGuardIs(false);
  auto const refusal = bench_.codec().receive(bench_.intf, again);
  bench_.codec().replayGuardIs(bench_.hasReplayGuard);
  require(!refusal, "what was taken in and sent is refused");
  require(!isWhole || Codec::clearText(bench_.rx()) == taken,
          "what was taken in and sent has other values");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* octets, size_t size) {
  static Codec::CodecBench& common = *std::make_unique<Codec::CodecBench>().release();
  Input in({octets, size});
  Bench bench(common, in);
  for (size_t i = 0; i < kMostFrames && !in.isOver(); ++i) bench.take(in);
  return 0;
}
