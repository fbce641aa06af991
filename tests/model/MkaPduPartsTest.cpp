#include "model/MkaPduParts.h"

#include <gtest/gtest.h>

#include <sstream>

#include "runtime/Exceptions.h"

namespace Macsec {
namespace {

/// Checks that a field takes exactly the bits from `high` down to `low`: read from a word that has
/// only these set or only these clear, and written over either.
template <class Part, class Field>
void expectField(Field (Part::*get)() const, void (Part::*set)(Field), int high, int low) {
  using Word = decltype(Part().value());
  Word const all = static_cast<Word>(~0u);
  unsigned const ones = (1u << (high - low + 1)) - 1;
  Word const mask = static_cast<Word>(ones << low);
  EXPECT_EQ((Part(mask).*get)(), ones);
  EXPECT_EQ((Part(static_cast<Word>(all ^ mask)).*get)(), 0u);
  Part part;
  (part.*set)(static_cast<Field>(~0u));
  EXPECT_EQ(part.value(), mask) << "bits beyond the field's width are dropped";
  part.valueIs(all);
  (part.*set)(0);
  EXPECT_EQ(part.value(), static_cast<Word>(all ^ mask));
}

#define EXPECT_FIELD(part, field, high, low)                      \
  do {                                                            \
    SCOPED_TRACE(#part "::" #field);                              \
    expectField<part>(&part::field, &part::field##Is, high, low); \
  } while (false)

TEST(MkaPduParts, EveryFieldTakesItsBitsAndLeavesTheOthers) {
  EXPECT_FIELD(BasicParameterSetPart, keyServer, 15, 15);
  EXPECT_FIELD(BasicParameterSetPart, macsecDesired, 14, 14);
  EXPECT_FIELD(BasicParameterSetPart, macsecCapability, 13, 12);
  EXPECT_FIELD(BasicParameterSetPart, parameterSetBodyLength, 11, 0);
  EXPECT_FIELD(PeerListLengthParameter, reserved, 15, 12);
  EXPECT_FIELD(PeerListLengthParameter, parameterSetBodyLength, 11, 0);
  EXPECT_FIELD(SakUseAnAndOffset, latestKeyAN, 7, 6);
  EXPECT_FIELD(SakUseAnAndOffset, latestKeyTx, 5, 5);
  EXPECT_FIELD(SakUseAnAndOffset, latestKeyRx, 4, 4);
  EXPECT_FIELD(SakUseAnAndOffset, oldKeyAN, 3, 2);
  EXPECT_FIELD(SakUseAnAndOffset, oldKeyTx, 1, 1);
  EXPECT_FIELD(SakUseAnAndOffset, oldKeyRx, 0, 0);
  EXPECT_FIELD(SakUsePlainTxAndLengthSet, plainTx, 15, 15);
  EXPECT_FIELD(SakUsePlainTxAndLengthSet, plainRx, 14, 14);
  EXPECT_FIELD(SakUsePlainTxAndLengthSet, reserved, 13, 13);
  EXPECT_FIELD(SakUsePlainTxAndLengthSet, delayProtect, 12, 12);
  EXPECT_FIELD(SakUsePlainTxAndLengthSet, parameterSetBodyLength, 11, 0);
  EXPECT_FIELD(DistSakAnAndOffset, distributedAN, 7, 6);
  EXPECT_FIELD(DistSakAnAndOffset, confidentialityOffset, 5, 4);
  EXPECT_FIELD(DistSakAnAndOffset, reserved, 3, 0);
  EXPECT_FIELD(DistSakLengthSet, reserved, 15, 12);
  EXPECT_FIELD(DistSakLengthSet, parameterSetBodyLength, 11, 0);
  EXPECT_FIELD(DistCakLengthSet, reserved, 15, 12);
  EXPECT_FIELD(DistCakLengthSet, parameterSetBodyLength, 11, 0);
  EXPECT_FIELD(IcvIndicatorLengthSet, reserved, 15, 12);
  EXPECT_FIELD(IcvIndicatorLengthSet, parameterSetBodyLength, 11, 0);
}

TEST(BasicParameterSetPart, C0FFReadsAsItsFieldsAndCapabilityKeepsTwoBits) {
  BasicParameterSetPart part(0xC0FF);
  EXPECT_EQ(part.keyServer(), 1);
  EXPECT_EQ(part.macsecDesired(), 1);
  EXPECT_EQ(part.macsecCapability(), 0);
  EXPECT_EQ(part.parameterSetBodyLength(), 0x0FF);
  part.macsecCapabilityIs(7);
  EXPECT_EQ(part.macsecCapability(), 3);
  EXPECT_EQ(part.value(), 0xF0FF);
}

TEST(SakUseAnAndOffset, B6ReadsAsItsFields) {
  SakUseAnAndOffset const part(0xB6);
  EXPECT_EQ(part.latestKeyAN(), 2);
  EXPECT_EQ(part.latestKeyTx(), 1);
  EXPECT_EQ(part.latestKeyRx(), 1);
  EXPECT_EQ(part.oldKeyAN(), 1);
  EXPECT_EQ(part.oldKeyTx(), 1);
  EXPECT_EQ(part.oldKeyRx(), 0);
}

TEST(SakUsePlainTxAndLengthSet, KeepsBit13ThroughTheSettersOfTheOtherFields) {
  for (uint16_t bit13 : std::initializer_list<uint16_t>{0x0000, 0x2000}) {
    SakUsePlainTxAndLengthSet part(bit13);
    for (uint8_t flag : std::initializer_list<uint8_t>{1, 0}) {
      part.plainTxIs(flag);
      part.plainRxIs(flag);
      part.delayProtectIs(flag);
      part.parameterSetBodyLengthIs(flag ? 0xFFF : 0);
      EXPECT_EQ(part.value(), bit13 | (flag ? 0xDFFF : 0));
    }
  }
}

TEST(BitPart, ABodyLengthOf0x1000StoresZero) {
  DistSakLengthSet part(0xA123);
  part.parameterSetBodyLengthIs(0x1000);
  EXPECT_EQ(part.parameterSetBodyLength(), 0);
  EXPECT_EQ(part.value(), 0xA000);
}

TEST(BitPart, ComparesByTheWordInHostOrder) {
  DistCakLengthSet const low(0x00FF);
  DistCakLengthSet const high(0x0100);
  EXPECT_TRUE(low < high && low <= high && high > low && high >= low && low != high);
  EXPECT_TRUE(low == DistCakLengthSet(0x00FF) && low <= low && low >= low);
  EXPECT_TRUE(SakUseAnAndOffset(1) < SakUseAnAndOffset(2));
  EXPECT_TRUE(DistSakAnAndOffset(2) >= DistSakAnAndOffset(2));
}

TEST(BitPart, V0AndV1AreTheOctetsInFrameOrder) {
  IcvIndicatorLengthSet part(0x1234);
  EXPECT_EQ(part.v0(), 0x12);
  EXPECT_EQ(part.v1(), 0x34);
  part.v0Is(0xAB);
  EXPECT_EQ(part.value(), 0xAB34);
  part.v1Is(0xCD);
  EXPECT_EQ(part.value(), 0xABCD);
}

template <class Part>
void expectPrinted(Part const& part, std::string const& text) {
  std::ostringstream out;
  out << part;
  EXPECT_EQ(out.str(), text);
  EXPECT_EQ(valueToStrep(part), text);
  EXPECT_TRUE(Vesk::valueFromStrep<Part>(text) == part);
}

TEST(BitPart, Prints16BitsAsALiteralOfItsTypeAnd8BitsAsTheNumberAndParsesBoth) {
  expectPrinted(BasicParameterSetPart(0xC0FF),
                "Value('Macsec::BasicParameterSetPart', ** {'v0': 192, 'v1': 255})");
  expectPrinted(PeerListLengthParameter(16),
                "Value('Macsec::PeerListLengthParameter', ** {'v0': 0, 'v1': 16})");
  expectPrinted(SakUsePlainTxAndLengthSet(0x1028),
                "Value('Macsec::SakUsePlainTxAndLengthSet', ** {'v0': 16, 'v1': 40})");
  expectPrinted(DistSakLengthSet(36), "Value('Macsec::DistSakLengthSet', ** {'v0': 0, 'v1': 36})");
  expectPrinted(DistCakLengthSet(56), "Value('Macsec::DistCakLengthSet', ** {'v0': 0, 'v1': 56})");
  expectPrinted(IcvIndicatorLengthSet(4),
                "Value('Macsec::IcvIndicatorLengthSet', ** {'v0': 0, 'v1': 4})");
  expectPrinted(SakUseAnAndOffset(0xB6), "182");
  expectPrinted(DistSakAnAndOffset(0), "0");
}

TEST(BitPart, RefusesTextsThatAreNotItsOwn) {
  for (char const* text : {"", "192", "Value('Macsec::DistSakLengthSet', ** {'v0': 0, 'v1': 36})",
                           "Value('Macsec::DistCakLengthSet', ** {'v0': 256, 'v1': 36})",
                           "Value('Macsec::DistCakLengthSet', ** {'v0': -1, 'v1': 36})",
                           "Value('Macsec::DistCakLengthSet', ** {'v0': 0})",
                           "Value('Macsec::DistCakLengthSet', ** {'v0': 0, 'v1': 36}) "}) {
    EXPECT_THROW(Vesk::valueFromStrep<DistCakLengthSet>(text), Vesk::ParseException) << text;
  }
  EXPECT_THROW(Vesk::valueFromStrep<SakUseAnAndOffset>("256"), Vesk::RangeException);
  for (char const* text : {"", "-1", "1 ", "one"}) {
    EXPECT_THROW(Vesk::valueFromStrep<SakUseAnAndOffset>(text), Vesk::ParseException) << text;
  }
}

}  // namespace
}  // namespace Macsec
