#pragma once

#include <cstdint>
#include <vector>

#include "bench/Fabric.h"

namespace Bench {

/// What ports cost, so many of them on each of two switches.
struct Row {
  double startCpu;   ///< processor seconds until all ports are open
  double startTime;  ///< virtual seconds until all ports are open
  double octetsPerPort;
  double steady;           ///< processor seconds for a port and virtual second
  double protectedSteady;  ///< the same under delay protection
  double mkpdu;            ///< processor seconds for an MKPDU from timer to handled
  double timesCrypto;      ///< the same, as so many times the bare crypto right behind the run
  double allocations;      ///< for an MKPDU
};

Row measured(uint32_t portsOnEach, Keys keys = Keys::shared);
/// The median of each figure.
Row median(std::vector<Row> rows);

}  // namespace Bench
