#include "runtime/String8.h"

#include <gtest/gtest.h>

#include <sstream>

#include "runtime/PtrInterface.h"

namespace Vesk::Test {
namespace {

TEST(String8, DefaultIsTheEmptyText) {
  String8 const empty;
  EXPECT_TRUE(empty.empty());
  EXPECT_EQ(empty.length(), 0u);
  EXPECT_STREQ(empty.charPtr(), "");
  EXPECT_EQ(empty, String8(""));
  EXPECT_EQ(empty.hash(), String8("").hash());
}

TEST(String8, IsBytesWithALengthAndMayHoldZeroBytes) {
  String8 const s(std::string_view("a\0b", 3));
  EXPECT_EQ(s.length(), 3u);
  EXPECT_EQ(s.charPtr()[3], '\0');
  EXPECT_NE(s, String8("a"));
  EXPECT_NE(s.hash(), String8("a").hash());
}

TEST(String8, CopySharesTheBytes) {
  String8 const a("text");
  String8 const b = a;
  EXPECT_EQ(a.charPtr(), b.charPtr());
}

TEST(String8, EqualTextsAreEqualWithTheSameHash) {
  String8 const a("text"), b(std::string("text"));
  EXPECT_NE(a.charPtr(), b.charPtr());
  EXPECT_EQ(a, b);
  EXPECT_EQ(a, "text");
  EXPECT_EQ(a.hash(), b.hash());
  EXPECT_LT(String8("a"), String8("b"));
  EXPECT_LT(String8("a"), String8("aa"));
}

TEST(String8, SumIsANewTextAndChangesNoCopy) {
  String8 a("one");
  String8 const before = a;
  a += " two";
  EXPECT_EQ(a, "one two");
  EXPECT_EQ(before, "one");
  EXPECT_EQ(a + String8(), "one two");
  EXPECT_EQ(String8() + a, "one two");
  EXPECT_EQ(a += a, "one twoone two");
}

TEST(String8, RestOfAShorterTextIsEmpty) {
  EXPECT_EQ(String8("abc").from(1), "bc");
  EXPECT_EQ(String8("abc").from(3), "");
  EXPECT_EQ(String8("abc").from(16), "");
  EXPECT_EQ(String8().from(16), "");
}

TEST(String8, FilledHoldsWhatTheFillerWrites) {
  auto fill = [](char* p) { p[0] = 'x', p[1] = 'y'; };
  EXPECT_EQ(String8::filled(2, fill), "xy");
  EXPECT_EQ(String8::secretFilled(2, fill), "xy");
  EXPECT_TRUE(String8::filled(0, fill).empty());
}

TEST(String8, SecretIsTheSameTextInAllElse) {
  String8 const key = String8::secret("key");
  EXPECT_EQ(key, "key");
  EXPECT_EQ(key + "s", "keys");
  EXPECT_EQ(key.from(1), "ey");
  EXPECT_EQ(key.hash(), String8("key").hash());
}

TEST(String8, GoesToAStreamAsItIs) {
  std::ostringstream out;
  out << String8("a'b");
  EXPECT_EQ(out.str(), "a'b");
}

TEST(String8, CountsItsCopiesWithLockedOperationsToo) {
  VFPtrInterface::enableThreadSafePointers = 1;
  String8 a("text");
  {
    String8 const b = a;
    String8 const c = b;
    a = String8();
    EXPECT_EQ(c, "text");
  }
  VFPtrInterface::enableThreadSafePointers = 0;
  EXPECT_EQ(a, "");
}

}  // namespace
}  // namespace Vesk::Test
