#pragma once

#include <iosfwd>

#include "lab/world/Happening.h"

namespace Lab {

/// Writes one JSON object for each happening on a line of its own, as docs/lab.md describes.
class Events final : public Audience {
 public:
  explicit Events(std::ostream& out) : out_(out) {}
  void happened(Happening const& happening) override;

 private:
  std::ostream& out_;
};

}  // namespace Lab
