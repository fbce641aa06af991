#pragma once

#include <optional>

#include "linux/kernel/KernelDriver.h"
#include "linux/kernel/MacsecNetlink.h"
#include "model/Factories.h"
#include "platform/WardcodeLib.h"
#include "tests/kernel/Wire.h"

namespace Kernel {

/// One end of the cable: a status tree that the test writes, and a driver on the real kernel.
class Station {
 public:
  Station(std::string const& space, std::string const& interface, uint8_t last)
      : space_(space), intfId(interface.c_str()), last_(last) {
    Inside const inside(space);
    kernel.emplace();
    index_ = static_cast<int>(if_nametoindex(interface.c_str()));
  }

  std::string device() const { return std::string(intfId.stringValue().view()) + "-sec"; }
  Macsec::Sci sci() const { return {Lumo::EthAddr({2, 0, 0, 0, 0, last_}), 1}; }

  /// The port comes into being, with this other end.
  void portIs(Macsec::CipherSuite suite, Station const& peer, bool includeSci = true) {
    status->portStatusIs(intfId)->mySciIs(sci());
    cp = status->cpStatusIs(intfId, Macsec::MacsecParams(suite, includeSci));
    bool const isGreater = last_ > peer.last_;
    cp->mySsciIs({sci(), isGreater ? "00000001" : "00000002"});
    cp->peerSsciIs({peer.sci(), isGreater ? "00000002" : "00000001"});
  }
  void start(Linux::KernelDriverOptions const& options = {}) {
    driver.emplace(status, slice, *kernel, options);
    driver->interfaceIs(intfId, index_);
  }
  /// The driver goes and another one comes, as over a restart of the process.
  void restart() {
    driver.reset();
    slice = Macsec::macSecStatusFactory("kernel");
    start();
  }
  /// Takes away all that a test has left in the kernel.
  void clear() const {
    std::vector<Linux::MacsecLink> links;
    kernel->links(links);
    for (auto const& link : links) kernel->secYDel(link.index);
  }
  Vesk::Ptr<Macsec::MacSecIntfStatus> report() const { return slice->status(intfId); }
  FrameSocket frames() const { return {space_, device(), last_}; }
  /// What the kernel holds now.
  Linux::SecY held() const {
    std::vector<Linux::SecY> all;
    kernel->secYs(all);
    return all.empty() ? Linux::SecY() : all.front();
  }

 private:
  std::string const space_;

 public:
  Lumo::IntfId const intfId;
  mutable std::optional<Linux::MacsecNetlink> kernel;
  Vesk::Ptr<Macsec::Status> status = Macsec::statusFactory("status");
  Vesk::Ptr<Macsec::MacSecStatus> slice = Macsec::macSecStatusFactory("kernel");
  Vesk::Ptr<Macsec::CpStatus> cp;
  std::optional<Linux::KernelDriver> driver;

 private:
  uint8_t const last_;
  int index_ = 0;
};

/// What a device has counted, for the text of a failure.
inline std::string counted(Linux::SecY const& secY) {
  std::ostringstream out;
  auto const& c = secY.counters;
  out << "sent " << secY.outEncrypted << ", no tag " << c.inNoTag << ", bad tag " << c.inBadTag
      << ", unknown SCI " << c.inUnknownSci << ", no SCI " << c.inNoSci << ", overrun "
      << c.inOverrun;
  for (Linux::HeldRxSc const& sc : secY.rxScs) {
    out << "; channel " << std::hex << sc.sci << std::dec << ": ok " << sc.counters.ok << ", late "
        << sc.counters.late << ", not valid " << sc.counters.notValid << ", not using SA "
        << sc.counters.notUsingSa << ", unused SA " << sc.counters.unusedSa;
  }
  return out.str();
}

/// A key as the controlled port hands it on: every number makes another one.
inline Macsec::Sak sakOf(uint8_t an, uint32_t keyNum, Macsec::CipherSuite suite) {
  Macsec::Sak sak{Macsec::AssociationNumber(an)};
  sak.keyMsgIdIs("a1a2a3a4a5a6a7a8a9aaabac");
  sak.keyNumIs(keyNum);
  sak.saltIs("e630e81a48de86a21c66fa6d");
  std::string text(static_cast<size_t>(suite) / 4, '5');
  text[0] = "0123456789abcdef"[keyNum % 16];
  sak.keyIs(WardcodeLib::doEncodeKey(Vesk::String8::secret(text)));
  return sak;
}

}  // namespace Kernel
