#include "lab/world/Wire.h"

#include <algorithm>

namespace Lab {

bool Wire::hits(std::shared_ptr<Hits> const& fault) {
  if (!fault) return false;
  if (!fault->frames) return random_.chance(fault->percent);
  if (*fault->frames == 0) return false;
  --*fault->frames;
  return true;
}

std::vector<Flight> Wire::sent(size_t end, std::span<uint8_t const> frame) {
  Way& way = ways_[end];
  if (way.cut || hits(way.lose)) return {};
  Frame copy(frame.begin(), frame.end());
  if (way.octet < copy.size() && hits(way.corrupt)) copy[way.octet] ^= 0xff;
  if (!way.waiting && hits(way.reorder)) {
    way.waiting = std::move(copy);
    return {};
  }
  double const delay = way.delay.value_or(delay_);
  std::vector<Flight> flights{{delay, std::move(copy)}};
  if (hits(way.duplicate)) flights.push_back(flights.front());
  if (way.waiting) flights.push_back({delay, *std::exchange(way.waiting, std::nullopt)});
  return flights;
}

void Wire::faultIs(size_t end, WireFault const& fault) {
  auto const hits = std::make_shared<Hits>(Hits{fault.share.frames, fault.share.percent});
  for (size_t i = 0; i < ways_.size(); ++i) {
    if (i == end || fault.bothWays) faultOfWayIs(ways_[i], fault, hits);
  }
}

bool Wire::isSound() const {
  auto const isOver = [](std::shared_ptr<Hits> const& fault) {
    return !fault || (fault->frames && *fault->frames == 0);
  };
  return std::ranges::all_of(ways_, [&](Way const& way) {
    return !way.cut && !way.delay && !way.waiting && isOver(way.lose) && isOver(way.duplicate) &&
           isOver(way.reorder) && isOver(way.corrupt);
  });
}

void Wire::repair() {
  for (Way& way : ways_) repair(way);
}

// What still waits follows the next frame all the same.
void Wire::repair(Way& way) {
  Way repaired;
  repaired.waiting = std::move(way.waiting);
  way = std::move(repaired);
}

void Wire::faultOfWayIs(Way& way, WireFault const& fault, std::shared_ptr<Hits> const& hits) {
  switch (fault.kind) {
    case FaultKind::lose:
      way.lose = hits;
      break;
    case FaultKind::duplicate:
      way.duplicate = hits;
      break;
    case FaultKind::reorder:
      way.reorder = hits;
      break;
    case FaultKind::corrupt:
      way.corrupt = hits;
      way.octet = fault.octet;
      break;
    case FaultKind::delay:
      way.delay = fault.delay;
      break;
    case FaultKind::cut:
      way.cut = true;
      break;
    case FaultKind::repair:
      repair(way);
      break;
  }
}

}  // namespace Lab
