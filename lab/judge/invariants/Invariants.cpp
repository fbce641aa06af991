#include "lab/judge/invariants/Invariants.h"

#include <algorithm>

#include "lab/judge/invariants/CountersAddUp.h"
#include "lab/judge/invariants/DataPasses.h"
#include "lab/judge/invariants/EndsAgree.h"
#include "lab/judge/invariants/ExplainNamesCauses.h"
#include "lab/judge/invariants/NoSecretTold.h"
#include "lab/judge/invariants/NoncesOnce.h"
#include "lab/judge/invariants/NothingGrows.h"
#include "lab/judge/invariants/NothingInClear.h"
#include "lab/judge/invariants/NothingLost.h"
#include "lab/judge/invariants/OneKeyServer.h"
#include "lab/judge/invariants/SecuredInTheEnd.h"
#include "lab/judge/invariants/StoreHoldsTree.h"
#include "lab/judge/invariants/StrangersChangeNothing.h"

namespace Lab {

Invariants::Invariants(Simulation& simulation) : calm_(simulation) {
  simulation.audienceIs(calm_);
  all_.push_back(std::make_unique<NoncesOnce>(simulation));
  all_.push_back(std::make_unique<NothingInClear>(simulation));
  all_.push_back(std::make_unique<DataPasses>(simulation, calm_));
  all_.push_back(std::make_unique<NothingLost>(simulation, calm_));
  all_.push_back(std::make_unique<EndsAgree>(simulation, calm_));
  all_.push_back(std::make_unique<OneKeyServer>(simulation, calm_));
  all_.push_back(std::make_unique<StrangersChangeNothing>(simulation));
  all_.push_back(std::make_unique<NothingGrows>(simulation));
  all_.push_back(std::make_unique<StoreHoldsTree>(simulation));
  all_.push_back(std::make_unique<ExplainNamesCauses>(simulation, calm_));
  all_.push_back(std::make_unique<NoSecretTold>(simulation));
  all_.push_back(std::make_unique<CountersAddUp>(simulation));
  all_.push_back(std::make_unique<SecuredInTheEnd>(simulation, calm_));
  for (auto const& invariant : all_) simulation.audienceIs(*invariant);
}

std::vector<Breach> Invariants::breaches() {
  std::vector<Breach> all;
  for (auto const& invariant : all_) {
    invariant->ended();
    all.insert(all.end(), invariant->breaches().begin(), invariant->breaches().end());
  }
  std::ranges::stable_sort(all, {}, &Breach::time);
  return all;
}

std::vector<std::string> invariantNames() {
  Scenario const nothing;
  Simulation simulation(nothing, 1);
  Invariants const invariants(simulation);
  std::vector<std::string> names;
  for (auto const& one : invariants.all()) names.push_back(one->name());
  return names;
}

}  // namespace Lab
