#include "host/ConfigFile.h"

#include <fmt/format.h>
#include <yaml-cpp/yaml.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <system_error>

#include "host/YamlReader.h"

namespace Macsecd {

namespace {

/// Longest group CAK lifetime in minutes whose seconds still fit 32 bits.
constexpr uint32_t maxLifetime = UINT32_MAX / 60;
/// Widest window of the extended packet numbering suites.
constexpr uint32_t maxReplayWindow = (1u << 30) - 1;

/// A key as it stands in the file, before the suite that it has to fit is known.
struct KeyPlace {
  YAML::Node cak;
  YAML::Mark ckn;
};

class ConfigReader {
 public:
  ConfigReader(std::string const& file, int linesBefore, ConfigResult& result)
      : yaml_(file, linesBefore, result.mistakes), config_(result.config) {}
  /// The parser owns the texts of keys as plain strings, which nobody reads again.
  ~ConfigReader() {
    for (auto const& node : keys_) wipe(const_cast<std::string&>(node.Scalar()));
  }

  void readRoot(YAML::Node const& root);

 private:
  void readProfile(std::string const& name, YAML::Node const& nameNode, YAML::Node const& node);
  void readInterface(std::string const& name, YAML::Node const& nameNode, YAML::Node const& node);
  void readKey(YAML::Node const& node, std::string const& word, std::optional<KeyConfig>& key,
               KeyPlace& place);
  void readSuite(YAML::Node const& node, ProfileConfig& profile);
  void readDialect(YAML::Node const& node, Codec::Dialect& dialect);
  void readDevice(YAML::Node const& node, std::string& device);
  void readGroupCak(YAML::Node const& node, GroupCakConfig& groupCak);
  void checkKeyFits(KeyPlace const& place, Suite suite);
  void checkNamesDiffer(ProfileConfig const& profile, KeyPlace const& fallback);
  void checkProfilesExist();

  /// Stores a scalar where it belongs, when it is one.
  template <class Value, class Target>
  static void store(std::optional<Value> value, Target& target) {
    if (value) target = static_cast<Target>(*value);
  }
  Entry flag(std::string const& word, bool& target) {
    return {word, false, [this, word, &target](YAML::Node const& value) {
              store(yaml_.boolean(value, word), target);
            }};
  }
  template <class Target>
  Entry number(std::string const& word, Target& target, uint32_t min, uint32_t max) {
    return {word, false, [this, word, &target, min, max](YAML::Node const& value) {
              store(yaml_.number(value, word, min, max), target);
            }};
  }

  template <class Choice>
  Entry choice(std::string const& word, Choice& target, std::map<std::string, Choice> choices) {
    return {word, false, [this, word, &target, choices](YAML::Node const& value) {
              auto const text = yaml_.text(value, word);
              if (!text) return;
              auto const chosen = choices.find(*text);
              if (chosen != choices.end()) {
                target = chosen->second;
                return;
              }
              std::vector<std::string> words;
              for (auto const& [name, meaning] : choices) words.push_back(name);
              yaml_.mistake(value.Mark(), fmt::format("{} has no {}", word, quotedWord(*text)),
                            fmt::format("write one of {}", fmt::join(words, ", ")));
            }};
  }

