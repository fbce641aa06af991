#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Linux {

/// What the kernel answered to a request.
struct KernelAnswer {
  /// An errno; 0 when the kernel did what it was asked.
  int error = 0;
  /// The kernel's own words for the error, empty when there is none.
  std::string text = {};

  explicit operator bool() const { return error == 0; }
};

/// A secure channel identifier as a number: six octets of address, two of port.
using SciNumber = uint64_t;
/// The 128-bit key identifier of an SA: member identifier and key number of its SAK.
using KeyId = std::array<uint8_t, 16>;
/// The salt of the extended packet numbering suites.
using Salt = std::array<uint8_t, 12>;

/// Ciphers by their identifiers in IEEE 802.1AE-2018, table 14-1.
constexpr uint64_t kGcmAesXpn128 = 0x0080C20001000003;
constexpr uint64_t kGcmAesXpn256 = 0x0080C20001000004;

/// A network device of the kind "macsec".
struct MacsecLink {
  int index = 0;
  int parent = 0;
  std::string name = {};
  bool up = false;      ///< switched on
  bool isOurs = false;  ///< brought up by this program
};

/// What can be changed on a living device.
struct SecYSettings {
  bool encrypt = true;
  bool protect = true;
  bool strict = true;  ///< frames without protection, or with a wrong one, are dropped
  bool replayProtect = true;
  uint32_t window = 0;  ///< how many packet numbers late a frame may be

  friend bool operator==(SecYSettings const&, SecYSettings const&) = default;
};

/// What makes a new device.
struct NewSecY {
  std::string name = {};
  int parent = 0;
  SciNumber sci = 0;
  uint64_t cipher = kGcmAesXpn128;
  /// A device that doesn't send its SCI in each frame gets one of the parent's address, whatever
  /// address stands in `sci`.
  bool sendSci = true;
  /// Comes up dormant until somebody says that traffic may pass (RFC 2863, ifOperStatus).
  bool dormant = false;
  SecYSettings settings = {};
};

/// A secure association that the kernel holds.
struct HeldSa {
  uint8_t an = 0;
  bool on = false;
  /// The next one to send, or to be expected.
  uint64_t packetNumber = 0;
  uint32_t ssci = 0;
  KeyId keyId = {};
};

/// Frames received on one secure channel (IEEE 802.1AE-2018, 10.7.9), in number.
struct RxScCounters {
  uint64_t unchecked = 0, delayed = 0, ok = 0, invalid = 0, late = 0, notValid = 0, notUsingSa = 0,
           unusedSa = 0;
};

/// A receive channel that the kernel holds.
struct HeldRxSc {
  SciNumber sci = 0;
  bool on = false;
  std::vector<HeldSa> sas = {};
  RxScCounters counters = {};
};

/// Frames of a device as a whole, in number.
struct SecYCounters {
  uint64_t outUntagged = 0, outTooLong = 0, inUntagged = 0, inNoTag = 0, inBadTag = 0,
           inUnknownSci = 0, inNoSci = 0, inOverrun = 0;
};

/// What the kernel holds of one device.
struct SecY {
  int index = 0;
  SciNumber sci = 0;
  uint64_t cipher = 0;
  bool sendSci = false;
  uint8_t encodingSa = 0;
  SecYSettings settings = {};
  std::vector<HeldSa> txSas = {};
  std::vector<HeldRxSc> rxScs = {};
  uint64_t outEncrypted = 0;  ///< frames sent encrypted
  SecYCounters counters = {};
};

/// Whether the kernel protects what is sent through the device, or drops it.
bool sends(SecY const& secY);
/// Whether it takes in protected frames of anybody.
bool receives(SecY const& secY);

/// Where an SA lives: on the transmit channel of a device, or on one of its receive channels.
struct SaPlace {
  int index = 0;
  std::optional<SciNumber> rxSci = {};
  uint8_t an = 0;
};

/// What makes a new SA. The key is read during the request alone.
struct NewSa {
  uint64_t packetNumber = 1;
  uint32_t ssci = 0;
  KeyId keyId = {};
  Salt salt = {};
  std::span<uint8_t const> key = {};
};

/// The kernel's MACsec. Every request is answered before it returns; packet numbers and SSCIs are
/// numbers of the machine.
class MacsecKernel {
 public:
  virtual ~MacsecKernel() = default;

  /// Whether this kernel has MACsec at all.
  virtual KernelAnswer present() = 0;
  /// All devices of the kind "macsec", whoever made them.
  virtual KernelAnswer links(std::vector<MacsecLink>& out) = 0;
  /// What the kernel holds of all of them.
  virtual KernelAnswer secYs(std::vector<SecY>& out) = 0;
  /// One device, by its name, and what makes it; not its associations and counters.
  virtual KernelAnswer device(std::string const& name, MacsecLink& link, SecY& secY) = 0;

  virtual KernelAnswer secYAdd(NewSecY const& secY) = 0;
  virtual KernelAnswer secYDel(int index) = 0;
  virtual KernelAnswer settingsIs(int index, SecYSettings const& settings) = 0;
  virtual KernelAnswer encodingSaIs(int index, uint8_t an) = 0;
  /// Brings a device up, and marks it as this program's, also if it can't be up yet.
  virtual KernelAnswer linkUp(int index) = 0;
  /// The longest packet that the device takes; refused if the interface below leaves it less.
  virtual KernelAnswer mtuIs(int index, uint32_t mtu) = 0;
  /// Says of a dormant device whether traffic may pass.
  virtual KernelAnswer authorizedIs(int index, bool authorized) = 0;

  virtual KernelAnswer rxScAdd(int index, SciNumber sci) = 0;
  virtual KernelAnswer rxScDel(int index, SciNumber sci) = 0;
  /// The SA is on from the start.
  virtual KernelAnswer saAdd(SaPlace const& place, NewSa const& sa) = 0;
  virtual KernelAnswer saOnIs(SaPlace const& place, bool on) = 0;
  virtual KernelAnswer packetNumberIs(SaPlace const& place, uint64_t packetNumber) = 0;
  /// Only of an SA that is off.
  virtual KernelAnswer saDel(SaPlace const& place) = 0;
};

}  // namespace Linux
