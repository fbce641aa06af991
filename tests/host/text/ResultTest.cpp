#include "host/text/Result.h"

#include <gtest/gtest.h>

#include <memory>

namespace Macsecd {
namespace {

Result<int> half(int number) {
  if (number % 2 != 0) return Fault{"an odd number", "give an even one"};
  return number / 2;
}

Result<> even(int number) {
  if (auto const halved = half(number); !halved) return halved.fault();
  return {};
}

TEST(Result, IsTrueWithAValueAndFalseWithAFault) {
  EXPECT_TRUE(half(4));
  EXPECT_EQ(*half(4), 2);
  EXPECT_FALSE(half(3));
  EXPECT_EQ(half(3).fault(), (Fault{"an odd number", "give an even one"}));
}

TEST(Result, WithoutAValueIsTrueWhenAllWentWell) {
  EXPECT_TRUE(even(4));
  EXPECT_FALSE(even(3));
  EXPECT_EQ(even(3).fault().text(), "an odd number; give an even one");
}

TEST(Result, HandsItsValueOver) {
  Result<std::unique_ptr<std::string>> made = std::make_unique<std::string>("text");
  EXPECT_EQ((*made)->size(), 4u);
  auto const taken = *std::move(made);
  EXPECT_EQ(*taken, "text");
}

TEST(Result, OfATextIsAValueAndOfAFaultIsNone) {
  EXPECT_TRUE(Result<std::string>("what"));
  EXPECT_FALSE(Result<std::string>(Fault{"what", ""}));
  EXPECT_EQ(Result<std::string>(Fault{"what", ""}).fault().text(), "what");
}

TEST(ResultDeathTest, WhoAsksForWhatIsNotThereEndsTheProcess) {
  EXPECT_DEATH(static_cast<void>(*half(3)), "");
  EXPECT_DEATH(static_cast<void>(half(4).fault()), "");
  EXPECT_DEATH(static_cast<void>(even(4).fault()), "");
}

}  // namespace
}  // namespace Macsecd
