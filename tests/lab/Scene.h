#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "lab/scenario/ScenarioParser.h"

namespace Lab {

inline std::string const key128 = "00112233445566778899aabbccddeeff";

/// Two switches and a wire in lines 1 to 18; what is tested stands in line 19.
inline std::string scene(std::string const& lines) {
  auto sw = [](std::string const& name, std::string const& mac) {
    return "switch " + name + "\n  mac 02:00:00:00:00:" + mac +
           "\n  config:\n    profiles:\n      core: {key: {ckn: ab, cak: " + key128 +
           "}}\n    interfaces:\n      Ethernet1: {profile: core}\n\n";
  };
  return sw("A", "01") + sw("B", "02") + "wire A Ethernet1 to B Ethernet1\nrun until 100\n" +
         lines + "\n";
}

inline std::vector<std::string> complaints(std::string const& text) {
  std::vector<std::string> lines;
  for (auto const& diagnostic : parseScenario(text, "f").diagnostics)
    lines.push_back(diagnostic.text());
  return lines;
}

inline std::vector<std::string> complaintsIn(std::string const& line) {
  return complaints(scene(line));
}

/// What a line says that stands in the scene "at 5".
template <class What>
What action(std::string const& line) {
  auto result = parseScenario(scene("at 5 " + line), "f");
  EXPECT_TRUE(result.good()) << textOf(result.diagnostics);
  if (result.scenario.actions.size() != 1) throw std::runtime_error("no action");
  auto const& action = result.scenario.actions[0];
  EXPECT_EQ(action.at, 5);
  EXPECT_EQ(action.line, 19);
  return std::get<What>(action.what);
}

/// What it expects, below a mark "m".
template <class What>
What expectation(std::string const& line) {
  auto result = parseScenario(scene("at 1 mark m\nat 5 expect " + line), "f");
  EXPECT_TRUE(result.good()) << textOf(result.diagnostics);
  if (result.scenario.expectations.size() != 1) throw std::runtime_error("no expectation");
  EXPECT_EQ(result.scenario.expectations[0].line, 20);
  EXPECT_EQ(result.scenario.expectations[0].text, "at 5 expect " + line);
  return std::get<What>(result.scenario.expectations[0].what);
}

}  // namespace Lab
