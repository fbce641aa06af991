#include "lab/world/FrameSummary.h"

#include <gmock/gmock.h>

#include "tests/codec/CodecBench.h"
#include "tests/lab/Played.h"

namespace Lab {
namespace {

using Codec::Bytes;
using testing::ElementsAre;
using testing::IsEmpty;

// Octets of the full frame in which its sets begin.
constexpr size_t kLive = 82;
constexpr size_t kPotential = 102;
constexpr size_t kUse = 122;
constexpr size_t kDistSak = 166;
constexpr size_t kIndicator = 206;

Bytes fullFrame() {
  Codec::CodecBench bench;
  bench.actorIs();
  return bench.fullFrame();
}

// The sets of the first frame that knows a peer.
std::vector<std::string> setsWith(std::string const& setting) {
  Played played(pair(setting, "5"));
  return played.all<FramePassed>("B").back().sets;
}

TEST(FrameSummary, NamesTheIcvIndicatorWhateverLengthItGives) {
  EXPECT_THAT(setsWith("icv indicator of 16"), ElementsAre("live-peers", "icv-indicator"));
  EXPECT_THAT(setsWith("icv indicator of 4"), ElementsAre("live-peers", "icv-indicator"));
  EXPECT_THAT(setsWith("icv indicator left out"), ElementsAre("live-peers"));
}

TEST(FrameSummary, TellsWhoSentAFrameAndWhatStandsInIt) {
  Bytes const frame = fullFrame();
  FrameSummary const summary = summaryOf(frame);
  Codec::Octets const octets(frame);
  EXPECT_EQ(summary.ckn, Macsec::hexString(octets.subspan(50, 32)).charPtr());
  EXPECT_EQ(summary.memberId, Macsec::hexString(octets.subspan(30, 12)).charPtr());
  EXPECT_EQ(summary.messageNumber, frame[45]);
  EXPECT_THAT(summary.sets,
              ElementsAre("live-peers", "potential-peers", "sak-use", "dist-sak", "icv-indicator"));
}

TEST(FrameSummary, NamesTheSetsInFrontOfOneThatIsLongerThanWhatRemains) {
  Bytes frame = fullFrame();
  frame[kUse + 2] = 1;
  EXPECT_THAT(summaryOf(frame).sets, ElementsAre("live-peers", "potential-peers"));
}

TEST(FrameSummary, GoesOnBehindASetThatIsWrongInItself) {
  Bytes frame = fullFrame();
  frame[kLive + 3] = 12;  // no whole peers: what follows is read from the wrong octet
  frame[kLive + 16] = 77;
  frame[kLive + 18] = frame[kLive + 19] = 0;
  frame[kPotential] = 3;  // comes twice
  frame[kDistSak] = 0;    // no such type
  EXPECT_THAT(summaryOf(frame).sets, ElementsAre("live-peers", "type-77", "sak-use", "sak-use",
                                                 "type-0", "icv-indicator"));
}

TEST(FrameSummary, EndsAtAnIcvIndicatorWhereverItStands) {
  Bytes frame = fullFrame();
  frame[kPotential] = 255;
  EXPECT_THAT(summaryOf(frame).sets, ElementsAre("live-peers", "icv-indicator"));
}

TEST(FrameSummary, TellsNoMoreThanAFrameHasBeforeItsCut) {
  Bytes frame = fullFrame();
  constexpr size_t kIcv = 16;
  for (auto const& [begin, sets] :
       {std::pair(kIndicator, 4u), {kDistSak, 3u}, {kUse, 2u}, {kPotential, 1u}, {kLive, 0u}}) {
    frame.resize(begin + kIcv + 3);
    EXPECT_EQ(summaryOf(frame).sets.size(), sets) << begin;
    EXPECT_TRUE(summaryOf(frame).ckn) << begin;
  }
  for (frame.resize(kLive + kIcv - 1);; frame.pop_back()) {
    EXPECT_FALSE(summaryOf(frame).ckn || summaryOf(frame).memberId) << frame.size();
    EXPECT_THAT(summaryOf(frame).sets, IsEmpty());
    if (frame.empty()) break;
  }
}

TEST(FrameSummary, TellsNothingOfAFrameThatIsNoMkpdu) {
  Bytes frame = fullFrame();
  frame[15] = 3;
  EXPECT_FALSE(summaryOf(frame).ckn);
  frame[15] = 5;
  frame[13] = 0;
  EXPECT_FALSE(summaryOf(frame).ckn);
}

}  // namespace
}  // namespace Lab
