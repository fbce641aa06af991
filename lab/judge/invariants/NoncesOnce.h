#pragma once

#include <set>
#include <tuple>

#include "lab/judge/invariants/Invariant.h"

namespace Lab {

/// Of all transmit SAs that were installed, and of all frames of data that left.
class NoncesOnce final : public Invariant {
 public:
  explicit NoncesOnce(Simulation& simulation)
      : Invariant(simulation, "nonces-once",
                  "No two frames under one key have the same SSCI and packet number, and none is "
                  "sent with a key that is spent."),
        simulation_(simulation) {}

  void dataSent(double time, DataSent const& sent) override;
  void ended() override;

 private:
  // Identifier and number of the key, SCI, and packet number as the SecTAG has it.
  using Nonce = std::tuple<std::string, uint32_t, std::string, uint32_t>;

  Simulation& simulation_;
  std::set<Nonce> used_;
};

}  // namespace Lab
