#include "lab/world/Switch.h"

#include <algorithm>
#include <typeinfo>

#include "host/journal/PortJournal.h"
#include "platform/WardcodeLib.h"

namespace Lab {

namespace {

// A process that ends while it starts would do so again at once.
constexpr double kSecondsToNextTry = 1.0;

template <class... E>
bool isAnyOf(Vesk::Entity const& entity) {
  static_assert((std::is_final_v<E> && ...));
  return ((typeid(entity) == typeid(E)) || ...);
}

bool isConfiguration(Vesk::Entity const& entity) {
  return isAnyOf<Macsec::Config, Macsec::Profile, Macsec::IntfConfig>(entity);
}

// All that the switch has, whatever its configuration names now.
std::vector<Macsecd::InterfaceConfig> interfacesOf(SwitchSpec const& spec) {
  auto all = spec.config.interfaces;
  all.insert(all.end(), spec.laterInterfaces.begin(), spec.laterInterfaces.end());
  return all;
}

}  // namespace

Switch::Switch(SwitchSpec const& spec, Scenario const& scenario, Clock const& clock, uint32_t seed,
               uint32_t index, Macsecd::NonceWatch& nonces, Outlets outlets)
    : spec_(spec),
      scenario_(scenario),
      config_(spec.config),
      outlets_(std::move(outlets)),
      world_(clock, seed, index, spec.firstDelays),
      startsAgain_(kNever) {
  world_.hasFipsProvider = spec.hasFipsProvider;
  world_.attributeLogIs(true);
  withIcvIndicator(config_);
  for (auto const& interface : interfacesOf(spec)) interfaces_.emplace_back(interface.name.c_str());
  inWorld([&] {
    std::array<uint8_t, WardcodeLib::kHostKeySize> hostKey;
    Random(seed, Stream::hostKey, index).fill(hostKey);
    WardcodeLib::hostKeyIs(hostKey);
    host_ = std::make_unique<Macsecd::Host>(
        world_, spec_.name, *this,
        Macsecd::HostOptions{.emulateHardware = false,
                             .store = &store_,
                             .companion = Macsecd::PortJournal::of,
                             .treatedTroubles = scenario.treatedTroubles,
                             .replayGuard = scenario.replayGuard});
    hardware_ = std::make_unique<Hardware>(*host_, interfaces_, spec_.name, nonces);
    unreadableKeys_.emplace([this] { return status(); });
  });
  watch_ = std::make_unique<TreeWatch>(*host_, hardware_->slice(), interfaces_,
                                       [this](TreeWatch::What what) { tell(std::move(what)); });
  connectWorld();
}

Switch::~Switch() {
  // The simulation is over: what is taken down now is no part of it.
  world_.sinks = {};
  store_.deathIs({}, {});
  Vesk::WorldScope const scope(world_);
  unreadableKeys_.reset();
  hardware_ = nullptr;
  host_ = nullptr;
}

void Switch::connectWorld() {
  world_.sinks.syslog = [this](Vesk::LogMessage const& message) {
    tell(SyslogLine{message.handle.name(), static_cast<uint8_t>(message.handle.severity()),
                    message.arguments, message.text});
  };
  world_.sinks.attribute = [this](Vesk::AttributeWrite const& write) { written(write); };
}

void Switch::written(Vesk::AttributeWrite const& write) {
  ++record_.writes;
  if (!isAnyOf<Macsec::MkaPamCounter>(write.entity)) ++stateWrites_;
  if (isConfiguration(write.entity)) ++record_.configurationWrites;
  watch_->written(write);
}

// Interfaces whose configuration asks for no other form go by that of the scenario.
void Switch::withIcvIndicator(Macsecd::SwitchConfig& config) const {
  for (auto& interface : config.interfaces) {
    auto& indicator = interface.dialect.icvIndicator;
    if (indicator == Codec::Dialect().icvIndicator) indicator = scenario_.icvIndicator;
  }
}

void Switch::start() {
  started_ = true;
  inWorld([&] {
    for (auto const& interface : interfacesOf(spec_)) {
      host_->interfaceIs(Lumo::IntfId(interface.name.c_str()), spec_.mac, interface.portNumber);
    }
    hardware_->follow(host_->status());
    startProcess();
  });
  inWorld([&] {
    for (Lumo::IntfId const intfId : interfaces_) host_->linkIs(intfId, isUp(intfId));
  });
}

void Switch::restart(double deadFor, bool keepsState) {
  if (!started_) return;
  inWorld([&] {
    if (!keepsState) store_.clear();
    processDied();
    world_.processBegins();
    startsAgain_ = world_.simulationNow() + deadFor;
    if (deadFor == 0) startProcess();
  });
}

void Switch::killedAt(MemoryStore::Death death, std::function<void()> killed, double deadFor) {
  killed_ = std::move(killed);
  deadFor_ = deadFor;
  store_.deathIs(death, [this] { world_.exit(kKilled); });
}

// A process reads the whole configuration, however far the one before it has come; and its driver
// installs what is missing, as on an interface that was made anew meanwhile.
void Switch::startProcess() {
  hardware_->follow(host_->status());
  startsAgain_ = kNever;
  starting_ = true;
  host_->configIs(config_);
  host_->start();
  starting_ = false;
}

void Switch::standStill(double seconds) {
  if (started_) stillUntil_ = world_.simulationNow() + seconds;
}

// Frames that waited for it go with it.
void Switch::processDied() {
  waiting_.clear();
  stillUntil_ = -kNever;
  hardware_->followNothing();
  host_->die();
  hardware_->follow(host_->status());
}

void Switch::processEnded(int status) {
  bool const wasStarting = std::exchange(starting_, false);
  processDied();
  bool const isKill = status == kKilled;
  if (isKill && killed_) killed_();
  world_.processBegins();
  record_.exits.push_back(status);
  double const wait = std::max(wasStarting ? kSecondsToNextTry : 0, isKill ? deadFor_ : 0);
  startsAgain_ = world_.simulationNow() + wait;
  tell(ProcessEnded{status, startsAgain_});
  if (wait == 0) inWorld([&] { startProcess(); });
}

void Switch::linkIs(Lumo::IntfId intfId, bool up) {
  if (up) {
    downLinks_.erase(intfId);
  } else {
    downLinks_.insert(intfId);
  }
  if (started_) inWorld([&] { host_->linkIs(intfId, up); });
}

void Switch::deviceIs(Lumo::IntfId intfId, bool up) {
  inWorld([&] {
    hardware_->deviceIs(intfId, up);
    watch_->lookAtPorts();
  });
}

void Switch::interfaceDel(Lumo::IntfId intfId) {
  deleted_.insert(intfId);
  if (!started_) return;
  inWorld([&] {
    host_->interfaceDel(intfId);
    hardware_->interfaceDel(intfId);
  });
}

void Switch::interfaceIs(Lumo::IntfId intfId, Lumo::EthAddr const& mac) {
  deleted_.erase(intfId);
  if (!started_) return;
  inWorld([&] {
    hardware_->interfaceIs(intfId);
    host_->interfaceIs(intfId, mac, portNumberOf(intfId));
    host_->linkIs(intfId, isUp(intfId));
  });
}

uint16_t Switch::portNumberOf(Lumo::IntfId intfId) const {
  for (auto const& interface : config_.interfaces) {
    if (intfId.stringValue() == Vesk::String8(interface.name)) return interface.portNumber;
  }
  return Macsecd::InterfaceConfig().portNumber;
}

void Switch::configure(std::function<void(Macsecd::SwitchConfig&)> const& change) {
  change(config_);
  if (started_) inWorld([&] { host_->configIs(config_); });
}

void Switch::reload(Reload reload) {
  withIcvIndicator(reload.read.config);
  record_.reloadDiagnostics = reload.read.diagnostics;
  tell(Reloaded{reload.file, reload.read.good(), reload.read.diagnostics});
  if (reload.read.good()) config_ = reload.read.config;
  if (started_) inWorld([&] { host_->reload(reload.read); });
}

void Switch::dot1xKeyIs(Lumo::IntfId intfId, uint8_t type, std::optional<Dot1xKey> const& key) {
  inWorld([&] {
    if (!key) return host_->eapKeyStatus()->keyDel(intfId);
    auto const encoded = WardcodeLib::doEncodeKey(key->masterSessionKey);
    host_->eapKeyStatus()->keyIs(
        intfId, Dot1x::EapKey(type, encoded, key->sessionId, key->firstAddr, key->secondAddr));
  });
}

void Switch::clearCounters() {
  inWorld([&] { host_->config()->clearMkaCountersInc(1); });
}

void Switch::keyIsSpent(Lumo::IntfId intfId) {
  auto const cp = host_->status()->cpStatus(intfId);
  auto const key = cp ? Macsecd::SakId::of(cp->txSak()) : std::nullopt;
  if (key) inWorld([&] { host_->keyIsSpent(intfId, *key); });
}

void Switch::hardware(std::function<void(Hardware&)> const& change) {
  inWorld([&] { change(*hardware_); });
}

bool Switch::passes(Lumo::IntfId intfId) const { return isUp(intfId) && host_->isOpen(intfId); }

double Switch::nextTime() const {
  if (isStandingStill()) return stillUntil_;
  if (!waiting_.empty()) return world_.simulationNow();
  double const due = std::min(host_->timerWheel()->nextTime(), hardware_->nextTime());
  return std::min(startsAgain_, world_.simulationTimeOf(due));
}

bool Switch::runOne() {
  if (nextTime() > world_.simulationNow()) return false;
  if (takeWaiting()) return true;
  bool ran = true;
  inWorld([&] {
    if (startsAgain_ <= world_.simulationNow()) return startProcess();
    bool const isTimer = host_->timerWheel()->runOne();
    if (isTimer) timerTimes_.insert(world_.simulationNow());
    ran = isTimer || hardware_->answerOne();
  });
  return ran;
}

void Switch::tell(TreeWatch::What what) {
  if (heldBack_) {
    heldBack_->push_back(std::move(what));
  } else {
    outlets_.happened(*this, std::move(what));
  }
}

}  // namespace Lab
