#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <set>
#include <string>

#include "host/watch/PortTrouble.h"

namespace Lab {

struct ComparisonOptions {
  uint32_t scenarios = 1000;
  uint32_t seed = 1;  ///< of the first scenario; each has the next one
  bool json = false;
};

/// What the doctor, or what it does about one trouble alone, has brought to the scenarios in which
/// it has acted. Seconds are port-seconds in which a port was secured (`SecuredTime`).
struct Benefit {
  uint32_t acted = 0;  ///< scenarios
  uint32_t better = 0;
  uint32_t worse = 0;
  double with = 0;
  double without = 0;

  void add(double secondsWith, double secondsWithout);
  bool passes() const { return with >= without; }
};

/// Plays random scenarios with the port doctor and without it, and where it has acted, once more
/// with each of the troubles that it acts on alone.
class DoctorComparison {
 public:
  void add(uint32_t seed);

  uint32_t scenarios() const { return scenarios_; }
  double possible() const { return possible_; }
  double secured() const { return secured_; }
  Benefit const& all() const { return all_; }
  Benefit of(Macsecd::PortTrouble trouble) const;
  /// By how much each scenario differs in which the doctor has acted, by seed.
  std::map<uint32_t, double> const& differences() const { return differences_; }
  using NonceRepeats = std::map<uint32_t, std::set<std::string>>;
  /// Nonces that could have been repeated, with the doctor or without it, by seed.
  NonceRepeats const& nonceRepeats() const { return nonceRepeats_; }
  /// Whether as much is secured with the doctor as without, in sum and for each trouble, and no
  /// nonce could be repeated.
  bool passes() const;

 private:
  uint32_t scenarios_ = 0;
  double possible_ = 0;  ///< port-seconds of all scenarios
  double secured_ = 0;   ///< of them with the doctor
  Benefit all_;
  std::map<Macsecd::PortTrouble, Benefit> alone_;
  std::map<uint32_t, double> differences_;
  NonceRepeats nonceRepeats_;
};

/// Compares, and writes the outcome. Returns the exit status: 0 if the doctor passes, 1 otherwise.
int compareDoctor(ComparisonOptions const& options, std::ostream& out);

}  // namespace Lab
