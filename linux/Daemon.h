#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "host/Host.h"
#include "host/control/Trial.h"
#include "host/state/UnreadableKeys.h"
#include "linux/keep/LmdbStore.h"
#include "linux/kernel/HardwareDriver.h"
#include "linux/net/EapolSockets.h"
#include "linux/net/LinkWatch.h"
#include "linux/net/Ports.h"
#include "linux/process/EventLoop.h"
#include "linux/process/ProcessWorld.h"
#include "linux/serve/ControlSocket.h"
#include "linux/serve/EapKeyFeed.h"
#include "linux/serve/Metrics.h"
#include "linux/serve/MetricsServer.h"
#include "linux/trace/Tracing.h"

namespace Linux {

struct DaemonOptions {
  std::string configFile;
  /// Where 802.1X programs publish keys (`EapKeyFeed`); nowhere if empty.
  std::string eapKeySocket = {};
  /// The name of the shared memory in which frames are counted; in this process's own if empty.
  std::string counters = {};
  /// Where operators ask (`ControlSocket`); nowhere if empty.
  std::string controlSocket = {};
  /// The file that holds the status tree over a restart; none if empty.
  std::string stateFile = {};
  /// The file that traces go to while they are on; nowhere if empty.
  std::string traceFile = {};
  /// The loopback address at which Prometheus reads (`MetricsServer`); none if empty.
  std::string metrics = {};
  /// Keys are installed nowhere, and taken for installed: for the development of the protocol.
  bool emulateHardware = false;
};

/// How the daemon ends: the exit statuses of its program.
enum class DaemonEnd : int {
  stopped = 0,
  badConfiguration = 1,  ///< mistakes in the configuration
  cannotRun = 3,         ///< the machine refuses what it needs
};

/// The whole daemon: one switch on the interfaces of this machine that its configuration names, in
/// one thread, and in its world for as long as it lives. SIGHUP has it read the configuration
/// again. SIGTERM and SIGINT end MACsec on this machine; SIGUSR1 ends the process and leaves the
/// ports as they are, for the one that follows.
class Daemon final : private PortObserver {
 public:
  /// Makes what installs the keys; null when the hardware is emulated.
  using DriverFactory =
      std::function<std::unique_ptr<HardwareDriver>(Macsecd::Host& host, EventLoop& loop)>;

  /// Throws `std::runtime_error` if the machine refuses what it needs. The world lives longer, and
  /// so does `store`, which may be null.
  Daemon(ProcessWorld& world, DaemonOptions options, Macsecd::StateStore* store,
         DriverFactory const& driverFactory);
  ~Daemon() override;

  /// Runs until it is stopped. What goes wrong before that is logged.
  DaemonEnd run();

 private:
  bool configure();
  std::vector<Macsecd::Diagnostic> readConfig();
  void take(Macsecd::ConfigResult const& read);
  bool goOnAsBefore();
  void tellWhatIsCutOff() const;
  void configIs(Macsecd::SwitchConfig const& config);
  bool listen();
  void tellOfState() const;
  void connect();
  void start();
  std::vector<Macsecd::Diagnostic> reload();
  void stop();
  void leave();
  void commit();
  void endTurn();
  void hearLinks();
  void handleDue();
  double nextTime() const;
  uint16_t portNumberOf(Lumo::IntfId intfId) const;

  void linkChanged(LinkChange const& change);
  void portIs(Lumo::IntfId intfId, int index, Lumo::EthAddr const& addr) override;
  void portLinkIs(Lumo::IntfId intfId, bool up) override;
  void portSetUpIs(Lumo::IntfId intfId, bool setUp) override;
  void portMtuIs(Lumo::IntfId intfId, uint32_t mtu) override;
  void portDel(Lumo::IntfId intfId) override;

  DaemonOptions const options_;
  ProcessWorld& world_;
  Vesk::WorldScope const scope_;
  Tracing tracing_;
  EventLoop loop_;
  EapolSockets sockets_;
  Macsecd::Host host_;
  Macsecd::Trial trial_;
  Macsecd::UnreadableKeyTeller const unreadableKeys_;
  std::unique_ptr<HardwareDriver> const driver_;
  std::vector<Macsecd::InterfaceConfig> interfaces_;  ///< those in the configuration
  std::map<std::string, uint16_t> portNumbers_;       ///< theirs
  EapKeyFeed eapKeys_;
  ControlSocket control_;
  LoopDelay loopDelay_;
  std::optional<Metrics> metrics_;
  MetricsServer metricsServer_;
  LinkTable links_;
  Ports ports_;
  std::optional<LinkWatch> linkWatch_;
  bool isReady_ = false;
  std::string storeError_;
};

/// Runs a daemon from beginning to end.
DaemonEnd runDaemon(DaemonOptions const& options, Daemon::DriverFactory const& driverFactory);

}  // namespace Linux
