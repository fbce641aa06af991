#include "runtime/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace Vesk {

void assertionFailed(char const* condition, char const* file, int line, char const* function) {
  std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", file, line, function, condition);
  std::abort();
}

}  // namespace Vesk
