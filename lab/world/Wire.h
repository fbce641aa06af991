#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "lab/scenario/Scenario.h"
#include "lab/world/Random.h"

namespace Lab {

using Frame = std::vector<uint8_t>;

/// A frame on its way to the other ends.
struct Flight {
  double delay;  ///< seconds from now until it arrives
  Frame frame;
};

/// A wire between two or more ends, each way with faults of its own. It says what becomes of
/// a frame; who owns it carries the frame to the other ends.
class Wire {
 public:
  Wire(size_t ends, double delay, Random random)
      : ways_(ends), delay_(delay), random_(std::move(random)) {}

  /// What goes on its way when this end sends the frame, in order of departure.
  std::vector<Flight> sent(size_t end, std::span<uint8_t const> frame);
  bool isCut(size_t end) const { return ways_[end].cut; }
  /// No fault is on, either way.
  bool isSound() const;
  /// All faults end.
  void repair();
  /// A fault of what `end` sends, or of all ends. A frame that waits when its way is repaired still
  /// follows the next one.
  void faultIs(size_t end, WireFault const& fault);

 private:
  // Whom a fault hits. Ways that share a fault share the count.
  struct Hits {
    std::optional<uint32_t> frames;
    double percent;
  };
  struct Way {
    bool cut = false;
    std::optional<double> delay;
    std::shared_ptr<Hits> lose;
    std::shared_ptr<Hits> duplicate;
    std::shared_ptr<Hits> reorder;
    std::shared_ptr<Hits> corrupt;
    uint32_t octet = 0;
    std::optional<Frame> waiting;
  };

  static void repair(Way& way);
  bool hits(std::shared_ptr<Hits> const& fault);
  void faultOfWayIs(Way& way, WireFault const& fault, std::shared_ptr<Hits> const& hits);

  std::vector<Way> ways_;
  double delay_;
  Random random_;
};

}  // namespace Lab
