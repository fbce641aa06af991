#include "lab/report/Events.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "host/text/TimeText.h"
#include "tests/lab/Played.h"

namespace Lab {
namespace {

using Json = nlohmann::ordered_json;

TEST(EventsOfARun, HaveMembersInKebabCaseAndBothTimes) {
  auto const result = readScenario(EXAMPLES "/two-switches.scenario");
  ASSERT_TRUE(result.good());
  Simulation simulation(result.scenario, 1);
  std::stringstream lines;
  Events events(lines);
  simulation.audienceIs(events);
  simulation.run();
  std::regex const kebab("[a-z0-9]+(-[a-z0-9]+)*");
  std::set<std::string> kinds;
  for (std::string line; std::getline(lines, line);) {
    Json const json = Json::parse(line);
    kinds.insert(json.at("event"));
    for (auto const& member : json.items()) {
      ASSERT_TRUE(std::regex_match(member.key(), kebab)) << line;
    }
    auto const time = Macsecd::timeOf(json.at("time").get<std::string>());
    ASSERT_TRUE(time) << line;
    ASSERT_NEAR(*time, json.at("monotonic").get<double>(), 1e-6);
  }
  EXPECT_GE(kinds.size(), 9u);
}

}  // namespace
}  // namespace Lab
