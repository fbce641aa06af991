#include "host/config/ConfigFile.h"

#include <fmt/format.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <variant>

#include "host/config/ConfigKeys.h"
#include "host/config/DeviceName.h"
#include "host/config/InputFile.h"
#include "host/config/KeyMask.h"
#include "host/config/YamlReader.h"
#include "host/config/YamlText.h"
#include "platform/Fips.h"
#include "platform/WardcodeLib.h"

namespace Macsecd {

namespace {

/// Longest group CAK lifetime in minutes whose seconds still fit 32 bits.
constexpr uint32_t maxLifetime = UINT32_MAX / 60;
/// Widest window of the extended packet numbering suites.
constexpr uint32_t maxReplayWindow = (1u << 30) - 1;

/// MTUs of a MACsec device: IPv4 needs the lowest, and 32 octets more than the greatest are the
/// most that an interface can have.
constexpr uint32_t minMtu = 68, maxMtu = UINT16_MAX - 32;

bool isControl(char c) { return std::iscntrl(static_cast<unsigned char>(c)) != 0; }

/// What is wrong with a word for a suite.
Fault faultOfSuite(std::string_view word) {
  for (std::string_view const bits : {"128", "256"}) {
    if (word != fmt::format("gcm-aes-{}", bits)) continue;
    return {fmt::format("gcm-aes-{} counts its packets with 32 bits, and isn't offered", bits),
            fmt::format("write 'gcm-aes-xpn-{}', which counts with 64 bits, at both ends", bits)};
  }
  return {fmt::format("unknown cipher-suite {}", quotedWord(word)),
          remedyForUnknown(word, suiteWords())};
}

class ConfigReader {
 public:
  ConfigReader(YamlReader& yaml, SwitchConfig& config) : yaml_(yaml), config_(config) {}

  void readRoot(YAML::Node const& root);
  void checkMachine();

 private:
  void readProfile(std::string const& name, YAML::Node const& nameNode, YAML::Node const& node);
  void readInterface(std::string const& name, YAML::Node const& nameNode, YAML::Node const& node);
  void readSuite(YAML::Node const& node, ProfileConfig& profile);
  void readDialect(YAML::Node const& node, Codec::Dialect& dialect);
  void readDevice(YAML::Node const& node, std::string& device);
  void readGroupCak(YAML::Node const& node, GroupCakConfig& groupCak);
  void checkProfilesExist();
  void checkDevicesDiffer();

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
  Entry choice(std::string const& word, Choice& target,
               std::map<std::string, Choice, std::less<>> choices) {
    return {word, false, [this, word, &target, choices](YAML::Node const& value) {
              auto const text = yaml_.text(value, word);
              if (!text) return;
              auto const chosen = choices.find(text->view());
              if (chosen != choices.end()) {
                target = chosen->second;
                return;
              }
              std::vector<std::string> words;
              for (auto const& [name, meaning] : choices) words.push_back(name);
              yaml_.diagnose(value.Mark(),
                             fmt::format("{} has no {}", word, quotedWord(text->view())),
                             fmt::format("write one of {}", fmt::join(words, ", ")));
            }};
  }

