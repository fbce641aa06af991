#include "lab/random/RandomScenario.h"

#include <fmt/format.h>

#include "lab/random/RandomFaults.h"

namespace Lab {

namespace {

constexpr int kSeconds = 200;

}  // namespace

std::string randomScenario(uint32_t seed) {
  Dice dice(seed);
  std::string text =
      fmt::format("title Random scenario {0}\nseed {0}\nrun until {1}\n", seed, kSeconds);
  RandomNet const net = drawNet(dice, text);
  RandomFaults(net, dice, text).draw();
  return text;
}

}  // namespace Lab
