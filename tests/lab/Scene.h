#pragma once

#include <string>
#include <vector>

#include "lab/ScenarioParser.h"

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
  for (auto const& mistake : parseScenario(text, "f").mistakes) lines.push_back(mistake.text());
  return lines;
}

inline std::vector<std::string> complaintsIn(std::string const& line) {
  return complaints(scene(line));
}

}  // namespace Lab
