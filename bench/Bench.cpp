#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <vector>

#include "bench/Fabric.h"
#include "bench/Micro.h"
#include "tests/platform/AllocationCount.h"

// One table: what a port costs, from one to thousands of them in one process. Figures to quote are
// the ratios, which stand in one run.

namespace {

constexpr double kSteadySeconds = 60.0;
constexpr double kLongestStart = 60.0;

struct Row {
  uint32_t portsOnEach;
  double startCpu;   // seconds of processor time until all ports are open
  double startTime;  // virtual seconds until all ports are open
  double octetsPerPort;
  double steady;           // processor seconds for a port and virtual second
  double protectedSteady;  // the same under delay protection
  double mkpdu;            // processor seconds for an MKPDU from timer to handled
  double frameOctets;
  double allocations;  // for an MKPDU
};

// Large blocks are mapped, and stand in a figure of their own.
double allocated() {
  auto const info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd);
}

// Processor seconds for a port and virtual second.
double steady(Bench::Fabric& fabric, double seconds) {
  double const begin = Bench::processorTime();
  fabric.runUntil(fabric.now() + seconds);
  return (Bench::processorTime() - begin) / fabric.ports() / seconds;
}

void bringUp(Bench::Fabric& fabric, Row& row, double begin) {
  while (!fabric.areAllPortsOpen() && fabric.now() < kLongestStart) {
    fabric.runUntil(fabric.now() + 0.5);
  }
  row.startCpu = Bench::processorTime() - begin;
  row.startTime = fabric.now();
}

Row measured(uint32_t portsOnEach, double secondsScale) {
  Row row{portsOnEach, 0, 0, 0, 0, 0, 0, 0, 0};
  double const memory = allocated();
  double const begin = Bench::processorTime();
  auto fabric = std::make_unique<Bench::Fabric>(portsOnEach);
  bringUp(*fabric, row, begin);
  fabric->runUntil(fabric->now() + 30);
  double const wires = static_cast<double>(fabric->wireMemory());
  row.octetsPerPort = (allocated() - memory - wires) / fabric->ports();
  uint64_t const frames = fabric->frames();
  uint64_t const octets = fabric->octets();
  double const seconds = kSteadySeconds * secondsScale;
  uint64_t const allocations = Macsec::allocations();
  row.steady = steady(*fabric, seconds);
  uint64_t const sent = fabric->frames() - frames;
  row.allocations =
      static_cast<double>(Macsec::allocations() - allocations) / static_cast<double>(sent);
  row.frameOctets = static_cast<double>(fabric->octets() - octets) / static_cast<double>(sent);
  row.mkpdu = row.steady * fabric->ports() * seconds / static_cast<double>(sent);
  fabric->delayProtectionIs(true);
  fabric->runUntil(fabric->now() + 5);
  row.protectedSteady = steady(*fabric, seconds / 4);
  return row;
}

std::vector<uint32_t> sizes(int argc, char** argv) {
  std::vector<uint32_t> sizes;
  for (int i = 1; i < argc; ++i) sizes.push_back(static_cast<uint32_t>(std::atoi(argv[i])));
  if (sizes.empty()) sizes = {1, 16, 256, 1024, 4096, 16384};
  return sizes;
}

}  // namespace

// The arguments are numbers of ports; without any, the whole table.
int main(int argc, char** argv) {
  std::printf("%8s %12s %12s %12s %14s %14s %12s %10s %12s\n", "ports", "start CPU s",
              "start virt s", "KiB/port", "us/port/s", "us/port/s dp", "us/MKPDU", "x crypto",
              "allocs/MKPDU");
  double perPortAt16 = 0;
  std::map<uint32_t, double> timesThatAt16;
  for (uint32_t ports : sizes(argc, argv)) {
    // Half of the ports on each switch, and at least one.
    uint32_t const onEach = ports == 1 ? 1 : ports / 2;
    Row const row = measured(onEach, ports < 256 ? 4096.0 / ports : 1.0);
    double const crypto = Bench::bareCrypto(static_cast<unsigned>(row.frameOctets));
    std::printf("%8u %12.3f %12.1f %12.1f %14.2f %14.2f %12.2f %10.2f %12.2f\n", 2 * onEach,
                row.startCpu, row.startTime, row.octetsPerPort / 1024, row.steady * 1e6,
                row.protectedSteady * 1e6, row.mkpdu * 1e6, row.mkpdu / crypto, row.allocations);
    if (ports == 16) perPortAt16 = row.steady;
    if (ports >= 4096 && perPortAt16 > 0) timesThatAt16[ports] = row.steady / perPortAt16;
  }
  std::printf("\n");
  for (auto const& [ports, times] : timesThatAt16) {
    std::printf("cost of a port at %u against 16: %.2f times\n", ports, times);
  }
  std::printf(
      "bare crypto of one MKPDU (two AES-CMACs over 190 octets): %.2f us as OpenSSL has it, "
      "%.2f us as the codec does\n",
      Bench::bareCrypto(190) * 1e6, Bench::ownCrypto(190) * 1e6);
  double const reload = Bench::unchangedReload(8192);
  std::printf(
      "an unchanged configuration written again, an interface of 8192: %.2f us, %.2f times "
      "that of 512\n",
      reload * 1e6, reload / Bench::unchangedReload(512));
  std::printf("a disabled trace statement: %.2f ns\n", Bench::disabledTrace() * 1e9);
}
