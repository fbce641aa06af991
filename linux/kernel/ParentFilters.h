#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "host/text/Result.h"
#include "host/watch/Backoff.h"
#include "linux/kernel/Agenda.h"
#include "linux/kernel/HooksReader.h"
#include "linux/process/Limits.h"
#include "runtime/IntfId.h"

namespace Linux {

/// Keeps clear frames from going past MACsec: an interface that is closed lets MACsec and EAPOL
/// through alone, in and out, and what may pass in clear beside them. Without it the kernel takes
/// clear frames to the MACsec device's address as its parent's own, which has the same one.
///
/// What stands in the kernel outlives this, as over a restart of the process; another one takes it
/// up untouched, and one that was changed or removed by somebody is set anew.
class ParentFilters {
 public:
  /// Told why a closed interface isn't, and a fault without a text when it is.
  using FaultIs = std::function<void(Lumo::IntfId, Macsecd::Fault const&)>;

  /// `kernel` lives longer than this.
  explicit ParentFilters(FilterKernel& kernel, FaultIs faultIs = nullptr)
      : kernel_(kernel), hooks_(kernel), faultIs_(std::move(faultIs)) {}

  /// The interface with this index is closed from now on, but for these types. False if the kernel
  /// refuses, which is logged, and tried again in a while.
  bool interfaceIs(Lumo::IntfId intfId, int index, Macsecd::EtherTypes clear = {});
  /// It is open, with the next `run()`: one that is closed again before was closed throughout.
  void interfaceDel(Lumo::IntfId intfId);
  /// Takes away what another process has left on interfaces that aren't closed here.
  void removeOthers();
  /// Opens all interfaces, as at the end of MACsec on this machine.
  void removeAll();

  /// Why a closed interface isn't; nothing if it is.
  std::optional<std::string> trouble(Lumo::IntfId intfId) const;

  /// As long as what this returns lives, one listing of the kernel serves all interfaces.
  HooksReader::Round round() { return HooksReader::Round(hooks_); }

  /// When `run()` wants to be called, in seconds of the world's clock; infinity for never.
  double nextTime() const;
  void run();

 private:
  struct Parent {
    int index = 0;
    Macsecd::EtherTypes clear = {};
    std::string problem = {};
    Macsecd::Backoff retry{Limits::kFirstRetry, Limits::kLastRetry};
    bool wasClosed = false;
  };

  void check();
  bool close(Lumo::IntfId intfId, Parent& parent);
  Macsecd::Result<> closeNow(Lumo::IntfId intfId, Parent& parent);
  Macsecd::Result<> closeAsListed(Lumo::IntfId intfId, Parent& parent);
  KernelAnswer set(Parent const& parent, HeldFilters const& held, bool hooksAreOurs);
  void open(int index);
  void openLeft();

  FilterKernel& kernel_;
  HooksReader hooks_;
  FaultIs const faultIs_;
  std::map<Lumo::IntfId, Parent> parents_;
  Agenda<Lumo::IntfId> retries_;  // of those with a problem
  std::set<int> left_;            // interfaces that are to be opened
  double nextCheck_ = 0;          // whether the kernel tells of a change
  double nextLook_ = 0;           // at all interfaces, whatever it tells
};

}  // namespace Linux
