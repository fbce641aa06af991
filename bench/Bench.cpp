#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string_view>
#include <vector>

#include "bench/Micro.h"
#include "bench/Row.h"

// One table: what a port costs, from one to thousands of them in one process. Figures to quote are
// the ratios, which stand in one run. bench/compare reads the columns of ports, memory and MKPDU by
// their places.

namespace {

struct Options {
  int runs = 1;
  Bench::Keys keys = Bench::Keys::shared;
  std::vector<uint32_t> ports;
};

Options options(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    if (std::string_view(argv[i]) == "--runs" && i + 1 < argc) {
      options.runs = std::max(1, std::atoi(argv[++i]));
    } else if (std::string_view(argv[i]) == "--own-keys") {
      options.keys = Bench::Keys::own;
    } else {
      options.ports.push_back(static_cast<uint32_t>(std::atoi(argv[i])));
    }
  }
  if (options.ports.empty()) options.ports = {1, 16, 256, 1024, 4096, 16384};
  return options;
}

Bench::Row medianOf(Options const& options, uint32_t portsOnEach) {
  std::vector<Bench::Row> rows;
  for (int run = 0; run < options.runs; ++run) {
    rows.push_back(Bench::measured(portsOnEach, options.keys));
  }
  return Bench::median(rows);
}

void printHead() {
  std::printf("%8s %12s %12s %12s %14s %14s %12s %10s %12s\n", "ports", "start CPU s",
              "start virt s", "KiB/port", "us/port/s", "us/port/s dp", "us/MKPDU", "x crypto",
              "allocs/MKPDU");
}

void print(uint32_t ports, Bench::Row const& row) {
  std::printf("%8u %12.3f %12.1f %12.1f %14.2f %14.2f %12.2f %10.2f %12.2f\n", ports, row.startCpu,
              row.startTime, row.octetsPerPort / 1024, row.steady * 1e6, row.protectedSteady * 1e6,
              row.mkpdu * 1e6, row.timesCrypto, row.allocations);
  std::fflush(stdout);
}

void printTable(Options const& options) {
  double perPortAt16 = 0;
  std::map<uint32_t, double> timesThatAt16;
  printHead();
  for (uint32_t ports : options.ports) {
    // Half of the ports on each switch, and at least one.
    uint32_t const onEach = std::max(1u, ports / 2);
    Bench::Row const row = medianOf(options, onEach);
    print(2 * onEach, row);
    if (ports == 16) perPortAt16 = row.steady;
    if (ports >= 4096 && perPortAt16 > 0) timesThatAt16[ports] = row.steady / perPortAt16;
  }
  std::printf("\n");
  for (auto const& [ports, times] : timesThatAt16) {
    std::printf("cost of a port at %u against 16: %.2f times\n", ports, times);
  }
}

void printYardsticks() {
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

}  // namespace

// macsecd-bench [--runs RUNS] [--own-keys] [PORTS...]: a row of medians for each number of ports;
// without any, the whole table.
int main(int argc, char** argv) {
  printTable(options(argc, argv));
  printYardsticks();
}
