#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Macsecd {

/// A request to `Control`, member by member. What isn't as it has to be is thrown as `Fault`; a
/// member that isn't there is none, false, or empty.
class ControlRequest {
 public:
  explicit ControlRequest(std::string_view text);

  std::string command() const { return text("command").value_or(""); }
  std::optional<std::string> text(char const* member) const;
  std::vector<std::string> texts(char const* member) const;
  bool flag(char const* member) const;
  /// From 0 to `most`.
  std::optional<unsigned> number(char const* member, unsigned most) const;

 private:
  nlohmann::ordered_json const* find(char const* member) const;

  nlohmann::ordered_json json_;
};

}  // namespace Macsecd
