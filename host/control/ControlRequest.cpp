#include "host/control/ControlRequest.h"

#include <fmt/format.h>

#include "host/text/ControlProtocol.h"
#include "host/text/JsonText.h"
#include "host/text/KeyText.h"

namespace Macsecd {

ControlRequest::ControlRequest(std::string_view text) : json_(Json::parse(text, nullptr, false)) {
  if (!json_.is_object()) throw Fault{"the request isn't a JSON object", "send one on one line"};
  Json const* const version = find("version");
  if (version && *version == kControlVersion) return;
  throw Fault{"the request is of another version",
              fmt::format("say \"version\": {}", kControlVersion)};
}

Json const* ControlRequest::find(char const* member) const {
  auto const found = json_.find(member);
  return found == json_.end() ? nullptr : &*found;
}

std::optional<std::string> ControlRequest::text(char const* member) const {
  Json const* const found = find(member);
  if (!found) return std::nullopt;
  if (found->is_string()) return found->get<std::string>();
  throw Fault{fmt::format("'{}' isn't a string", member), "put it into double quotes"};
}

std::vector<std::string> ControlRequest::texts(char const* member) const {
  std::vector<std::string> texts;
  Json const* const found = find(member);
  bool isGood = !found || found->is_array();
  for (size_t i = 0; found && isGood && i < found->size(); ++i) {
    isGood = (*found)[i].is_string();
    if (isGood) texts.push_back((*found)[i].get<std::string>());
  }
  if (isGood) return texts;
  throw Fault{fmt::format("'{}' isn't a list of strings", member), "write [\"one\", \"another\"]"};
}

bool ControlRequest::flag(char const* member) const {
  Json const* const found = find(member);
  if (!found) return false;
  if (found->is_boolean()) return found->get<bool>();
  throw Fault{fmt::format("'{}' is neither true nor false", member), "write one of them"};
}

std::optional<unsigned> ControlRequest::number(char const* member, unsigned most) const {
  Json const* const found = find(member);
  if (!found) return std::nullopt;
  if (found->is_number_unsigned() && *found <= most) return found->get<unsigned>();
  throw Fault{fmt::format("'{}' is out of range", member),
              fmt::format("write one from 0 to {}", most)};
}

}  // namespace Macsecd
