#include "lab/scenario/ActionParts.h"

// What the configuration says.

namespace Lab {

namespace {

using Macsecd::Fault;

void check(std::optional<Fault> const& fault, int column) {
  if (fault) Words::failAt(column, fault->what, fault->remedy);
}

KeyChange parseNewKey(bool fallback, Words& words, Known& known) {
  KeyChange change{words.profileOn(known), fallback, {}};
  words.need("to");
  int column = words.column();
  Macsecd::KeyConfig key;
  std::string const name = words.any("the name of the key");
  check(Macsecd::faultOfKeyName(name), column);
  key.ckn = name;
  column = words.column();
  auto text = words.any("the key");
  key.cak = Vesk::String8::secret(text);
  auto fault = Macsecd::faultOfKey(text);
  Macsecd::wipe(text);
  check(fault, column);
  known.keyNames.insert(name);
  change.key = std::move(key);
  return change;
}

SuiteChange parseSuite(Words& words, Known const& known) {
  auto profile = words.profileOn(known);
  words.need("to");
  for (auto const& word : Macsecd::suiteWords()) {
    if (words.take(word)) return {profile, *Macsecd::suiteOf(word)};
  }
  words.unknown("cipher suite", Macsecd::suiteWords());
}

// "... of profile P on A to", and its value.
template <class Change, class Read>
Change parseOfProfile(Words& words, Known const& known, Read read) {
  auto profile = words.profileOn(known);
  words.need("to");
  return {profile, read()};
}

// "... of A to on".
template <class Change>
Change parseSwitched(Words& words, Known const& known) {
  words.need("of");
  auto name = words.switchName(known);
  words.need("to");
  return {name, words.onOrOff()};
}

// "profile of Ethernet1 on A to P"
ProfileChange parseProfileChange(Words& words, Known const& known) {
  words.need("of");
  auto port = words.interfaceOn(known);
  words.need("to");
  return {port, words.profile(port.switchName, known)};
}

}  // namespace

decltype(Action::what) parseSet(Words& words, Known& known) {
  if (words.take("key")) return parseNewKey(false, words, known);
  if (words.take("fallback key")) return parseNewKey(true, words, known);
  if (words.take("cipher suite")) return parseSuite(words, known);
  if (words.take("priority")) {
    return parseOfProfile<PriorityChange>(
        words, known, [&] { return static_cast<uint8_t>(words.number("a priority", 0, 255)); });
  }
  if (words.take("rekey period")) {
    return parseOfProfile<RekeyPeriodChange>(
        words, known, [&] { return words.number("a number of seconds", 0, UINT32_MAX); });
  }
  if (words.take("profile")) return parseProfileChange(words, known);
  if (words.take("delay protection")) return parseSwitched<DelayProtectionChange>(words, known);
  if (words.take("FIPS")) return parseSwitched<FipsChange>(words, known);
  words.unknown("setting", {"key", "fallback key", "priority", "rekey period", "cipher suite",
                            "profile", "delay protection", "FIPS"});
}

KeyChange parseRemove(Words& words, Known const& known) {
  bool fallback = words.take("fallback");
  words.need("key");
  return {words.profileOn(known), fallback, std::nullopt};
}

}  // namespace Lab
