#include "lab/exhaust/FaultyRun.h"

#include <functional>
#include <sstream>

#include "lab/report/Events.h"
#include "lab/scenario/ScenarioParser.h"
#include "runtime/Assert.h"

namespace Lab {

namespace {

// What happens, but for frames and what is logged of them: one that is lost or comes twice is no
// news by itself.
class Marks final : public Audience {
 public:
  Marks() : events_(text_) {}

  void happened(Event const& event) override {
    bool const isNoNews = std::holds_alternative<FramePassed>(event.what) ||
                          std::holds_alternative<SyslogLine>(event.what);
    if (!isNoNews) events_.happened(event);
  }
  size_t of(Simulation const& simulation) const {
    std::string all = text_.str();
    for (auto const& one : simulation.switches()) {
      for (auto const& [path, value] : one->store().values()) {
        all.append(path).append("=").append(value).append("\n");
      }
    }
    return std::hash<std::string>()(all);
  }

 private:
  std::ostringstream text_;
  Events events_;
};

}  // namespace

FaultyRun playFaulty(std::string const& text, std::string const& file) {
  auto const read = parseScenario(text, file);
  VESK_ASSERT(read.good());
  Simulation simulation(read.scenario, read.scenario.seedOrDefault());
  Judges judges(simulation);
  Marks marks;
  simulation.audienceIs(marks);
  simulation.run();
  return {judges.verdict(), marks.of(simulation)};
}

}  // namespace Lab
