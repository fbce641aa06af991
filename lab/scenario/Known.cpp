#include "lab/scenario/Known.h"

namespace Lab {

namespace {

constexpr size_t kDerivedNameDigits = 32;

}  // namespace

std::vector<std::string> Known::switchNames() const {
  std::vector<std::string> names;
  for (auto const& [name, spec] : switches) names.push_back(name);
  return names;
}

std::vector<std::string> Known::interfacesOf(std::string const& switchName) const {
  std::vector<std::string> names;
  for (auto const& port : ports) {
    if (port.switchName == switchName) names.push_back(port.interface);
  }
  return names;
}

std::vector<std::string> Known::profilesOf(std::string const& switchName) const {
  auto const& names = profiles_.at(switchName);
  return {names.begin(), names.end()};
}

std::vector<std::string> Known::markNames() const {
  std::vector<std::string> names;
  for (auto const& [name, time] : marks) names.push_back(name);
  return names;
}

void Known::add(SwitchSpec const& spec, bool sure) {
  switches[spec.name] = &spec;
  if (!sure) unsure.insert(spec.name);
  add(spec.name, spec.config);
}

void Known::add(std::string const& switchName, Macsecd::SwitchConfig const& config) {
  for (auto const& intf : config.interfaces) ports.insert({switchName, intf.name});
  auto& names = profiles_[switchName];
  for (auto const& profile : config.profiles) {
    names.insert(profile.name);
    if (profile.key) keyNames.insert(std::string(profile.key->ckn.view()));
    if (profile.fallbackKey) keyNames.insert(std::string(profile.fallbackKey->ckn.view()));
  }
}

// A derived name has 128 bits in hexadecimal.
bool Known::hasKeyName(std::string const& name) const {
  if (keyNames.count(name) || !unsure.empty()) return true;
  return derivesKeys && name.size() == kDerivedNameDigits &&
         name.find_first_not_of("0123456789abcdef") == std::string::npos;
}

}  // namespace Lab
