#include "lab/judge/invariants/NoSecretTold.h"

#include <algorithm>

#include "host/explain/Explain.h"
#include "lab/judge/invariants/Link.h"
#include "platform/WardcodeLib.h"

namespace Lab {

namespace {

std::string inLowerCase(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

}  // namespace

NoSecretTold::NoSecretTold(Simulation const& simulation)
    : Invariant(simulation, "no-secret-told",
                "No CAK and no SAK stands in a log line, an explanation, or what is kept.") {
  for (SwitchSpec const& spec : simulation.scenario().switches) secretsOf(spec.config);
}

void NoSecretTold::secretIs(Vesk::String8 const& text) {
  if (!text.view().empty()) secrets_.insert(inLowerCase(std::string(text.view())));
}

void NoSecretTold::secretsOf(Macsecd::SwitchConfig const& config) {
  for (auto const& profile : config.profiles) {
    if (profile.key) secretIs(profile.key->cak);
    if (profile.fallbackKey) secretIs(profile.fallbackKey->cak);
  }
}

void NoSecretTold::acts(double, Action const& action) {
  if (auto const* change = std::get_if<KeyChange>(&action.what)) {
    if (change->key) secretIs(change->key->cak);
  }
  if (auto const* reload = std::get_if<Reload>(&action.what)) secretsOf(reload->read.config);
}

void NoSecretTold::happened(Event const& event) {
  auto const* const line = std::get_if<SyslogLine>(&event.what);
  if (line) look(line->text, "a log line of " + event.switchName);
}

// SAKs that are in use, once a second.
void NoSecretTold::instantDone(double time) {
  if (!isDue(time, kBetweenLooks)) return;
  for (size_t wire = 0; wire < simulation().scenario().wires.size(); ++wire) {
    for (LinkEnd const& end : endsOf(simulation(), wire)) {
      Vesk::WorldScope const scope(end.owner.world());
      if (auto const cp = end.cpStatus()) secretIs(WardcodeLib::doDecodeKey(cp->txSak().key()));
      for (auto const& cause : explain(end.owner.host(), end.intfId).causes) {
        look(cause.what + cause.remedy, "an explanation of " + end.name.text());
      }
    }
  }
}

void NoSecretTold::ended() {
  for (auto const& one : simulation().switches()) {
    for (auto const& [path, value] : one->store().values())
      look(value, path + " of " + one->name());
  }
}

void NoSecretTold::look(std::string const& text, std::string const& where) {
  std::string const lower = inLowerCase(text);
  for (std::string const& secret : secrets_) {
    if (lower.find(secret) != std::string::npos) breaks("a key stands in " + where);
  }
}

}  // namespace Lab
