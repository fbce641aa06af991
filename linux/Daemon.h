#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "host/Host.h"
#include "linux/EapKeyFeed.h"
#include "linux/EapolSockets.h"
#include "linux/EventLoop.h"
#include "linux/HardwareDriver.h"
#include "linux/LinkWatch.h"
#include "linux/Ports.h"
#include "linux/ProcessWorld.h"

namespace Linux {

struct DaemonOptions {
  std::string configFile;
  /// Where 802.1X programs publish keys (`EapKeyFeed`); nowhere if empty.
  std::string eapKeySocket = {};
  /// The name of the shared memory in which frames are counted; in this process's own if empty.
  std::string counters = {};
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
/// again, SIGTERM and SIGINT stop it.
class Daemon final : private PortFollower {
 public:
  /// Makes what installs the keys; null when the hardware is emulated.
  using DriverFactory =
      std::function<std::unique_ptr<HardwareDriver>(Macsecd::Host& host, EventLoop& loop)>;

  /// Throws `std::system_error` if the kernel refuses what it needs.
  Daemon(DaemonOptions options, DriverFactory const& driverFactory);
  ~Daemon() override;

  /// Runs until it is stopped. What goes wrong before that is logged.
  DaemonEnd run();

 private:
  bool readConfig();
  void configIs(Macsecd::SwitchConfig const& config);
  bool listen();
  void connect();
  void reload();
  void stop();
  void handleDue();
  double nextTime() const;
  uint16_t portNumberOf(Lumo::IntfId intfId) const;

  void portIs(Lumo::IntfId intfId, int index, Lumo::EthAddr const& addr) override;
  void portLinkIs(Lumo::IntfId intfId, bool up) override;
  void portDel(Lumo::IntfId intfId) override;

  DaemonOptions const options_;
  ProcessWorld world_;
  Vesk::WorldScope const scope_;
  EventLoop loop_;
  EapolSockets sockets_;
  Macsecd::Host host_;
  std::unique_ptr<HardwareDriver> const driver_;
  std::map<std::string, uint16_t> portNumbers_;  ///< of the interfaces in the configuration
  EapKeyFeed eapKeys_;
  LinkTable links_;
  Ports ports_;
  std::optional<LinkWatch> linkWatch_;
  bool isReady_ = false;
};

/// Runs a daemon from beginning to end.
DaemonEnd runDaemon(DaemonOptions const& options, Daemon::DriverFactory const& driverFactory);

}  // namespace Linux
