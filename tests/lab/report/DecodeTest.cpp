#include "lab/report/Decode.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <sstream>

#include "host/client/Pcap.h"
#include "tests/codec/CodecBench.h"

namespace Lab {
namespace {

using Codec::Bytes;
using Codec::kCak;
using Codec::kCkn;
using testing::TempDir;

struct Decoded {
  int status = 0;
  std::string out;
  std::string err;
  bool says(std::string const& text) const { return out.find(text) != std::string::npos; }
};

std::vector<Codec::KeyPair> const kKeys{{kCkn, kCak}};

Decoded decoded(std::vector<Bytes> const& frames, std::vector<Codec::KeyPair> const& keys = kKeys,
                bool showKeys = false) {
  std::string const file = TempDir() + "/decode-" + std::to_string(getpid()) + ".pcap";
  {
    Macsecd::PcapWriter writer(file);
    for (auto const& frame : frames) writer.add(1.5, frame);
  }
  std::ostringstream out;
  std::ostringstream err;
  int const status = decode(file, keys, showKeys, out, err);
  std::remove(file.c_str());
  return {status, out.str(), err.str()};
}

Bytes fullFrame(char const* cak = kCak) {
  Codec::CodecBench bench;
  bench.actorIs(kCkn, cak);
  return bench.fullFrame();
}

TEST(Decode, PrintsAFrameSetBySet) {
  Decoded const d = decoded({fullFrame()});
  EXPECT_EQ(d.status, 0) << d.out << d.err;
  for (char const* text :
       {"frame 1, 1.500000 s: MKPDU, authentic", "02:00:00:00:00:01 -> 01:80:c2:00:00:03",
        "basic parameter set, octet 18", "live peer list, octet 82",
        "potential peer list, octet 102", "SAK use, octet 122", "distributed SAK, octet 166",
        "ICV, octet 210", "right", "\"abcdefghijklmnopqrstuvwxyz012345\"", "(gcm-aes-xpn-128)",
        "1 frames: 1 authentic, 0 of unknown keys, 0 forged, 0 damaged, 0 no MKPDU"}) {
    EXPECT_TRUE(d.says(text)) << text << "\n" << d.out;
  }
}

TEST(Decode, ShowsASakOnlyOnRequest) {
  EXPECT_FALSE(decoded({fullFrame()}).says(Codec::kSak));
  EXPECT_TRUE(decoded({fullFrame()}, kKeys, true).says(Codec::kSak));
}

TEST(Decode, TellsAForgedFrame) {
  Decoded const d = decoded({fullFrame("fedcba9876543210fedcba9876543210")});
  EXPECT_EQ(d.status, 1);
  EXPECT_TRUE(d.says("FORGED") && d.says("WRONG")) << d.out;
}

TEST(Decode, TriesEveryKeyOfAName) {
  constexpr char kOther[] = "fedcba9876543210fedcba9876543210";
  EXPECT_EQ(decoded({fullFrame(), fullFrame(kOther)}, {{kCkn, kCak}, {kCkn, kOther}}).status, 0);
}

TEST(Decode, VouchesForNothingUnderAKeyThatWasntGiven) {
  EXPECT_EQ(decoded({fullFrame()}, {}).status, 0);
  Decoded const d = decoded({fullFrame()}, {{"other", kCak}});
  EXPECT_EQ(d.status, 1);
  EXPECT_TRUE(d.says("not authenticated")) << d.out;
}

TEST(Decode, NamesTheOctetOfADamagedFrame) {
  Bytes frame = fullFrame();
  frame[85] = 12;
  Codec::resign(frame);
  Decoded const d = decoded({frame, Bytes(frame.begin(), frame.begin() + 17)});
  EXPECT_EQ(d.status, 1);
  EXPECT_TRUE(d.says("octet 84 says a peer list whose length is no multiple of 16")) << d.out;
  EXPECT_TRUE(d.says("octet 17 is missing: the frame ends within its headers")) << d.out;
}

TEST(Decode, NamesAndSkipsWhatIsNoMkpdu) {
  Bytes arp(60);
  arp[12] = 8, arp[13] = 6;
  Bytes eapol = fullFrame();
  eapol[15] = 1;
  Decoded const d = decoded({arp, eapol, Bytes(5)});
  EXPECT_EQ(d.status, 0);
  EXPECT_TRUE(d.says("frame 1, 1.500000 s: no MKPDU, EtherType 0x0806; skipped"));
  EXPECT_TRUE(d.says("no MKPDU, EAPOL type 1; skipped"));
  EXPECT_TRUE(d.says("no MKPDU, 5 octets are no Ethernet frame; skipped"));
}

TEST(Decode, RefusesAFrameWithAFlippedBitWhereverItIs) {
  Bytes const good = fullFrame();
  for (size_t bit = 0; bit < 8 * good.size(); ++bit) {
    Bytes frame = good;
    frame[bit / 8] ^= static_cast<uint8_t>(1u << bit % 8);
    Decoded const d = decoded({frame});
    bool const isOther = bit / 8 == 12 || bit / 8 == 13 || bit / 8 == 15;
    ASSERT_EQ(d.status, isOther ? 0 : 1) << "bit " << bit << "\n" << d.out;
    ASSERT_EQ(d.says("1 no MKPDU"), isOther) << "bit " << bit;
    ASSERT_FALSE(d.says("MKPDU, authentic")) << "bit " << bit;
  }
}

TEST(Decode, RefusesUnusableArguments) {
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(decode(TempDir() + "/missing.pcap", kKeys, false, out, err), 2);
  EXPECT_NE(err.str(), "");
  EXPECT_EQ(decoded({}, {{kCkn, "0123"}}).status, 2);
  EXPECT_FALSE(keyPairOf("no colon", err));
  EXPECT_FALSE(keyPairOf("name:xyz", err));
  auto const pair = keyPairOf(std::string("na:me:") + kCak, err);
  ASSERT_TRUE(pair);
  EXPECT_EQ(pair->ckn, "na:me");
}

}  // namespace
}  // namespace Lab
