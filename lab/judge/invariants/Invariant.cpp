#include "lab/judge/invariants/Invariant.h"

#include <fmt/format.h>

#include <algorithm>

#include "lab/world/Clock.h"

namespace Lab {

namespace {

constexpr size_t kMost = 3;

}  // namespace

std::string Breach::text() const {
  return fmt::format("{}: at {}: {}", invariant, timeText(time), what);
}

bool Invariant::isDue(double time, double seconds) {
  if (time < nextDue_) return false;
  nextDue_ = time + seconds;
  return true;
}

void Invariant::breaks(std::string what) {
  if (breaches_.size() >= kMost) return;
  auto const isSame = [&](Breach const& told) { return told.what == what; };
  if (std::ranges::any_of(breaches_, isSame)) return;
  breaches_.push_back({name_, now(), std::move(what)});
}

}  // namespace Lab
