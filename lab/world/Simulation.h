#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <queue>
#include <set>
#include <string>
#include <vector>

#include "host/watch/NonceWatch.h"
#include "lab/scenario/Scenario.h"
#include "lab/world/Clock.h"
#include "lab/world/Event.h"
#include "lab/world/SakHistory.h"
#include "lab/world/Switch.h"
#include "lab/world/Wire.h"

namespace Lab {

/// Plays a scenario in virtual time. At one instant the order is: starts of switches, actions of
/// the scenario, timers, answers of hardware, frames, frames of data; frames are always delivered
/// from here and never inside the sender. The same scenario with the same seed happens the same way
/// to the byte.
///
/// Frames of data go the ways of the wires and take their own time: a wire that is cut loses them,
/// and no other fault of a wire hits them, so that none is lost by chance.
class Simulation {
 public:
  /// The scenario has to outlive the simulation. One simulation lives at a time, since the
  /// attribute log and the key of stored keys are the process's.
  Simulation(Scenario const& scenario, uint32_t seed);
  /// Ends the process if a nonce was repeated and nobody has asked for that.
  ~Simulation();
  Simulation(Simulation const&) = delete;
  Simulation& operator=(Simulation const&) = delete;

  /// Takes up somebody who follows what happens, in order of arrival.
  void audienceIs(Audience& audience) { audience_.push_back(&audience); }
  /// Runs to the end of the scenario.
  void run();

  Scenario const& scenario() const { return scenario_; }
  /// Nonces that transmit SAs would have repeated, a line each; from now on somebody looks at them.
  std::vector<std::string> const& nonceRepeats();
  /// The present virtual time in seconds.
  double now() const { return clock_.now; }
  SakHistory const& sakHistory() const { return sakHistory_; }
  /// No fault is on.
  bool isSound(size_t wire) const { return wires_[wire].isSound(); }
  /// A frame as it left its port, whatever the wire did to it then.
  struct Recorded {
    double time;
    PortName from;
    Frame frame;
  };
  /// All frames of a wire so far, in the order in which they left.
  std::vector<Recorded> const& recorded(size_t wire) const { return recorded_[wire]; }
  /// What had happened to a switch at a mark.
  SwitchRecord markedRecord(Mark const& mark, std::string const& switchName) const;
  std::vector<std::unique_ptr<Switch>> const& switches() const { return switches_; }
  Switch& switchOf(std::string const& name) const;

 private:
  // A frame that has left and will arrive at an end of a wire.
  struct InFlight {
    double time;
    uint64_t departure;
    size_t wire;
    size_t from;
    Frame frame;
    bool operator<(InFlight const& o) const {
      return time != o.time ? time > o.time : departure > o.departure;
    }
  };
  struct WireEnd {
    size_t wire;
    size_t end;
  };
  // A frame of data on its way.
  struct DataInFlight {
    double time;
    double sentAt;
    size_t wire;
    size_t from;
    uint64_t number;
    Frame frame;
  };

  void makeSwitches(uint32_t seed);
  double nextTime() const;
  double instantFrom(double next) const;
  void settle();
  void startDue();
  void actDue();
  bool runOne();
  bool deliverOne();
  void deliver(InFlight const& flight);
  void carry(Switch& from, Lumo::IntfId intfId, std::span<uint8_t const> frame);
  void sendDueData();
  void sendData(size_t wire, size_t end);
  void deliverDueData();
  void endFaults();
  void endFaultsAt(PortName const& port, bool belongs);
  void deliverData(DataInFlight const& flight, size_t end);
  static bool isMeant(Recorded const& recorded, Replay const& replay);
  std::vector<Frame> framesOf(Replay const& replay, size_t wire) const;
  WireEnd const* wireAt(PortName const& port) const;
  void tell(Switch const& from, TreeWatch::What what);

  void act(Action const& action);
  void carryOut(LinkChange const& change);
  void carryOut(DeviceChange const& change);
  void carryOut(WireFault const& fault);
  void carryOut(KeyChange const& change);
  void carryOut(PriorityChange const& change);
  void carryOut(RekeyPeriodChange const& change);
  void carryOut(SuiteChange const& change);
  void carryOut(ProfileChange const& change);
  void carryOut(Dot1xKeyChange const& change);
  void carryOut(ShutdownChange const& change);
  void carryOut(DelayProtectionChange const& change);
  void carryOut(FipsChange const& change);
  void carryOut(FipsProviderChange const& change);
  void carryOut(CountersCleared const& cleared);
  void carryOut(Reload const& reload);
  void carryOut(Restart const& restart);
  void carryOut(Kill const& kill);
  void carryOut(Standstill const& still);
  void carryOut(ClockRate const& clock);
  void carryOut(StoreChange const& change);
  void carryOut(HardwareChange const& change);
  void carryOut(PacketNumber const& number);
  void carryOut(KeySpent const& spent);
  void carryOut(KeyLost const& lost);
  void carryOut(SendFrame const& send);
  void carryOut(Replay const& replay);
  void carryOut(InterfaceChange const& change);
  void carryOut(Mark const& mark);
  void changeProfile(ProfileName const& name,
                     std::function<void(Macsecd::ProfileConfig&)> const& change);

  Scenario const& scenario_;
  Clock clock_;
  SakHistory sakHistory_;
  std::map<std::pair<std::string, std::string>, SwitchRecord> marked_;  // by mark and switch
  std::vector<Audience*> audience_;
  Macsecd::NonceWatch nonces_;
  bool noncesAreLookedAt_ = false;
  std::vector<Wire> wires_;
  std::vector<std::vector<Recorded>> recorded_;  // by wire
  std::map<PortName, WireEnd> ends_;
  std::vector<std::unique_ptr<Switch>> switches_;
  std::multimap<double, Switch*> starts_;
  std::priority_queue<InFlight> inFlight_;
  uint64_t departures_ = 0;
  double nextData_;
  std::map<PortName, uint64_t> dataSent_;
  std::deque<DataInFlight> dataInFlight_;  // in order of arrival
  size_t nextAction_ = 0;
  double faultsEnd_;
  std::set<double> looks_;
};

}  // namespace Lab
