#pragma once

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "codec/Refusal.h"
#include "host/text/Limits.h"
#include "model/MkaMessageInfo.h"
#include "runtime/AtHome.h"
#include "runtime/EthAddr.h"

namespace Macsecd {

/// What the frames that came in on an interface tell of who is at the other end. Keeps the newest
/// of each kind with its time, in a fixed amount of memory whatever comes in.
class FrameEvidence : public Vesk::AtHome<Vesk::Home::Part::hot> {
 public:
  using SubType = Codec::SubType;

  /// Who sent frames that this switch accepted.
  struct Sender {
    Macsec::Sci sci;
    double time = 0;
  };

  /// A frame that the codec refused.
  void refused(Codec::Refusal const& refusal, std::span<uint8_t const> frame);
  /// A frame that it accepted, as it lies in the receive entity.
  void accepted(Macsec::MkaMessageInfo const& message, std::span<uint8_t const> frame);

  // All of the following look at the last `seconds` of the world's clock.

  /// Any MKPDU, also a refused one.
  bool anyFrame(double seconds) const { return isRecent(lastFrame_, seconds); }
  bool anyRefused(SubType subType, double seconds) const;
  /// The name of the CAK in the newest frame whose name no actor here has, as hexadecimal digits.
  std::optional<std::string> unknownName(double seconds) const;
  /// The same of the newest frame whose name an actor has, and whose ICV is wrong under its key.
  std::optional<std::string> wrongName(double seconds) const;
  /// Whether a frame bore this source address.
  bool cameFrom(Lumo::EthAddr const& addr, double seconds) const;
  /// The senders, at most `kSenders`.
  std::vector<Macsec::Sci> senders(double seconds) const;
  /// The cipher suite of the key that was distributed last.
  std::optional<Macsec::CipherSuite> distributedSuite(double seconds) const;

  static constexpr size_t kSenders = Limits::kSenders;

 private:
  using Time = std::optional<double>;

  // The name of the CAK in a frame, and when that came.
  struct NameSeen {
    std::optional<std::string> within(double seconds) const;
    Time at;
    std::string name;
  };

  // What was refused: most interfaces have none.
  struct Refused : Vesk::AtHome<Vesk::Home::Part::cold> {
    std::map<SubType, double> times;
    NameSeen unknown;
    NameSeen wrong;
  };

  static bool isRecent(Time const& time, double seconds);
  void noteFrame(std::span<uint8_t const> frame);
  void noteSender(Macsec::Sci const& sci);

  Time lastFrame_;
  Time sourceAt_;
  Lumo::EthAddr source_;
  std::vector<Sender, Vesk::HomeAllocator<Sender>> senders_;
  Time suiteAt_;
  Macsec::CipherSuite suite_{};
  std::unique_ptr<Refused> refused_;
};

}  // namespace Macsecd
