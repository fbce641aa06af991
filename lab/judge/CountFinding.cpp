#include <fmt/format.h>

#include "lab/judge/Finding.h"
#include "lab/world/MadeFrame.h"

// What a switch has counted of its frames.

namespace Lab {

namespace {

using Macsec::MessageCounterType;
using Macsec::Brine::MessageCounterData;

std::string kindOf(HasCounted const& expected) {
  std::string kind = Vesk::stringValue(expected.direction);
  kind += std::string(" ") + Vesk::stringValue(expected.type);
  if (expected.defect) kind += std::string(" ") + Macsec::reasonName(*expected.defect);
  if (expected.sinceClear) kind += " since clear";
  return kind;
}

uint64_t counted(MessageCounterData const& counters, HasCounted const& expected) {
  auto const count = [&](Defect defect) {
    return counters.value(expected.direction, expected.type, defect);
  };
  if (expected.defect) return count(*expected.defect);
  if (expected.type == MessageCounterType::success) return count(Defect::none);
  uint64_t sum = count(Defect::invalid);
  for (Defect const defect : defects()) sum += count(defect);
  return sum;
}

}  // namespace

Finding Findings::of(HasCounted const& expected) const {
  auto const& host = simulation_.switchOf(expected.port.switchName).host();
  if (!host.running()) return {false, expected.port.switchName + " doesn't run"};
  Lumo::IntfId const intfId(expected.port.interface.c_str());
  auto& counters = *host.counters();
  uint64_t count = counted(counters.messageCounterData(intfId), expected);
  if (expected.sinceClear) count -= counted(counters.snapshot(intfId), expected);
  return {expected.atLeast ? count >= expected.frames : count == expected.frames,
          fmt::format("{} counts {} {}", expected.port.text(), count, kindOf(expected))};
}

}  // namespace Lab
