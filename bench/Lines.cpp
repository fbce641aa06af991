#include <cstdio>
#include <cstdlib>

#include "bench/Fabric.h"
#include "tests/platform/AllocationCount.h"

// What `bench/lines` looks at from outside: two switches in the steady state for some seconds. A
// store to `mark` begins that time, and another one ends it.

namespace {

constexpr double kSettled = 10.0;

uint64_t volatile mark = 0;

struct Counts {
  uint64_t frames;
  uint64_t allocations;
};

Counts counts(Bench::Fabric const& fabric) { return {fabric.frames(), Macsec::allocations()}; }

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: macsecd-lines PORTS SECONDS\n");
    return 2;
  }
  Bench::Fabric fabric(static_cast<uint32_t>(std::atoi(argv[1])) / 2);
  if (!fabric.openAllPorts()) {
    std::fprintf(stderr, "macsecd-lines: not all ports have opened\n");
    return 1;
  }
  fabric.runUntil(fabric.now() + kSettled);
  Counts const before = counts(fabric);
  double const end = fabric.now() + std::atof(argv[2]);
  mark = 1;
  fabric.runUntil(end);
  mark = 2;
  Counts const after = counts(fabric);
  std::printf(R"({"mark": "%p", "mkpdus": %lu, "allocations": %lu})"
              "\n",
              const_cast<void*>(static_cast<void volatile*>(&mark)), after.frames - before.frames,
              after.allocations - before.allocations);
}
