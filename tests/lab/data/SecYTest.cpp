#include "lab/data/SecY.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "lab/data/SecTag.h"

namespace Lab {
namespace {

using Verdict = SecY::Verdict;

Macsec::Sci const kA(Lumo::EthAddr({2, 0, 0, 0, 0, 0xa}), 1);
Macsec::Sci const kB(Lumo::EthAddr({2, 0, 0, 0, 0, 0xb}), 1);
std::vector<uint8_t> const kKey(16, 0x5a);
std::vector<uint8_t> const kOtherKey(32, 0xa5);
SaTerms const kTerms{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, 2};
constexpr uint8_t kAn = 1;

// A frame of an experimental EtherType with so many octets of data.
SecY::Frame frameOf(size_t data) {
  SecY::Frame frame = {2, 0, 0, 0, 0, 0xb, 2, 0, 0, 0, 0, 0xa, 0x88, 0xb5};
  for (size_t i = 0; i < data; ++i) frame.push_back(static_cast<uint8_t>(i));
  return frame;
}

// Two ends of a link; A sends under a key that B has.
struct ALink : ::testing::Test {
  ALink() {
    a.txSaIs(kA, kAn, kKey, kTerms, 1);
    b.rxSaIs(kA, kAn, kKey, kTerms, 1);
  }
  Verdict received(SecY::Frame const& frame) { return b.validate(frame, got); }

  SecY a, b;
  SecY::Frame got;
};

TEST_F(ALink, CarriesFramesThatNobodyElseReads) {
  SecY::Frame const sent = frameOf(100);
  auto const secret = a.protect(sent);
  ASSERT_TRUE(secret);
  EXPECT_EQ(secret->size(), sent.size() + 32);
  EXPECT_EQ(std::search(secret->begin(), secret->end(), sent.begin() + 20, sent.end()),
            secret->end());
  EXPECT_EQ(received(*secret), Verdict::valid);
  EXPECT_EQ(got, sent);
}

TEST_F(ALink, HasATagAsTheStandardHasIt) {
  SecY::Frame secret = *a.protect(frameOf(10));
  SecY::Frame const tag(secret.begin() + 12, secret.begin() + 28);
  EXPECT_EQ(tag, (SecY::Frame{0x88, 0xe5, 0x2d, 12, 0, 0, 0, 1, 2, 0, 0, 0, 0, 0xa, 0, 1}));
  EXPECT_EQ((*a.protect(frameOf(46)))[15], 0) << "48 octets of secure data aren't short";
}

TEST_F(ALink, TakesAFrameOnce) {
  SecY::Frame const first = *a.protect(frameOf(60)), second = *a.protect(frameOf(60));
  EXPECT_EQ(received(second), Verdict::valid);
  EXPECT_EQ(received(second), Verdict::late);
  EXPECT_EQ(received(first), Verdict::late);
}

TEST_F(ALink, TakesNoFrameInClear) {
  EXPECT_EQ(received(frameOf(60)), Verdict::untagged);
  EXPECT_EQ(received(frameOf(0)), Verdict::untagged);
}

TEST_F(ALink, TakesNothingThatDiffersInABit) {
  SecY::Frame const secret = *a.protect(frameOf(60));
  for (size_t octet = 0; octet < secret.size(); ++octet) {
    SecY::Frame other = secret;
    other[octet] ^= 0x10;
    ASSERT_NE(received(other), Verdict::valid) << octet;
  }
  EXPECT_EQ(received(secret), Verdict::valid);
}

TEST_F(ALink, LosesAllUnderAnotherKeySaltSsciOrAssociationNumber) {
  SaTerms salt = kTerms, ssci = kTerms;
  salt.salt[11] ^= 1;
  ssci.ssci = 1;
  b.rxSaIs(kA, kAn, kOtherKey, kTerms, 1);
  EXPECT_EQ(received(*a.protect(frameOf(60))), Verdict::invalid);
  b.rxSaIs(kA, kAn, kKey, salt, 1);
  EXPECT_EQ(received(*a.protect(frameOf(60))), Verdict::invalid);
  b.rxSaIs(kA, kAn, kKey, ssci, 1);
  EXPECT_EQ(received(*a.protect(frameOf(60))), Verdict::invalid);
  b.rxSaIs(kA, kAn, kKey, kTerms, 1);
  a.txSaIs(kA, kAn + 1, kKey, kTerms, 10);
  EXPECT_EQ(received(*a.protect(frameOf(60))), Verdict::noSa);
}

TEST_F(ALink, LosesNothingWhileBothKeysAreThere) {
  SecY::Frame const underFormer = *a.protect(frameOf(60));
  b.rxSaIs(kA, kAn + 1, kOtherKey, kTerms, 1);
  a.txSaIs(kA, kAn + 1, kOtherKey, kTerms, 1);
  SecY::Frame const underNext = *a.protect(frameOf(60));
  EXPECT_EQ(received(underNext), Verdict::valid);
  EXPECT_EQ(received(underFormer), Verdict::valid);
  b.rxSaDel(kAn);
  EXPECT_EQ(received(underFormer), Verdict::noSa);
}

TEST_F(ALink, GoesOnBeyondTheLowHalfOfPacketNumbers) {
  constexpr uint64_t kLast = 0xffffffff;
  a.txSaIs(kA, kAn, kKey, kTerms, kLast);
  b.rxSaIs(kA, kAn, kKey, kTerms, kLast - 5);
  EXPECT_EQ(received(*a.protect(frameOf(60))), Verdict::valid);
  SecY::Frame const beyond = *a.protect(frameOf(60));
  EXPECT_EQ(beyond[19], 0) << "the low half begins again";
  EXPECT_EQ(received(beyond), Verdict::valid);
  EXPECT_EQ(received(beyond), Verdict::late);
}

TEST_F(ALink, ForgetsTheKeysOfAFormerPeer) {
  b.rxSaIs(kB, kAn + 1, kKey, kTerms, 1);
  EXPECT_FALSE(b.receives(kAn));
  EXPECT_EQ(received(*a.protect(frameOf(60))), Verdict::noSa);
}

TEST_F(ALink, SendsNothingWithoutAKey) {
  a.txSaDel();
  EXPECT_FALSE(a.protect(frameOf(60)));
  a.txSaIs(kA, kAn, std::vector<uint8_t>(5), kTerms, 1);
  EXPECT_FALSE(a.protect(frameOf(60)));
}

}  // namespace
}  // namespace Lab
