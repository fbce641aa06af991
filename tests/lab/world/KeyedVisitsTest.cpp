#include <gtest/gtest.h>

#include <map>

#include "lab/scenario/ScenarioParser.h"
#include "lab/world/Simulation.h"

namespace Lab {
namespace {

using Records = std::map<std::string, std::vector<std::string>>;

// Everything that the switches of a scenario trace and write, in order, for each switch; and what
// concerns one port, for each port.
struct Record {
  Records traces;
  Records writes;
};

std::string textOf(Vesk::AttributeWrite const& write) {
  return write.entity.fullName() + "." + write.attribute + "[" + write.key + "] = " + write.value;
}

// How the runtime goes about its work, which nobody is to see.
struct Way {
  bool visitsAreFiltered = true;
  bool objectsHaveHomes = true;
};

Record recordOf(Scenario const& scenario, Way way) {
  Record record;
  {
    Simulation simulation(scenario, 3);
    for (auto const& one : simulation.switches()) {
      one->world().visitsAreFilteredIs(way.visitsAreFiltered);
      one->world().objectsHaveHomesIs(way.objectsHaveHomes);
      Vesk::WorldScope const scope(one->world());
      Vesk::TraceHandle::streamLevelsIs("", Vesk::kAllTraceLevels);
      auto& sinks = one->world().sinks;
      sinks.trace = [&, name = one->name()](Vesk::TraceRecord const& trace) {
        record.traces[name].push_back(std::string(trace.handle) + " " +
                                      std::to_string(trace.level) + " " + trace.text);
      };
      sinks.attribute = [&, name = one->name()](Vesk::AttributeWrite const& write) {
        record.writes[name].push_back(textOf(write));
      };
    }
    simulation.run();
  }
  return record;
}

// The lines that name an interface, for each switch and interface.
Records byPort(Records const& records) {
  Records ports;
  for (auto const& [name, lines] : records) {
    for (std::string const& line : lines) {
      for (std::string const interface : {"Ethernet1", "Ethernet2"}) {
        if (line.find(interface) != std::string::npos) ports[name + interface].push_back(line);
      }
    }
  }
  return ports;
}

void expectEqual(Records const& filtered, Records const& all) {
  ASSERT_EQ(filtered.size(), all.size());
  for (auto const& [place, lines] : filtered) {
    auto const& others = all.at(place);
    size_t const common = std::min(lines.size(), others.size());
    for (size_t i = 0; i < common; ++i) {
      ASSERT_EQ(lines[i], others[i]) << place << ", line " << i;
    }
    EXPECT_EQ(lines.size(), others.size()) << place;
  }
}

class KeyedVisits : public testing::TestWithParam<char const*> {};

TEST_P(KeyedVisits, LeaveTheSameTracesAndWritesAsVisitsToEverybody) {
  auto const result = readScenario(std::string(EXAMPLES "/") + GetParam() + ".scenario");
  ASSERT_TRUE(result.good());
  Record const filtered = recordOf(result.scenario, {});
  Record const all = recordOf(result.scenario, {.visitsAreFiltered = false});
  ASSERT_EQ(filtered.traces.size(), result.scenario.switches.size());
  for (auto const& [name, lines] : filtered.traces) EXPECT_GT(lines.size(), 400u) << name;
  for (auto const& [name, lines] : filtered.writes) EXPECT_GT(lines.size(), 300u) << name;
  expectEqual(byPort(filtered.traces), byPort(all.traces));
  expectEqual(byPort(filtered.writes), byPort(all.writes));
  expectEqual(filtered.traces, all.traces);
  expectEqual(filtered.writes, all.writes);
}

TEST_P(KeyedVisits, LeaveTheSameTracesAndWritesWhereverTheObjectsLive) {
  auto const result = readScenario(std::string(EXAMPLES "/") + GetParam() + ".scenario");
  ASSERT_TRUE(result.good());
  Record const atHome = recordOf(result.scenario, {});
  Record const onTheHeap = recordOf(result.scenario, {.objectsHaveHomes = false});
  expectEqual(atHome.traces, onTheHeap.traces);
  expectEqual(atHome.writes, onTheHeap.writes);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, KeyedVisits,
                         testing::Values("three-switches", "two-switches", "restart", "shutdown"),
                         [](auto const& test) {
                           std::string name = test.param;
                           name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
                           return name;
                         });

}  // namespace
}  // namespace Lab
