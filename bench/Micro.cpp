#include "bench/Micro.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <string>
#include <vector>

#include "bench/Fabric.h"
#include "host/config/ConfigTree.h"
#include "model/Factories.h"
#include "platform/AesCmac.h"
#include "platform/ProviderCmac.h"
#include "runtime/Trace.h"

namespace Bench {

namespace {

Vesk::TraceHandle traceHandle("Bench");

// Keeps the compiler from working the loop out beforehand.
template <class T>
void use(T const& value) {
  asm volatile("" : : "r"(&value) : "memory");
}

template <class F>
double best(unsigned rounds, F timed) {
  double least = 1e9;
  for (unsigned i = 0; i < rounds; ++i) {
    double const begin = processorTime();
    timed();
    least = std::min(least, processorTime() - begin);
  }
  return least;
}

template <class Cmac>
double twoMacs(unsigned octets) {
  constexpr unsigned kTimes = 500000;
  std::vector<uint8_t> const key(16, 0x5a);
  std::vector<uint8_t> const frame(octets, 0xa5);
  Cmac sender(key);
  Cmac receiver(key);
  std::array<uint8_t, 16> icv;
  double const begin = processorTime();
  for (unsigned i = 0; i < kTimes; ++i) {
    use(sender.compute(frame, icv) && receiver.compute(frame, icv));
  }
  return (processorTime() - begin) / kTimes;
}

}  // namespace

double processorTime() {
  timespec time;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double bareCrypto(unsigned octets) { return twoMacs<Macsec::ProviderCmac>(octets); }
double ownCrypto(unsigned octets) { return twoMacs<Macsec::AesCmac>(octets); }

double disabledTrace() {
  constexpr unsigned kTimes = 50000000;
  auto loop = [](bool traces) {
    return best(5, [traces] {
      for (unsigned i = 0; i < kTimes; ++i) {
        if (traces) VESK_TRACE(8, ": round ", i);
        use(i);
      }
    });
  };
  return (loop(true) - loop(false)) / kTimes;
}

double unchangedReload(unsigned interfaces) {
  double const clock = 0;
  FabricWorld world(clock, 1);
  Vesk::WorldScope const scope(world);
  Macsecd::SwitchConfig config;
  for (unsigned i = 0; i < interfaces; ++i) {
    Macsecd::ProfileConfig profile;
    profile.name = "p" + std::to_string(i);
    profile.key = Macsecd::KeyConfig{"6162", Vesk::String8("00112233445566778899aabbccddeeff")};
    config.profiles.push_back(profile);
    config.interfaces.push_back({"Ethernet" + std::to_string(i), profile.name});
  }
  auto const tree = Macsec::configFactory("bench");
  Macsecd::writeConfig(config, *tree);
  return best(3, [&] { Macsecd::writeConfig(config, *tree); }) / interfaces;
}

}  // namespace Bench
