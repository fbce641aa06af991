#include "model/EapolType.h"

#include <gtest/gtest.h>

#include <sstream>

#include "runtime/Exceptions.h"

namespace Macsec {
namespace {

std::string refusalOf(uint64_t type) {
  try {
    EapolType{type};
  } catch (Vesk::RangeException const& e) {
    return e.what();
  }
  return "accepted";
}

TEST(EapolType, TakesZeroToEightAndNoMore) {
  for (uint8_t type = 0; type <= 8; ++type) EXPECT_EQ(EapolType(type).type(), type);
  EXPECT_EQ(refusalOf(9), "EapolType::type < 0 or > 8 not allowed");
  EXPECT_EQ(refusalOf(256 + 5), "EapolType::type < 0 or > 8 not allowed");
}

TEST(EapolType, KeepsItsValueWhenASetterRefuses) {
  EapolType type(EapolType::eapMka);
  EXPECT_THROW(type.typeIs(9), Vesk::RangeException);
  EXPECT_EQ(type.type(), 5);
}

TEST(EapolType, IsZeroByDefaultAndFiveForAnMkpdu) {
  EXPECT_EQ(EapolType().type(), 0);
  EXPECT_EQ(EapolType::eapMka, 5);
  EXPECT_TRUE(EapolType(5) == EapolType(EapolType::eapMka));
  EXPECT_TRUE(EapolType(5) != EapolType());
}

TEST(EapolType, PrintsAsTheBareNumberAndParsesBack) {
  std::ostringstream out;
  out << EapolType(5);
  EXPECT_EQ(out.str(), "5");
  EXPECT_EQ(valueToStrep(EapolType(8)), "8");
  EXPECT_EQ(Vesk::valueFromStrep<EapolType>("8"), EapolType(8));
  EXPECT_THROW(Vesk::valueFromStrep<EapolType>("9"), Vesk::RangeException);
  EXPECT_THROW(Vesk::valueFromStrep<EapolType>("256"), Vesk::RangeException);
  for (char const* text : {"", "x", "5 ", "-1", "5x"}) {
    EXPECT_THROW(Vesk::valueFromStrep<EapolType>(text), Vesk::ParseException) << text;
  }
}

}  // namespace
}  // namespace Macsec
