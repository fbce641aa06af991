// Linked into each test program: its tests run in the common world from the start.

#include "tests/support/CommonWorld.h"

namespace Support {
namespace {

[[maybe_unused]] bool const hasEntered = [] {
  CommonWorld::scope().emplace(CommonWorld::instance());
  return true;
}();

}  // namespace
}  // namespace Support
