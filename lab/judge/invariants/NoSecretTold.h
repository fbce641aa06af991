#pragma once

#include <set>
#include <string>

#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class NoSecretTold final : public Invariant {
 public:
  explicit NoSecretTold(Simulation const& simulation);

  void acts(double time, Action const& action) override;
  void happened(Event const& event) override;
  void instantDone(double time) override;
  void ended() override;

 private:
  static constexpr double kBetweenLooks = 1;  // seconds

  void secretIs(Vesk::String8 const& text);
  void secretsOf(Macsecd::SwitchConfig const& config);
  void look(std::string const& text, std::string const& where);

  std::set<std::string> secrets_;
};

}  // namespace Lab
