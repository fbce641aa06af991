#include "bench/Row.h"

#include <malloc.h>

#include <algorithm>
#include <memory>

#include "bench/Fabric.h"
#include "bench/Micro.h"
#include "tests/platform/AllocationCount.h"

namespace Bench {

namespace {

constexpr double kSteadySeconds = 60.0;
constexpr double kSettled = 30.0;
// Fewer ports than these do as much work as kWorkOfPorts do.
constexpr uint32_t kFewPorts = 256;
constexpr double kWorkOfPorts = 4096.0;

constexpr double Row::*kFigures[] = {&Row::startCpu,        &Row::startTime,  &Row::octetsPerPort,
                                     &Row::steady,          &Row::mkpdu,      &Row::timesCrypto,
                                     &Row::protectedSteady, &Row::allocations};

// Large blocks are mapped, and stand in a figure of their own.
double allocated() {
  auto const info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd);
}

double steadySeconds(uint32_t ports) {
  return ports < kFewPorts ? kSteadySeconds * kWorkOfPorts / ports : kSteadySeconds;
}

// Processor seconds for a port and virtual second.
double steady(Fabric& fabric, double seconds) {
  double const begin = processorTime();
  fabric.runUntil(fabric.now() + seconds);
  return (processorTime() - begin) / fabric.ports() / seconds;
}

void bringUp(Fabric& fabric, Row& row, double begin) {
  fabric.openAllPorts();
  row.startCpu = processorTime() - begin;
  row.startTime = fabric.now();
}

// What the wires keep is none of the switches' memory.
void settle(Fabric& fabric, Row& row, double memory) {
  fabric.runUntil(fabric.now() + kSettled);
  double const wires = static_cast<double>(fabric.wireMemory());
  double const homes = static_cast<double>(fabric.homeMemory());
  row.octetsPerPort = (allocated() + homes - memory - wires) / fabric.ports();
}

void runSteadily(Fabric& fabric, Row& row, double seconds) {
  uint64_t const frames = fabric.frames();
  uint64_t const octets = fabric.octets();
  uint64_t const allocations = Macsec::allocations();
  row.steady = steady(fabric, seconds);
  double const sent = static_cast<double>(fabric.frames() - frames);
  row.allocations = static_cast<double>(Macsec::allocations() - allocations) / sent;
  row.mkpdu = row.steady * fabric.ports() * seconds / sent;
  double const frameOctets = static_cast<double>(fabric.octets() - octets) / sent;
  row.timesCrypto = row.mkpdu / bareCrypto(static_cast<unsigned>(frameOctets));
}

}  // namespace

Row measured(uint32_t portsOnEach, Keys keys) {
  Row row{};
  double const memory = allocated();
  double const begin = processorTime();
  auto fabric = std::make_unique<Fabric>(portsOnEach, keys);
  double const seconds = steadySeconds(fabric->ports());
  bringUp(*fabric, row, begin);
  settle(*fabric, row, memory);
  runSteadily(*fabric, row, seconds);
  fabric->delayProtectionIs(true);
  fabric->runUntil(fabric->now() + 5);
  row.protectedSteady = steady(*fabric, seconds / 4);
  return row;
}

Row median(std::vector<Row> rows) {
  Row result{};
  auto const middle = rows.begin() + static_cast<std::ptrdiff_t>(rows.size() / 2);
  for (auto figure : kFigures) {
    std::nth_element(rows.begin(), middle, rows.end(),
                     [figure](Row const& a, Row const& b) { return a.*figure < b.*figure; });
    result.*figure = (*middle).*figure;
  }
  return result;
}

}  // namespace Bench
