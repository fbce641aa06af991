#include "runtime/Text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

namespace Vesk::Test {

enum class Colour : uint8_t { red = 3, dark_blue = 5 };

class Paint : public Value<Paint> {
 public:
  Paint() = default;
  Paint(Colour colour, double litres, Lumo::IntfId intfId)
      : colour_(colour), litres_(litres), intfId_(intfId) {}
  friend bool operator==(Paint const&, Paint const&) = default;
  static constexpr char const* kTypeName = "Test::Paint";
  template <class V>
  static void describe(V&& v) {
    v("colour", &Paint::colour_);
    v("litres", &Paint::litres_);
    v("intfId", &Paint::intfId_);
  }

 private:
  Colour colour_ = Colour::red;
  double litres_ = 0.0;
  Lumo::IntfId intfId_;
};

}  // namespace Vesk::Test

template <>
struct Vesk::EnumNames<Vesk::Test::Colour> {
  static constexpr std::pair<Vesk::Test::Colour, char const*> names[] = {
      {Vesk::Test::Colour::red, "red"}, {Vesk::Test::Colour::dark_blue, "dark_blue"}};
};

namespace Vesk::Test {
namespace {

template <class T>
void expectPrintsAndParses(T const& value, std::string const& text) {
  EXPECT_EQ(valueToStrep(value), text);
  EXPECT_EQ(valueFromStrep<T>(text), value);
}

template <class E, class F>
std::string whatOf(F f) {
  try {
    f();
  } catch (E const& e) {
    return e.what();
  }
  return "nothing thrown";
}

TEST(Text, BoolsAreTrueAndFalse) {
  expectPrintsAndParses(true, "True");
  expectPrintsAndParses(false, "False");
  EXPECT_THROW(valueFromStrep<bool>("true"), ParseException);
}

TEST(Text, NumbersAreDecimalWithinTheRangeOfTheirType) {
  expectPrintsAndParses<uint8_t>(255, "255");
  expectPrintsAndParses<uint16_t>(65535, "65535");
  expectPrintsAndParses<uint32_t>(4294967295, "4294967295");
  expectPrintsAndParses<uint64_t>(UINT64_MAX, "18446744073709551615");
  EXPECT_THROW(valueFromStrep<uint8_t>("256"), ParseException);
  EXPECT_THROW(valueFromStrep<uint32_t>("4294967296"), ParseException);
  EXPECT_THROW(valueFromStrep<uint64_t>("18446744073709551616"), ParseException);
  EXPECT_THROW(valueFromStrep<uint8_t>("-1"), ParseException);
  EXPECT_THROW(valueFromStrep<uint8_t>(""), ParseException);
}

TEST(Text, DoublesShowThatTheyAreNone) {
  expectPrintsAndParses(2.0, "2.0");
  expectPrintsAndParses(-2.0, "-2.0");
  expectPrintsAndParses(0.1, "0.1");
  expectPrintsAndParses(1e300, "1e+300");
  expectPrintsAndParses(std::numeric_limits<double>::infinity(), "inf");
  EXPECT_TRUE(std::isnan(valueFromStrep<double>(valueToStrep(std::nan("")))));
  EXPECT_EQ(valueFromStrep<double>("2"), 2.0);
}

TEST(Text, StringsStandInSingleQuotesWithBackslashAndQuoteEscaped) {
  expectPrintsAndParses(String8(), "''");
  expectPrintsAndParses(String8("it's"), "'it\\'s'");
  expectPrintsAndParses(String8("a\\b"), "'a\\\\b'");
  expectPrintsAndParses(String8("\\'"), "'\\\\\\''");
  expectPrintsAndParses(String8("\"}, {"), "'\"}, {'");
  expectPrintsAndParses(String8(std::string_view("a\0b", 3)), std::string("'a\0b'", 5));
}

TEST(Text, UnfinishedStringIsRefused) {
  for (char const* text : {"", "'", "'a", "'a\\", "'a\\'", "a"}) {
    EXPECT_THROW(valueFromStrep<String8>(text), ParseException) << text;
  }
}

TEST(Text, EnumeratorsPrintByNameAndAreFoundByNameAndNumber) {
  expectPrintsAndParses(Colour::dark_blue, "dark_blue");
  EXPECT_STREQ(stringValue(Colour::red), "red");
  EXPECT_STREQ(stringValue(static_cast<Colour>(4)), "?");
  EXPECT_EQ(enumFromNumber<Colour>(5), Colour::dark_blue);
  EXPECT_EQ(enumFromName<Colour>("red"), Colour::red);
  EXPECT_EQ(whatOf<RangeException>([] { enumFromNumber<Colour>(4); }),
            "no enumerator has the number 4");
  EXPECT_EQ(whatOf<RangeException>([] { enumFromNumber<Colour>(256 + 3); }),
            "no enumerator has the number 259");
  EXPECT_EQ(whatOf<RangeException>([] { enumFromName<Colour>("green"); }),
            "no enumerator has the name green");
}

TEST(Text, NetworkValuesStandInQuotes) {
  expectPrintsAndParses(*Lumo::EthAddr::parsed("02:00:00:00:00:0a"), "'02:00:00:00:00:0a'");
  expectPrintsAndParses(Lumo::IntfId("Ethernet1"), "'Ethernet1'");
  EXPECT_THROW(valueFromStrep<Lumo::EthAddr>("'02:00'"), ParseException);
}

TEST(Text, CompositePrintsAsItsKeywordConstructor) {
  Paint const paint(Colour::dark_blue, 1.5, Lumo::IntfId("1"));
  std::string const text =
      "Value('Test::Paint', ** {'colour': dark_blue, 'litres': 1.5, 'intfId': '1'})";
  expectPrintsAndParses(paint, text);
  std::ostringstream out;
  out << paint;
  EXPECT_EQ(out.str(), text);
}

TEST(Text, EveryPrefixOfAPrintedFormAndWhatHangsBehindItAreRefused) {
  std::string const text = valueToStrep(Paint(Colour::red, 0.0, Lumo::IntfId("1")));
  for (size_t n = 0; n < text.size(); ++n) {
    EXPECT_ANY_THROW(valueFromStrep<Paint>(text.substr(0, n))) << n;
  }
  EXPECT_THROW(valueFromStrep<Paint>(text + " "), ParseException);
}

TEST(Text, ErrorNamesTheExpectedAndThePlace) {
  EXPECT_EQ(whatOf<ParseException>([] { valueFromStrep<Paint>("Value('Other', "); }),
            "expected \"Value('Test::Paint', ** {\" at character 0 of 15");
  EXPECT_EQ(whatOf<ParseException>([] { valueFromStrep<bool>("maybe"); }),
            "expected True or False at character 5 of 5");
  EXPECT_EQ(whatOf<ParseException>([] { valueFromStrep<uint8_t>("300"); }),
            "expected a number up to 255 at character 0 of 3");
  EXPECT_EQ(whatOf<ParseException>([] { valueFromStrep<uint8_t>("3 "); }),
            "expected the end of the text at character 1 of 2");
}

}  // namespace
}  // namespace Vesk::Test
