#include "lab/random/RandomScenario.h"

#include <fmt/format.h>

#include "lab/random/RandomFaults.h"

namespace Lab {

namespace {

constexpr int kSeconds = 200;
constexpr int kFaultsEnd = 130;
constexpr NetSize kLargeNet{6, 8};

}  // namespace

std::string randomScenario(uint32_t seed) {
  Dice dice(seed);
  std::string text =
      fmt::format("title Random scenario {0}\nseed {0}\nrun until {1}\n", seed, kSeconds);
  RandomNet const net = drawNet(dice, NetSize(), text);
  RandomFaults(net, dice, text).draw();
  return text;
}

std::string swarmScenario(uint32_t number, FaultProfile profile) {
  Dice dice(number, Stream::swarm);
  double const dataEvery = dice.oneOf<double>({0.2, 0.5, 1});
  std::string text = fmt::format(
      "title Run {0} of the swarm\nseed {0}\nrun until {1}\nfaults end at {2}\ndata every {3}\n"
      "invariants hold\n",
      number, kSeconds, kFaultsEnd, dataEvery);
  RandomNet const net = drawNet(dice, dice.chance(75) ? NetSize() : kLargeNet, text);
  RandomFaults(net, dice, text).drawSome(profile);
  return text;
}

}  // namespace Lab
