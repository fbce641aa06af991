#pragma once

#include <iosfwd>

#include "lab/world/Event.h"

namespace Lab {

/// Writes one JSON object for each event on a line of its own, as docs/lab.md describes.
class Events final : public Audience {
 public:
  explicit Events(std::ostream& out) : out_(out) {}
  void happened(Event const& event) override;

 private:
  std::ostream& out_;
};

}  // namespace Lab
