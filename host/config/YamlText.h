#pragma once

#include <yaml-cpp/mark.h>

#include <string>

#include "host/text/KeyText.h"

namespace YAML {
class Node;
}  // namespace YAML

namespace Macsecd {

/// Deepest nesting of a text that is read; a configuration needs four levels.
inline constexpr int maxYamlDepth = 32;

/// What is wrong with a text, and where.
struct YamlFault {
  YAML::Mark at;
  Fault fault;
};

/// The one document of a text. Throws `YamlFault` if the text isn't YAML, has more than one
/// document or is nested too deeply. Its time and memory are bounded by the size of the text.
YAML::Node readYaml(std::string const& text);

}  // namespace Macsecd
