#include "runtime/Exceptions.h"

#include <gtest/gtest.h>

namespace Vesk::Test {
namespace {

template <class E, class Throw>
void expectThrows(Throw thrower) {
  try {
    thrower("what is wrong");
    FAIL() << "nothing thrown";
  } catch (E const& e) {
    EXPECT_STREQ(e.what(), "what is wrong");
  }
}

TEST(Exceptions, BearTheTextGiven) {
  expectThrows<RangeException>(throwRangeException);
  expectThrows<NameInUseException>(throwNameInUseException);
  expectThrows<InternalException>(throwInternalException);
  expectThrows<ParseException>(throwParseException);
}

}  // namespace
}  // namespace Vesk::Test
