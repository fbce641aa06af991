#include "lab/verdict/Judges.h"

#include <fmt/format.h>

namespace Lab {

namespace {

template <class Findings>
std::vector<std::string> textsOf(Findings const& findings) {
  std::vector<std::string> texts;
  for (auto const& finding : findings) texts.push_back(finding.text());
  return texts;
}

}  // namespace

// Where invariants hold, they judge frames of data alone.
Judges::Judges(Simulation& simulation)
    : simulation_(simulation), expectations_(simulation), dataLoss_(simulation) {
  simulation.audienceIs(expectations_);
  if (simulation.scenario().invariantsHold) {
    invariants_.emplace(simulation);
  } else {
    simulation.audienceIs(dataLoss_);
  }
}

std::optional<Judges::Verdict> Judges::verdict() {
  auto const& repeats = simulation_.nonceRepeats();
  if (auto const failed = textsOf(expectations_.failures()); !failed.empty()) {
    return Verdict{fmt::format("{} of {} expectations", failed.size(), expectations_.size()),
                   failed};
  }
  if (!repeats.empty()) return Verdict{"nonces are repeated", repeats};
  if (auto const lost = textsOf(dataLoss_.lost()); !lost.empty()) {
    return Verdict{"data is lost", lost};
  }
  auto const broken = invariants_ ? textsOf(invariants_->breaches()) : std::vector<std::string>();
  if (!broken.empty()) return Verdict{"invariants are broken", broken};
  return std::nullopt;
}

}  // namespace Lab
