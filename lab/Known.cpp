#include "lab/Known.h"

namespace Lab {

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
  std::vector<std::string> names;
  for (auto const& profile : switches.at(switchName)->config.profiles)
    names.push_back(profile.name);
  return names;
}

std::vector<std::string> Known::markNames() const {
  std::vector<std::string> names;
  for (auto const& [name, time] : marks) names.push_back(name);
  return names;
}

void Known::add(SwitchSpec const& spec, bool sure) {
  switches[spec.name] = &spec;
  if (!sure) unsure.insert(spec.name);
  for (auto const& intf : spec.config.interfaces) ports.insert({spec.name, intf.name});
  for (auto const& profile : spec.config.profiles) {
    if (profile.key) keyNames.insert(profile.key->ckn);
    if (profile.fallbackKey) keyNames.insert(profile.fallbackKey->ckn);
  }
}

}  // namespace Lab
