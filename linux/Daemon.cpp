#include "linux/Daemon.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <stdexcept>

#include "host/journal/PortJournal.h"
#include "host/state/HostKey.h"
#include "host/text/KeyText.h"
#include "linux/keep/SharedCounters.h"
#include "linux/kernel/InterfaceUse.h"
#include "linux/process/NamespaceGuard.h"
#include "linux/process/Privileges.h"
#include "linux/process/ServiceManager.h"
#include "linux/trace/Syslog.h"
#include "platform/Fips.h"
#include "platform/WardcodeLib.h"

namespace Linux {

namespace {

using Vesk::LogSeverity;

Vesk::LogHandle const MACSECD_CONFIG_TAKEN("MACSECD_CONFIG_TAKEN", LogSeverity::notice,
                                           "The configuration of %s is in force",
                                           "The configuration file was read and taken over.",
                                           Vesk::NoActionRequired, 0.0, 1.0);

Vesk::LogHandle const MACSECD_CONFIG_MISTAKE("MACSECD_CONFIG_MISTAKE", LogSeverity::error, "%s",
                                             "The configuration file has a mistake.",
                                             "Correct it and have the file read again.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_CONFIG_REFUSED(
    "MACSECD_CONFIG_REFUSED", LogSeverity::error, "%s isn't taken over; mistakes in it: %s",
    "A configuration with a mistake changes nothing.",
    "Correct the mistakes told before and have the file read again.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_CONFIG_KEPT(
    "MACSECD_CONFIG_KEPT", LogSeverity::warning,
    "%s; the configuration that was in force last goes on",
    "The daemon was started on a configuration with mistakes, or on one that was tried and not "
    "kept, and goes on with the one that it had before.",
    "Correct the mistakes, if some were told before, and have the file read again.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_INTERFACE_IN_USE(
    "MACSECD_INTERFACE_IN_USE", LogSeverity::warning, "What stands on it is cut off: %s",
    "An interface that must be secure has addresses, routes or a master of its own. Nothing that "
    "uses them reaches anybody.",
    "Move them to the MACsec device, or write 'policy: should-secure' at the interface.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_NO_SOCKET(
    "MACSECD_NO_SOCKET", LogSeverity::error, "No MKPDUs pass interface %s: %s",
    "The socket for the frames of an interface couldn't be opened.",
    "Do what the message says; it is tried again every few seconds.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_CANNOT_RUN("MACSECD_CANNOT_RUN", LogSeverity::critical, "%s",
                                         "The machine refuses what the daemon needs.",
                                         "Do what the message says and start it again.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_MEMORY_NOT_LOCKED("MACSECD_MEMORY_NOT_LOCKED", LogSeverity::warning,
                                                "Keys may get into the swap space: %s",
                                                "The memory of the daemon couldn't be locked.",
                                                "Do what the message says.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_STOPPED("MACSECD_STOPPED", LogSeverity::notice, "Stopped",
                                      "The daemon was asked to stop.", Vesk::NoActionRequired, 0.0,
                                      1.0);

Vesk::LogHandle const MACSECD_STATE_NOTE("MACSECD_STATE_NOTE", LogSeverity::warning, "%s",
                                         "The state of the former process wasn't as it should be.",
                                         Vesk::NoActionRequired, 0.0, 1.0);

Vesk::LogHandle const MACSECD_STATE_DROPPED(
    "MACSECD_STATE_DROPPED", LogSeverity::warning, "%s of the former process isn't taken up: %s",
    "A value that the former process left can't be read. The rest is taken up.",
    Vesk::NoActionRequired, 0.0, 1.0);

Vesk::LogHandle const MACSECD_STATE_NOT_KEPT(
    "MACSECD_STATE_NOT_KEPT", LogSeverity::error, "The state isn't kept: %s",
    "The state that a restart goes on with can't be written; it is tried again and again. A "
    "restart in the meantime is noticed by the peers.",
    "Do what the message says.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_STATE_KEPT("MACSECD_STATE_KEPT", LogSeverity::notice,
                                         "The state is kept again", "The obstacle has gone.",
                                         Vesk::NoActionRequired, 0.0, 1.0);

Vesk::LogHandle const MACSECD_LEFT("MACSECD_LEFT", LogSeverity::notice,
                                   "Ended; the ports stay as they are",
                                   "The daemon was asked to end for another one to go on.",
                                   Vesk::NoActionRequired, 0.0, 1.0);

Macsecd::HostOptions hostOptionsOf(DaemonOptions const& options, Macsecd::StateStore* store) {
  Macsecd::HostOptions host{.emulateHardware = options.emulateHardware,
                            .store = store,
                            .companion = Macsecd::PortJournal::of};
  if (!options.counters.empty()) host.counters = messageCountersIn(options.counters);
  return host;
}

// Before the first key is made or read: those of the host and of the configuration are made under
// the same rule as all others. Mistakes in the configuration are told when it is taken over.
bool cryptographyIsReady(std::string const& configFile) {
  if (auto const missing = Macsec::missingAlgorithm()) {
    Vesk::log(MACSECD_CANNOT_RUN, "OpenSSL's providers have no " + *missing +
                                      "; check that openssl.cnf turns on the default provider");
    return false;
  }
  auto const read = Macsecd::readConfigFile(configFile);
  WardcodeLib::hostKeyDel();  // made to read the file with, before the mode is known
  if (!read.good() || !read.config.fips || read.config.shutdown) return true;
  Vesk::world().randCleanup();
  return Vesk::world().fipsModeSet(1) == 1;
}

// What the daemon can't run without ends its start.
void orCannotRun(Macsecd::Result<> const& result) {
  if (!result) throw std::runtime_error(result.fault().text());
}

// The keys in the store are readable under the key beside it, and with it they go.
std::unique_ptr<LmdbStore> storeAt(std::string const& path) {
  if (path.empty()) return nullptr;
  std::error_code ignored;  // what can't be made is told of the file in it
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
  orCannotRun(Macsecd::useHostKeyFile(path + ".key"));
  auto store = std::make_unique<LmdbStore>(path);
  for (std::string const& notice : store->notices()) Vesk::log(MACSECD_STATE_NOTE, notice);
  return store;
}

}  // namespace

Daemon::Daemon(ProcessWorld& world, DaemonOptions options, Macsecd::StateStore* store,
               DriverFactory const& driverFactory)
    : options_(std::move(options)),
      world_(world),
      scope_(world_),
      tracing_(world_, options_.traceFile),
      sockets_(loop_,
               {.received = [this](auto intfId, auto frame) { host_.receive(intfId, frame); },
                .failed = [](auto intfId,
                             auto const& why) { Vesk::log(MACSECD_NO_SOCKET, intfId, why); },
                .expected = [this](auto intfId) { host_.expect(intfId); }}),
      host_(world_, "macsecd", sockets_, hostOptionsOf(options_, store)),
      trial_(host_, options_.configFile, [this](auto const& config) { configIs(config); }),
      unreadableKeys_([this] { return host_.status(); }),
      driver_(options_.emulateHardware ? nullptr : driverFactory(host_, loop_)),
      eapKeys_(loop_, host_.eapKeyStatus()),
      control_(
          loop_, host_, [this] { return reload(); },
          {.trace = [this](auto const& wish) { return tracing_.wishIs(wish); }, .trial = &trial_}),
      metricsServer_(loop_, [this] { return metrics_->text(); }),
      links_([this](LinkChange const& change) { linkChanged(change); }),
      ports_(links_, *this) {}

Daemon::~Daemon() = default;

DaemonEnd Daemon::run() {
  tellOfState();
  if (!configure()) return DaemonEnd::badConfiguration;
  if (!listen()) return DaemonEnd::cannotRun;
  connect();
  return static_cast<DaemonEnd>(loop_.run());
}

void Daemon::tellOfState() const {
  for (Macsecd::DroppedState const& dropped : host_.droppedState()) {
    Vesk::log(MACSECD_STATE_DROPPED, dropped.path, dropped.reason);
  }
}

// At the start, a file that was tried and not kept isn't what somebody wants: the one on trial when
// a process died, as it may have cut off whoever tried it.
bool Daemon::configure() {
  auto const read = Macsecd::readConfigFile(options_.configFile, Macsecd::Keys::kept);
  bool const isTried = read.good() && host_.keptConfig().isTried(read.sealed);
  if (!isTried) take(read);
  if (isTried) host_.configFaultIs(options_.configFile + " was tried and not kept");
  Macsecd::wipeStack();
  return (read.good() && !isTried) || goOnAsBefore();
}

std::vector<Macsecd::Diagnostic> Daemon::readConfig() {
  auto const read = Macsecd::readConfigFile(options_.configFile, Macsecd::Keys::kept);
  take(read);
  Macsecd::wipeStack();
  return read.diagnostics;
}

void Daemon::take(Macsecd::ConfigResult const& read) {
  for (auto const& diagnostic : read.diagnostics)
    Vesk::log(MACSECD_CONFIG_MISTAKE, diagnostic.text());
  if (host_.reload(read)) {
    configIs(read.config);
    trial_.endReplaced();
    Vesk::log(MACSECD_CONFIG_TAKEN, options_.configFile);
  } else {
    Vesk::log(MACSECD_CONFIG_REFUSED, options_.configFile, read.diagnostics.size());
    host_.configFaultIs(options_.configFile + " has mistakes, and isn't in force");
  }
}

void Daemon::configIs(Macsecd::SwitchConfig const& config) {
  std::set<std::string> names;
  interfaces_ = config.interfaces;
  portNumbers_.clear();
  for (auto const& interface : interfaces_) {
    names.insert(interface.name);
    portNumbers_[interface.name] = interface.portNumber;
  }
  if (driver_) driver_->configIs(config);
  ports_.namesIs(std::move(names));
  if (isReady_) tellWhatIsCutOff();
}

void Daemon::tellWhatIsCutOff() const {
  if (!driver_) return;
  for (std::string const& sentence : cutOffBy(interfaces_)) {
    Vesk::log(MACSECD_INTERFACE_IN_USE, sentence);
  }
}

// A typing error in the file costs no link.
bool Daemon::goOnAsBefore() {
  auto const kept = host_.keptConfig().config();
  if (kept) {
    host_.configIs(*kept);
    configIs(*kept);
    Vesk::log(MACSECD_CONFIG_KEPT, host_.configFault());
  }
  Macsecd::wipeStack();
  return kept.has_value();
}

bool Daemon::listen() {
  Macsecd::Result<> listens;
  if (!options_.eapKeySocket.empty()) listens = eapKeys_.listenAt(options_.eapKeySocket);
  if (listens && !options_.controlSocket.empty()) {
    listens = control_.listenAt(options_.controlSocket);
  }
  if (listens && !options_.metrics.empty()) {
    metrics_.emplace(host_, loopDelay_, control_.counts(), eapKeys_.socketCounts());
    listens = metricsServer_.listenAt(options_.metrics);
  }
  if (!listens) Vesk::log(MACSECD_CANNOT_RUN, listens.fault().text());
  return static_cast<bool>(listens);
}

void Daemon::connect() {
  std::signal(SIGPIPE, SIG_IGN);
  loop_.signalIs(SIGHUP, [this] { reload(); });
  loop_.signalIs(SIGTERM, [this] { stop(); });
  loop_.signalIs(SIGINT, [this] { stop(); });
  loop_.signalIs(SIGUSR1, [this] { leave(); });
  linkWatch_.emplace(links_, [this] { start(); });
  orCannotRun(loop_.watch(linkWatch_->fd(), [this] { hearLinks(); }));
  loop_.timerIs([this] { handleDue(); });
  loop_.beforeWaitIs([this] { endTurn(); });
}

// All that a turn has changed is one transaction of the store, and no key outlives it on the stack.
void Daemon::endTurn() {
  commit();
  Macsecd::wipeStack();
  loop_.timeIs(nextTime());
  world_.turnEnds();
}

void Daemon::commit() {
  host_.commit();
  std::string const error = host_.storeError();
  std::string const former = std::exchange(storeError_, error);
  if (error == former) return;
  if (error.empty()) {
    Vesk::log(MACSECD_STATE_KEPT);
  } else {
    Vesk::log(MACSECD_STATE_NOT_KEPT, error);
  }
}

double Daemon::nextTime() const {
  double const driver = driver_ ? driver_->nextTime() : Zorn::never;
  return std::min(
      {host_.timerWheel()->nextTime(), driver, linkWatch_->nextTime(), trial_.nextTime()});
}

// Many interfaces come at once, as at the start.
void Daemon::hearLinks() {
  if (!driver_) return linkWatch_->run();
  driver_->inOneTurn([this] { linkWatch_->run(); });
}

void Daemon::handleDue() {
  loopDelay_.ran(nextTime(), Vesk::now());
  host_.timerWheel()->runDue();
  double const now = Vesk::now();
  if (driver_ && driver_->nextTime() <= now) driver_->run();
  if (linkWatch_->nextTime() <= now) hearLinks();
  if (trial_.nextTime() <= now) trial_.run();
}

// When the interfaces are known: a port that a former process left goes on, and finds its link as
// it is.
void Daemon::start() {
  if (std::exchange(isReady_, true)) return;
  if (driver_) driver_->interfacesAreKnown();
  tellWhatIsCutOff();
  host_.start();
  // Who starts after this finds every device.
  if (driver_ && driver_->nextTime() <= Vesk::now()) driver_->run();
  ServiceManager::ready();
}

std::vector<Macsecd::Diagnostic> Daemon::reload() {
  ServiceManager::reloading();
  auto diagnostics = readConfig();
  ServiceManager::ready();
  return diagnostics;
}

// The driver takes away what the emptied tree asks for no more.
void Daemon::stop() {
  ServiceManager::stopping();
  host_.stop();
  if (driver_) driver_->removeAll();
  Vesk::log(MACSECD_STOPPED);
  loop_.exit(static_cast<int>(DaemonEnd::stopped));
}

// The driver looks away before the state machines end.
void Daemon::leave() {
  ServiceManager::stopping();
  commit();
  if (driver_) driver_->leave();
  host_.die();
  Vesk::log(MACSECD_LEFT);
  loop_.exit(static_cast<int>(DaemonEnd::stopped));
}

uint16_t Daemon::portNumberOf(Lumo::IntfId intfId) const {
  auto const found = portNumbers_.find(std::string(intfId.stringValue().view()));
  return found == portNumbers_.end() ? Macsecd::InterfaceConfig().portNumber : found->second;
}

void Daemon::linkChanged(LinkChange const& change) {
  ports_.changed(change);
  if (driver_) driver_->linkChanged(change);
}

// Whoever has a part in a port is there before the tree has it.
void Daemon::portIs(Lumo::IntfId intfId, int index, Lumo::EthAddr const& addr) {
  sockets_.interfaceIs(intfId, index);
  if (driver_) driver_->interfaceIs(intfId, index, addr);
  host_.interfaceIs(intfId, addr, portNumberOf(intfId));
}

void Daemon::portLinkIs(Lumo::IntfId intfId, bool up) { host_.linkIs(intfId, up); }

void Daemon::portSetUpIs(Lumo::IntfId intfId, bool setUp) { host_.interfaceSetUpIs(intfId, setUp); }

void Daemon::portMtuIs(Lumo::IntfId intfId, uint32_t mtu) {
  if (driver_) driver_->interfaceMtuIs(intfId, mtu);
}

void Daemon::portDel(Lumo::IntfId intfId) {
  host_.interfaceDel(intfId);
  if (driver_) driver_->interfaceDel(intfId);
  sockets_.interfaceDel(intfId);
}

DaemonEnd runDaemon(DaemonOptions const& options, Daemon::DriverFactory const& driverFactory) {
  ProcessWorld world{Syslog()};
  Vesk::WorldScope const scope(world);
  try {
    std::optional<NamespaceGuard> guard;
    if (!options.emulateHardware) {
      orCannotRun(checkPrivileges());
      guard.emplace();
    }
    auto const locked = lockMemory();
    if (!locked) Vesk::log(MACSECD_MEMORY_NOT_LOCKED, locked.fault().text());
    if (!cryptographyIsReady(options.configFile)) return DaemonEnd::cannotRun;
    auto const store = storeAt(options.stateFile);
    orCannotRun(dropPrivileges());
    return Daemon(world, options, store.get(), driverFactory).run();
  } catch (std::runtime_error const& error) {
    Vesk::log(MACSECD_CANNOT_RUN, error.what());
    return DaemonEnd::cannotRun;
  }
}

}  // namespace Linux