  YamlReader yaml_;
  SwitchConfig& config_;
  std::map<std::string, YAML::Mark> profilePlace_;
  std::vector<YAML::Node> keys_;  ///< wiped at the end: an alias may name one of them again
};

void ConfigReader::readRoot(YAML::Node const& root) {
  using Node = YAML::Node;
  yaml_.words(root, root.Mark(), "the configuration",
              {flag("shutdown", config_.shutdown),
               flag("fips", config_.fips),
               flag("delay-protection", config_.delayProtection),
               {"profiles", false,
                [this](Node const& node) {
                  yaml_.names(node, "profile",
                              [this](std::string const& name, Node const& at, Node const& value) {
                                readProfile(name, at, value);
                              });
                }},
               {"interfaces", false, [this](Node const& node) {
                  yaml_.names(node, "interface",
                              [this](std::string const& name, Node const& at, Node const& value) {
                                readInterface(name, at, value);
                              });
                }}});
  checkProfilesExist();
}

void ConfigReader::readProfile(std::string const& name, YAML::Node const& nameNode,
                               YAML::Node const& node) {
  ProfileConfig profile;
  KeyPlace key, fallback;
  profile.name = name;
  yaml_.words(
      node, nameNode.Mark(), fmt::format("profile {}", quotedWord(name)),
      {{"key", false, [&](auto& value) { readKey(value, "key", profile.key, key); }},
       {"fallback-key", false,
        [&](auto& value) { readKey(value, "fallback-key", profile.fallbackKey, fallback); }},
       number("key-server-priority", profile.keyServerPriority, 0, 255),
       number("rekey-period", profile.rekeyPeriod, 0, UINT32_MAX),
       {"cipher-suite", false, [&](auto& value) { readSuite(value, profile); }},
       flag("include-sci", profile.includeSci),
       flag("dot1x", profile.dot1x),
       {"group-cak", false, [&](auto& value) { readGroupCak(value, profile.groupCak); }}});
  checkKeyFits(key, profile.cipherSuite);
  checkKeyFits(fallback, profile.cipherSuite);
  checkNamesDiffer(profile, fallback);
  config_.profiles.push_back(std::move(profile));
}

void ConfigReader::readInterface(std::string const& name, YAML::Node const& nameNode,
                                 YAML::Node const& node) {
  InterfaceConfig intf;
  intf.name = name;
  yaml_.words(node, nameNode.Mark(), fmt::format("interface {}", quotedWord(name)),
              {{"profile", true,
                [&](YAML::Node const& value) {
                  store(yaml_.text(value, "profile"), intf.profile);
                  profilePlace_[name] = value.Mark();
                }},
               number("port-number", intf.portNumber, 1, UINT16_MAX),
               {"dialect", false, [&](auto& value) { readDialect(value, intf.dialect); }},
               {"device", false, [&](auto& value) { readDevice(value, intf.device); }},
               number("replay-window", intf.replayWindow, 0, maxReplayWindow),
               choice<SecurePolicy>("policy", intf.policy,
                                    {{"must-secure", SecurePolicy::mustSecure},
                                     {"should-secure", SecurePolicy::shouldSecure}}),
               choice<OnPeerLoss>("on-peer-loss", intf.onPeerLoss,
                                  {{"keep", OnPeerLoss::keep}, {"close", OnPeerLoss::close}})});
  config_.interfaces.push_back(std::move(intf));
}

void ConfigReader::readDialect(YAML::Node const& node, Codec::Dialect& dialect) {
  using Codec::IcvIndicator;
  using Codec::NameOnWire;
  yaml_.words(
      node, node.Mark(), "a dialect",
      {choice<NameOnWire>("name-on-wire", dialect.nameOnWire,
                          {{"octets", NameOnWire::octets}, {"characters", NameOnWire::characters}}),
       choice<IcvIndicator>("icv-indicator", dialect.icvIndicator,
                            {{"length-4", IcvIndicator::length4},
                             {"length-16", IcvIndicator::length16},
                             {"left-out", IcvIndicator::leftOut}})});
}

// The kernel's own rule for names of devices.
void ConfigReader::readDevice(YAML::Node const& node, std::string& device) {
  constexpr size_t kLongest = 15;
  auto const text = yaml_.text(node, "device");
  if (!text) return;
  bool const isName = !text->empty() && text->size() <= kLongest && *text != "." && *text != ".." &&
                      text->find_first_of("/: \t\n") == std::string::npos;
  if (!isName) {
    yaml_.mistake(node.Mark(), fmt::format("{} is no name of a device", quotedWord(*text)),
                  "write 1 to 15 octets without a slash, a colon or white space");
  }
  for (InterfaceConfig const& other : config_.interfaces) {
    if (other.device != *text) continue;
    yaml_.mistake(node.Mark(),
                  fmt::format("the device {} is already that of interface {}", quotedWord(*text),
                              quotedWord(other.name)),
                  "give each interface a device of its own");
  }
  device = *text;
}

void ConfigReader::readKey(YAML::Node const& node, std::string const& word,
                           std::optional<KeyConfig>& key, KeyPlace& place) {
  key.emplace();
  auto readName = [&](YAML::Node const& value) {
    store(yaml_.text(value, "ckn"), key->ckn);
    place.ckn = value.Mark();
    if (key->ckn.empty()) return;
    if (auto fault = faultOfKeyName(key->ckn)) yaml_.mistake(value, *fault);
  };
  auto readText = [&](YAML::Node const& value) {
    auto text = yaml_.text(value, "cak");
    if (!text) return;
    key->cak = Vesk::String8::secret(*text);
    place.cak.reset(value);
    keys_.push_back(value);
    wipe(*text);
  };
  yaml_.words(node, node.Mark(), fmt::format("'{}'", word),
              {{"ckn", true, readName}, {"cak", true, readText}});
}

void ConfigReader::readSuite(YAML::Node const& node, ProfileConfig& profile) {
  auto word = yaml_.text(node, "cipher-suite");
  if (!word) return;
  if (auto suite = suiteOf(*word)) {
    profile.cipherSuite = *suite;
  } else {
    yaml_.mistake(node.Mark(), fmt::format("unknown cipher-suite {}", quotedWord(*word)),
                  remedyForUnknown(*word, suiteWords()));
  }
}

void ConfigReader::readGroupCak(YAML::Node const& node, GroupCakConfig& groupCak) {
  yaml_.words(
      node, node.Mark(), "'group-cak'",
      {flag("enabled", groupCak.enabled), number("lifetime", groupCak.lifetime, 1, maxLifetime)});
}

void ConfigReader::checkKeyFits(KeyPlace const& place, Suite suite) {
  if (!place.cak.IsScalar()) return;
  auto fault = faultOfKey(place.cak.Scalar(), static_cast<unsigned>(suite));
  if (fault) yaml_.mistake(place.cak, *fault);
}

void ConfigReader::checkNamesDiffer(ProfileConfig const& profile, KeyPlace const& fallback) {
  if (!profile.key || !profile.fallbackKey || profile.key->ckn.empty()) return;
  if (keyNameOctets(profile.key->ckn) != keyNameOctets(profile.fallbackKey->ckn)) return;
  yaml_.mistake(fallback.ckn, "the fallback key has the name of the primary key",
                "keys of one interface need different names");
}

void ConfigReader::checkProfilesExist() {
  std::vector<std::string> known;
  for (auto const& profile : config_.profiles) known.push_back(profile.name);
  for (auto const& intf : config_.interfaces) {
    if (intf.profile.empty() || config_.profile(intf.profile)) continue;
    yaml_.mistake(
        profilePlace_[intf.name], fmt::format("there is no profile {}", quotedWord(intf.profile)),
        known.empty() ? "add it under 'profiles'" : remedyForUnknown(intf.profile, known));
  }
}

/// The parser's own words, without what it may quote from the file.
std::string describe(YAML::Exception const& error) {
  return error.msg.substr(0, error.msg.find(':'));
}

void readDocuments(std::string const& text, std::string const& file, int linesBefore,
                   ConfigResult& result) {
  auto documents = YAML::LoadAll(text);
  if (documents.empty()) return;
  ConfigReader(file, linesBefore, result).readRoot(documents[0]);
  if (documents.size() > 1) {
    YamlReader(file, linesBefore, result.mistakes)
        .mistake(documents[1].Mark(), "a second document begins here",
                 "a configuration is one document: remove the line '---' before it");
  }
}

}  // namespace

ConfigResult parseConfig(std::string_view text, std::string const& file, int linesBefore) {
  ConfigResult result;
  std::string copy(text);
  try {
    readDocuments(copy, file, linesBefore, result);
  } catch (YAML::Exception const& error) {
    YamlReader(file, linesBefore, result.mistakes)
        .mistake(error.mark, "this isn't YAML: " + describe(error),
                 "check indentation, colons and quotes here and just before");
  }
  wipe(copy);
  sortByPlace(result.mistakes);
  return result;
}

ConfigResult readConfigFile(std::string const& path) {
  auto unreadable = [&](int error) {
    auto reason = std::generic_category().message(error);
    return ConfigResult{
        {},
        {{path, 1, 1, "the file can't be read: " + reason, "check its name and its permissions"}}};
  };
  if (std::filesystem::is_directory(path)) return unreadable(EISDIR);
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  if (!in) return unreadable(errno);
  auto size = in.tellg();
  std::string text(static_cast<size_t>(size), '\0');
  in.seekg(0);
  if (!in.read(text.data(), size)) return unreadable(EIO);
  auto result = parseConfig(text, path);
  wipe(text);
  return result;
}

}  // namespace Macsecd
