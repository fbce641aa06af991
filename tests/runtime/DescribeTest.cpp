#include "runtime/Describe.h"

#include <gtest/gtest.h>

#include "tests/runtime/TestEntity.h"
#include "tests/support/DescribedLayout.h"

namespace Vesk::Test {
namespace {

TEST(Describe, PrintsAnEntityWithAllThatItHolds) {
  auto port = make<Port>();
  port->speedIs(10);
  port->labelIs("a\\b");
  port->laneIs(Lumo::IntfId("1"), 4)->loadIs(3);
  port->noteIs("n", 5);
  EXPECT_EQ(entityToText(*port),
            "speed: 10\n"
            "label: 'a\\\\b'\n"
            "lane['1']:\n"
            "  intfId: '1'\n"
            "  width: 4\n"
            "  load: 3\n"
            "note['n']: 5\n");
}

TEST(Describe, WritesAValueAttributeFromItsTextThroughTheSetter) {
  Owner owner;
  auto port = make<Port>();
  auto reactor = make<SpeedReactor>(owner, port, "r");
  EXPECT_TRUE(attributeFromText(*port, "speed", "12"));
  EXPECT_TRUE(attributeFromText(*port, "label", "'it\\'s'"));
  EXPECT_EQ(port->speed(), 12u);
  EXPECT_EQ(port->label(), "it's");
  EXPECT_EQ(owner.heard.size(), 1u);
}

TEST(Describe, WritesNoAttributeThatIsAbsentOrNoValue) {
  auto port = make<Port>();
  EXPECT_FALSE(attributeFromText(*port, "height", "12"));
  EXPECT_FALSE(attributeFromText(*port, "lane", "12"));
  auto lane = make<Lane>(Lumo::IntfId("1"), 4u);
  EXPECT_FALSE(attributeFromText(*lane, "width", "12"));
}

TEST(Describe, RefusesATextThatIsNoSuchValue) {
  auto port = make<Port>();
  EXPECT_THROW(attributeFromText(*port, "speed", "fast"), ParseException);
  EXPECT_THROW(attributeFromText(*port, "speed", "4294967296"), ParseException);
  EXPECT_THROW(attributeFromText(*port, "speed", "1 "), ParseException);
  EXPECT_EQ(port->speed(), 0u);
}

TEST(Describe, FindsTheAttributeOfAField) {
  auto port = make<Port>();
  std::string value;
  EXPECT_STREQ(port->attributeAt(&port->lane(), value), "lane");
  EXPECT_STREQ(port->attributeAt(&port->label(), value), "label");
  EXPECT_EQ(value, "''");
  EXPECT_STREQ(port->attributeAt(&value, value), "?");
}

TEST(Describe, NamesEveryAttributeOfTheTestEntities) {
  expectEveryAttributeDescribed(*make<Port>());
  expectEveryAttributeDescribed(*make<Lane>(Lumo::IntfId("1"), 4u));
}

// Three fields, of which a test leaves one out of the description.
struct Forgetful : Value<Forgetful> {
  static constexpr char const* kTypeName = "Forgetful";
  uint32_t a = 0;
  uint32_t b = 0;
  uint32_t c = 0;
};

std::string gapWithout(uint32_t Forgetful::*forgotten) {
  Forgetful const value;
  Detail::LayoutVisitor<Forgetful> visitor(value);
  for (auto [name, field] :
       {std::pair{"a", &Forgetful::a}, {"b", &Forgetful::b}, {"c", &Forgetful::c}}) {
    if (field != forgotten) visitor(name, field);
  }
  return visitor.layout.gap(0, sizeof(Forgetful), alignof(Forgetful));
}

TEST(DescribedLayout, FindsTheFieldThatIsNotDescribed) {
  EXPECT_EQ(gapWithout(nullptr), "");
  EXPECT_EQ(gapWithout(&Forgetful::a),
            "something undescribed, or out of order, between the base "
            "and b");
  EXPECT_EQ(gapWithout(&Forgetful::b), "something undescribed, or out of order, between a and c");
  EXPECT_EQ(gapWithout(&Forgetful::c), "something undescribed after b");
}

}  // namespace
}  // namespace Vesk::Test
