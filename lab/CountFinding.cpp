#include <fmt/format.h>

#include "lab/Finding.h"
#include "lab/MadeFrame.h"

// What a switch has counted of its frames.

namespace Lab {

namespace {

using Macsec::MessageCounterType;

std::string kindOf(HasCounted const& expected) {
  std::string kind = Vesk::stringValue(expected.direction);
  kind += std::string(" ") + Vesk::stringValue(expected.type);
  if (expected.defect) kind += std::string(" ") + Vesk::stringValue(*expected.defect);
  return kind;
}

uint64_t counted(Codec::FrameCounters const& counters, HasCounted const& expected) {
  Lumo::IntfId const intfId(expected.port.interface.c_str());
  auto const count = [&](Defect defect) {
    return counters.value(intfId, expected.direction, expected.type, defect);
  };
  if (expected.defect) return count(*expected.defect);
  if (expected.type == MessageCounterType::success) return count(Defect::none);
  uint64_t sum = count(Defect::invalid);
  for (Defect const defect : defects()) sum += count(defect);
  return sum;
}

}  // namespace

Finding Findings::of(HasCounted const& expected) const {
  auto const* const codec = simulation_.switchOf(expected.port.switchName).host().codec();
  if (!codec) return {false, expected.port.switchName + " doesn't run"};
  uint64_t const count = counted(codec->counters(), expected);
  return {expected.atLeast ? count >= expected.frames : count == expected.frames,
          fmt::format("{} counts {} {}", expected.port.text(), count, kindOf(expected))};
}

}  // namespace Lab
