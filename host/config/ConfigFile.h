#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "codec/Dialect.h"
#include "host/config/ClearTypes.h"
#include "host/text/Diagnostic.h"
#include "runtime/String8.h"

namespace Macsecd {

/// Cipher suites by the length of their keys in bits.
enum class Suite : uint16_t { gcmAesXpn128 = 128, gcmAesXpn256 = 256 };

/// The word of the suite in files: "gcm-aes-xpn-128" or "gcm-aes-xpn-256".
std::string wordOf(Suite suite);
/// The suite of the word; nothing for any other word.
std::optional<Suite> suiteOf(std::string_view word);
/// The words of all suites.
std::vector<std::string> const& suiteWords();

/// A pre-shared key.
struct KeyConfig {
  Vesk::String8 ckn;  ///< its name, as written
  Vesk::String8 cak;  ///< hexadecimal digits in clear, wiped with the last copy
  friend bool operator==(KeyConfig const&, KeyConfig const&) = default;
};

struct GroupCakConfig {
  bool enabled = false;
  uint32_t lifetime = 1000;  ///< minutes
  friend bool operator==(GroupCakConfig const&, GroupCakConfig const&) = default;
};

struct ProfileConfig {
  std::string name;
  std::optional<KeyConfig> key;
  std::optional<KeyConfig> fallbackKey;  ///< not in force while its name is that of `key`
  uint8_t keyServerPriority = 16;        ///< the lower, the sooner key server
  uint32_t rekeyPeriod = 0;              ///< seconds; 0 is no timed rekey
  Suite cipherSuite = Suite::gcmAesXpn128;
  bool includeSci = false;
  bool dot1x = false;  ///< the primary key comes from 802.1X
  GroupCakConfig groupCak;
};

/// What passes an interface while its port isn't open.
enum class SecurePolicy : uint8_t {
  mustSecure,    ///< nothing but MKA; nothing in clear ever
  shouldSecure,  ///< clear traffic as well
};

/// What becomes of an open port that has lost all its peers.
enum class OnPeerLoss : uint8_t { keep, close };

struct InterfaceConfig {
  std::string name;
  std::string profile;
  uint16_t portNumber = 1;    ///< of the SCI
  Codec::Dialect dialect{};   ///< how frames are written for foreign equipment
  std::string device{};       ///< name of the MACsec device; empty for the default
  uint32_t replayWindow = 0;  ///< how many packet numbers late a frame may be
  uint32_t mtu = 0;           ///< of the MACsec device; 0 for what the interface leaves it
  SecurePolicy policy = SecurePolicy::mustSecure;
  EtherTypes clear{};  ///< what may pass in clear where nothing else may
  OnPeerLoss onPeerLoss = OnPeerLoss::keep;
};

/// What the configuration file of one switch says, defaults filled in, in the order of the file.
struct SwitchConfig {
  bool shutdown = false;
  bool fips = false;
  bool delayProtection = false;
  std::vector<ProfileConfig> profiles;
  std::vector<InterfaceConfig> interfaces;

  ProfileConfig const* profile(std::string_view name) const;
  InterfaceConfig const* interface(std::string_view name) const;
};

/// The configuration, and the diagnostics of the file in the order of their places. The
/// configuration may be used only if there is none.
struct ConfigResult {
  SwitchConfig config;
  std::vector<Diagnostic> diagnostics;
  /// The text of a file whose keys are `Keys::kept`, encrypted under the key of the host
  /// (`WardcodeLib`); empty of one with mistakes.
  Vesk::String8 sealed = {};
  bool good() const { return diagnostics.empty(); }
};

/// Reads the text of a configuration (docs/configuration.md). `file` and `linesBefore`, the number
/// of lines that stand before the text in that file, name the places of mistakes. No key stays in
/// memory but those of the result; the text is the caller's to wipe.
ConfigResult parseConfig(std::string_view text, std::string const& file, int linesBefore = 0);

/// Whether the keys of a file are real, so that nobody else may read or change it, and are to be
/// kept for the next process, or are an example's.
enum class Keys : uint8_t { real, kept, example };

/// Reads a file, whose text is wiped afterwards. A file that can't be read, or with real keys in
/// reach of others, is one diagnostic at 1:1.
ConfigResult readConfigFile(std::string const& path, Keys keys = Keys::real);

}  // namespace Macsecd