  YamlReader& yaml_;
  SwitchConfig& config_;
  std::map<std::string, YAML::Mark> profilePlace_;
  std::map<std::string, YAML::Mark> devicePlace_;
  YAML::Mark fipsAt_;
};

void ConfigReader::readRoot(YAML::Node const& root) {
  using Node = YAML::Node;
  yaml_.words(root, root.Mark(), "the configuration",
              {flag("shutdown", config_.shutdown),
               {"fips", false,
                [this](Node const& node) {
                  store(yaml_.boolean(node, "fips"), config_.fips);
                  fipsAt_ = node.Mark();
                }},
               flag("delay-protection", config_.delayProtection),
               {"profiles", false,
                [this](Node const& node) {
                  yaml_.names(node, "profile",
                              [this](auto const& name, Node const& at, Node const& value) {
                                readProfile(std::string(name.view()), at, value);
                              });
                }},
               {"interfaces", false, [this](Node const& node) {
                  yaml_.names(node, "interface",
                              [this](auto const& name, Node const& at, Node const& value) {
                                readInterface(std::string(name.view()), at, value);
                              });
                }}});
  checkProfilesExist();
  checkDevicesDiffer();
}

// What the machine has to have for this configuration.
void ConfigReader::checkMachine() {
  if (!config_.fips || config_.shutdown) return;
  if (auto const missing = Macsec::missingForFips()) {
    yaml_.diagnose(fipsAt_, fmt::format("OpenSSL can't run in FIPS mode here: {}", *missing),
                   "install a validated FIPS module and run 'openssl fipsinstall', or take 'fips' "
                   "out");
  }
}

void ConfigReader::readProfile(std::string const& name, YAML::Node const& nameNode,
                               YAML::Node const& node) {
  ProfileConfig profile;
  KeyPlace key, fallback;
  profile.name = name;
  yaml_.words(
      node, nameNode.Mark(), fmt::format("profile {}", quotedWord(name)),
      {{"key", false, [&](auto& value) { readKey(yaml_, value, "key", profile.key, key); }},
       {"fallback-key", false,
        [&](auto& value) { readKey(yaml_, value, "fallback-key", profile.fallbackKey, fallback); }},
       number("key-server-priority", profile.keyServerPriority, 0, 255),
       number("rekey-period", profile.rekeyPeriod, 0, UINT32_MAX),
       {"cipher-suite", false, [&](auto& value) { readSuite(value, profile); }},
       flag("include-sci", profile.includeSci),
       flag("dot1x", profile.dot1x),
       {"group-cak", false, [&](auto& value) { readGroupCak(value, profile.groupCak); }}});
  checkKeyFits(yaml_, profile.key, key, profile.cipherSuite);
  checkKeyFits(yaml_, profile.fallbackKey, fallback, profile.cipherSuite);
  checkKeysDiffer(yaml_, profile, fallback);
  config_.profiles.push_back(std::move(profile));
}

void ConfigReader::readInterface(std::string const& name, YAML::Node const& nameNode,
                                 YAML::Node const& node) {
  InterfaceConfig intf;
  intf.name = name;
  if (name.size() > maxDeviceName) {
    yaml_.diagnose(
        nameNode.Mark(),
        fmt::format("{} has {} octets, more than any network interface", quotedWord(name),
                    name.size()),
        fmt::format("write its name as the machine shows it, at most {} octets", maxDeviceName));
  }
  yaml_.words(node, nameNode.Mark(), fmt::format("interface {}", quotedWord(name)),
              {{"profile", true,
                [&](YAML::Node const& value) {
                  if (auto const text = yaml_.text(value, "profile")) intf.profile = text->view();
                  profilePlace_[name] = value.Mark();
                }},
               number("port-number", intf.portNumber, 1, UINT16_MAX),
               {"dialect", false, [&](auto& value) { readDialect(value, intf.dialect); }},
               {"device", false,
                [&](auto& value) {
                  readDevice(value, intf.device);
                  devicePlace_[name] = value.Mark();
                }},
               number("replay-window", intf.replayWindow, 0, maxReplayWindow),
               number("mtu", intf.mtu, minMtu, maxMtu),
               choice<SecurePolicy>("policy", intf.policy,
                                    {{"must-secure", SecurePolicy::mustSecure},
                                     {"should-secure", SecurePolicy::shouldSecure}}),
               {"clear", false, [&](auto& value) { readClearTypes(yaml_, value, intf.clear); }},
               choice<OnPeerLoss>("on-peer-loss", intf.onPeerLoss,
                                  {{"keep", OnPeerLoss::keep}, {"close", OnPeerLoss::close}})});
  config_.interfaces.push_back(std::move(intf));
}

void ConfigReader::readDialect(YAML::Node const& node, Codec::Dialect& dialect) {
  using Codec::IcvIndicator;
  using Codec::NameOnWire;
  yaml_.words(
      node, yaml_.placeOf(node), "a dialect",
      {choice<NameOnWire>("name-on-wire", dialect.nameOnWire,
                          {{"octets", NameOnWire::octets}, {"characters", NameOnWire::characters}}),
       choice<IcvIndicator>("icv-indicator", dialect.icvIndicator,
                            {{"length-4", IcvIndicator::length4},
                             {"length-16", IcvIndicator::length16},
                             {"left-out", IcvIndicator::leftOut}})});
}

// The kernel's own rule for names of devices.
void ConfigReader::readDevice(YAML::Node const& node, std::string& device) {
  auto const read = yaml_.text(node, "device");
  if (!read) return;
  std::string_view const text = read->view();
  bool const isName = !text.empty() && text.size() <= maxDeviceName && text != "." &&
                      text != ".." && text.find_first_of("/:% ") == std::string::npos &&
                      std::ranges::none_of(text, [](char c) { return isControl(c); });
  if (!isName) {
    yaml_.diagnose(
        node.Mark(), fmt::format("{} is no name of a device", quotedWord(text)),
        "write 1 to 15 octets without slash, colon, percent sign, white space or control "
        "characters");
  }
  device = text;
}

void ConfigReader::readSuite(YAML::Node const& node, ProfileConfig& profile) {
  auto word = yaml_.text(node, "cipher-suite");
  if (!word) return;
  if (auto suite = suiteOf(word->view())) {
    profile.cipherSuite = *suite;
  } else {
    yaml_.diagnose(node.Mark(), faultOfSuite(word->view()));
  }
}

void ConfigReader::readGroupCak(YAML::Node const& node, GroupCakConfig& groupCak) {
  yaml_.words(
      node, yaml_.placeOf(node), "'group-cak'",
      {flag("enabled", groupCak.enabled), number("lifetime", groupCak.lifetime, 1, maxLifetime)});
}

void ConfigReader::checkProfilesExist() {
  std::vector<std::string> known;
  for (auto const& profile : config_.profiles) known.push_back(profile.name);
  std::set<std::string_view> const names(known.begin(), known.end());
  for (auto const& intf : config_.interfaces) {
    if (intf.profile.empty() || names.contains(intf.profile)) continue;
    yaml_.diagnose(
        profilePlace_[intf.name], fmt::format("there is no profile {}", quotedWord(intf.profile)),
        known.empty() ? "add it under 'profiles'" : remedyForUnknown(intf.profile, known));
  }
}

// Against the devices of the other interfaces, also those of which the file says nothing, and
// against the interfaces themselves.
void ConfigReader::checkDevicesDiffer() {
  std::map<std::string, std::string> taken;
  for (auto const& intf : config_.interfaces) {
    taken.emplace(intf.name, fmt::format("interface {} itself", quotedWord(intf.name)));
    if (!intf.device.empty()) continue;
    taken.emplace(defaultDeviceName(intf.name),
                  fmt::format("the device of interface {}", quotedWord(intf.name)));
  }
  for (auto const& intf : config_.interfaces) {
    if (intf.device.empty()) continue;
    auto const [other, isNew] = taken.emplace(
        intf.device, fmt::format("the device of interface {}", quotedWord(intf.name)));
    if (isNew) continue;
    yaml_.diagnose(devicePlace_[intf.name],
                   fmt::format("{} is already {}", quotedWord(intf.device), other->second),
                   "give each device a name of its own");
  }
}

/// What a text has to be: that of a file decides on this machine, and says something.
enum class Source : uint8_t { file, text };

void readText(std::string_view text, std::string const& file, int linesBefore, Source source,
              ConfigResult& result) {
  KeyMask const mask(text);
  YamlReader yaml(file, linesBefore, mask, result.diagnostics);
  try {
    auto const root = readYaml(mask.masked());
    ConfigReader reader(yaml, result.config);
    reader.readRoot(root);
    if (source == Source::text) return;
    if (root.IsNull()) {
      yaml.diagnose(YAML::Mark(), "the file says nothing",
                    "write 'interfaces: {}' if no interface is to be secured");
    }
    reader.checkMachine();
  } catch (YamlFault const& found) {
    yaml.diagnose(found.at, found.fault);
  } catch (TooManyDiagnostics const&) {
    // The last of them says so.
  }
}

/// The place of an octet of the text.
Diagnostic at(std::string_view text, size_t octet, std::string const& file, int linesBefore) {
  auto const before = text.substr(0, octet);
  auto const line = std::ranges::count(before, '\n');
  auto const column = octet - (before.rfind('\n') + 1);
  return {file, static_cast<int>(line) + 1 + linesBefore, static_cast<int>(column) + 1, {}, {}};
}

ConfigResult parse(std::string_view text, std::string const& file, int linesBefore, Source source) {
  ConfigResult result;
  size_t const control = KeyMask::controlCharacter(text);
  if (control < text.size()) {
    result.diagnostics.push_back(at(text, control, file, linesBefore));
    result.diagnostics.back().what = "a control character stands here";
    result.diagnostics.back().remedy = "remove it; a configuration is plain text in UTF-8";
    return result;
  }
  readText(text, file, linesBefore, source, result);
  sortByPlace(result.diagnostics);
  return result;
}

}  // namespace

ConfigResult parseConfig(std::string_view text, std::string const& file, int linesBefore) {
  return parse(text, file, linesBefore, Source::text);
}

ConfigResult readConfigFile(std::string const& path, Keys keys) {
  auto refused = [&](Fault const& fault) {
    return ConfigResult{{}, {{path, 1, 1, fault.what, fault.remedy}}, {}};
  };
  InputFile file(path);
  if (file.fault()) return refused(*file.fault());
  auto const text = file.read(maxTextSize);
  if (!text) return refused(text.fault());
  auto const source = keys == Keys::example ? Source::text : Source::file;
  auto result = parse(text->view(), path, 0, source);
  auto const unsafe = keys != Keys::example ? file.faultOfKeeping() : std::nullopt;
  if (unsafe)
    result.diagnostics.insert(result.diagnostics.begin(), refused(*unsafe).diagnostics[0]);
  if (keys == Keys::kept && result.good()) result.sealed = WardcodeLib::doEncodeKey(*text);
  return result;
}

}  // namespace Macsecd
