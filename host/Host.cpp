#include "host/Host.h"

#include "host/config/ConfigTree.h"
#include "host/state/HeardPeers.h"
#include "host/state/KeyNumbers.h"
#include "host/state/SilentWorld.h"
#include "host/state/StaleStatus.h"
#include "host/watch/StageTrace.h"
#include "model/Factories.h"
#include "runtime/EntityCopy.h"

namespace Macsecd {

namespace {

using Macsec::MacSecStatus;

Vesk::Name const kEmulatedSlice = "emulated";

// What a restarted process finds of the one that ran before it.
Vesk::Ptr<Macsec::Status> copyOf(Macsec::Status const& status) {
  auto copy = Macsec::statusFactory(status.name());
  Vesk::copyEntity(status, *copy);
  return copy;
}

}  // namespace

struct Host::ConfigReactor final : Vesk::Reactor<Macsec::Config const, Host, ConfigReactor> {
  using Reactor::Reactor;
  void onShutdown() override { owner().handleShutdown(); }
};

// The top state machines and the codec, in the order in which they are built; they end in the
// opposite order. The directory of the hardware is filled before anybody asks it, the codec takes
// up the keys that it finds in the tree after the FIPS mode of the process has been set, and nobody
// sends before there is a codec.
struct Host::Machines {
  explicit Machines(Host& host)
      : hwStatusSm(Macsec::hwStatusSmFactory(host.hwStatus_, host.slices_)),
        hwEmulator(host.options_.emulateHardware
                       ? Macsec::hwEmulatorFactory(host.status_, host.hwStatus_)
                       : nullptr),
        configSm(Macsec::configSmFactory(host.config_, host.status_, host.eapKeyStatus_,
                                         host.ethIntfStatusDir_, host.counters_)),
        codec(host.pamManager_, host.status_, host.ethIntfStatusDir_, host.taps_, host.counters_),
        mkaRootSm(Macsec::mkaRootSmFactory(host.status_, host.ethIntfStatusDir_, host.pamManager_,
                                           host.hwStatus_, host.timerWheel_)),
        forwardingModelSm(
            Macsec::macsecForwardingModelSmFactory(host.status_, host.forwardingModelInputDir_)),
        portChanges(Vesk::make<PortChanges>(host.status_)),
        peerLoss(Vesk::make<PeerLoss>(*portChanges, host.peerLossInputDir_)),
        transmitHold(Vesk::make<TransmitHold>(
            *portChanges, host.keyHistory_, host.transmitHoldInputDir_, host.timerWheel_,
            [&host](Lumo::IntfId intfId) { return host.keyServerSm(intfId); })),
        keyAges(host.status_),
        stageTrace(*portChanges,
                   [&host](Lumo::IntfId intfId) { return host.keyServerSm(intfId); }) {
    codec.replayGuardIs(host.options_.replayGuard);
    peerLoss->closingIs(host.closing_);
    if (host.options_.portDoctor) {
      doctor = Vesk::make<PortDoctor>(
          host.config_, *portChanges, host.timerWheel_, *transmitHold,
          [&host](Lumo::IntfId intfId) { return host.isOpen(intfId); },
          host.options_.treatedTroubles);
    }
    if (host.options_.companion) companion = host.options_.companion(host);
  }

  Vesk::Ptr<Macsec::HwStatusSm> hwStatusSm;
  Vesk::Ptr<Macsec::HwEmulator> hwEmulator;
  Vesk::Ptr<Macsec::ConfigSm> configSm;
  Codec::FrameCodec codec;
  Vesk::Ptr<Macsec::MkaRootSm> mkaRootSm;
  Vesk::Ptr<Macsec::MacsecForwardingModelSm> forwardingModelSm;
  Vesk::Ptr<PortChanges> portChanges;
  Vesk::Ptr<PeerLoss> peerLoss;
  Vesk::Ptr<TransmitHold> transmitHold;
  KeyAges keyAges;
  StageTrace stageTrace;
  Vesk::Ptr<PortDoctor> doctor;
  std::unique_ptr<HostCompanion> companion;
};

Host::Host(Vesk::World& world, Vesk::Name const& name, Codec::FrameSink& sink, HostOptions options)
    : world_(world),
      scope_(std::in_place, world),
      taps_(sink),
      options_(options),
      config_(Macsec::configFactory(name + "/config")),
      status_(Macsec::statusFactory(name + "/status")),
      keyHistory_(options_.store),
      keptConfig_(options_.store),
      pamManager_(Macsec::mkaPamManagerFactory(
          Interface::EthDevPamCollection::EthDevPamCollectionIs(name + "/pam"))),
      ethIntfStatusDir_(Interface::EthIntfStatusDir::EthIntfStatusDirIs(name + "/interfaces")),
      eapKeyStatus_(Dot1x::EapKeyStatus::EapKeyStatusIs(name + "/eapKeys")),
      slices_(Vesk::makeActive<Vesk::Dir>(name + "/slices")),
      hwStatus_(Macsec::macSecIntfStatusPtrDirFactory(name + "/hardware")),
      forwardingModelInputDir_(
          Interface::IntfForwardingModelInputDir::IntfForwardingModelInputDirIs(name +
                                                                                "/forwarding")),
      peerLossInputDir_(Interface::IntfForwardingModelInputDir::IntfForwardingModelInputDirIs(
          name + "/peerLoss")),
      transmitHoldInputDir_(Interface::IntfForwardingModelInputDir::IntfForwardingModelInputDirIs(
          name + "/transmitHold")),
      timerWheel_(Vesk::make<Zorn::TimerWheel>()),
      counters_(options_.counters ? options_.counters
                                  : Macsec::Brine::MessageCounters::inProcess(name + "/counters")),
      configReactor_(Vesk::make<ConfigReactor>(*this, config_)) {
  if (options_.store) rebuildStatus();
  if (options_.emulateHardware) {
    slices_->entityPtrIs(Macsec::macSecStatusFactory(kEmulatedSlice));
  }
  scope_.reset();
}

Host::~Host() {
  scope_.emplace(world_);
  stop();
  Vesk::retire(configReactor_);
}

// Address and port number are part of what an interface is: others make it anew.
void Host::interfaceIs(Lumo::IntfId intfId, Lumo::EthAddr const& addr, uint16_t portNumber) {
  Vesk::WorldScope const scope(world_);
  auto const former = ethIntfStatusDir_->intfStatus(intfId);
  if (former && (former->ethAddr() != addr || former->portNumber() != portNumber)) {
    ethIntfStatusDir_->intfStatusDel(intfId);
  }
  ethIntfStatusDir_->intfStatusIs(intfId, addr, portNumber);
  if (!options_.emulateHardware) return;
  Vesk::ptrCast<MacSecStatus>(slices_->entry(kEmulatedSlice))->statusIs(intfId);
}

void Host::interfaceDel(Lumo::IntfId intfId) {
  Vesk::WorldScope const scope(world_);
  ethIntfStatusDir_->intfStatusDel(intfId);
  frameEvidence_.memberDel(intfId);
  hardwareFaults_.erase(intfId);
  setDown_.erase(intfId);
  if (!options_.emulateHardware) return;
  Vesk::ptrCast<MacSecStatus>(slices_->entry(kEmulatedSlice))->statusDel(intfId);
}

void Host::linkIs(Lumo::IntfId intfId, bool up) {
  Vesk::WorldScope const scope(world_);
  auto const intfStatus = ethIntfStatusDir_->intfStatus(intfId);
  if (intfStatus) intfStatus->linkStatusIs(up ? Interface::linkUp : Interface::linkDown);
}

void Host::interfaceSetUpIs(Lumo::IntfId intfId, bool setUp) {
  if (setUp) {
    setDown_.erase(intfId);
  } else {
    setDown_.insert(intfId);
  }
}

void Host::configIs(SwitchConfig const& config) {
  Vesk::WorldScope const scope(world_);
  takeDialects(config);
  takeClosing(config);
  for (InterfaceConfig const& interface : config.interfaces) portNumberIs(interface);
  writeConfig(config, *config_);
  dropConfiguredKeys(*config_, *status_, running());
}

bool Host::reload(ConfigResult const& read) {
  Vesk::WorldScope const scope(world_);
  if (!read.good()) return false;
  configIs(read.config);
  if (!read.sealed.empty()) keptConfig_.textIs(read.sealed);
  configFault_.clear();
  return true;
}

std::vector<Diagnostic> Host::reload(std::string const& path) {
  Vesk::WorldScope const scope(world_);
  ConfigResult const read = readConfigFile(path);
  reload(read);
  return read.diagnostics;
}

// An interface that the configuration doesn't name any more goes back to the default.
void Host::takeDialects(SwitchConfig const& config) {
  for (auto& [intfId, dialect] : dialects_) dialect = Codec::Dialect();
  for (InterfaceConfig const& interface : config.interfaces) {
    dialects_[Lumo::IntfId(Vesk::String8(interface.name))] = interface.dialect;
  }
  applyDialects();
}

void Host::applyDialects() {
  if (!running()) return;
  for (auto const& [intfId, dialect] : dialects_) machines_->codec.dialectIs(intfId, dialect);
}

void Host::takeClosing(SwitchConfig const& config) {
  closing_.clear();
  for (InterfaceConfig const& interface : config.interfaces) {
    if (interface.onPeerLoss != OnPeerLoss::close) continue;
    closing_.insert(Lumo::IntfId(Vesk::String8(interface.name)));
  }
  if (!running()) return;
  PeerLoss& peerLoss = *machines_->peerLoss;
  Vesk::runHandler(&peerLoss, [&] { peerLoss.closingIs(closing_); });
}

// The port number is part of what an interface is: another one makes it anew.
void Host::portNumberIs(InterfaceConfig const& config) {
  Lumo::IntfId const intfId{Vesk::String8(config.name)};
  auto const former = ethIntfStatusDir_->intfStatus(intfId);
  if (!former || former->portNumber() == config.portNumber) return;
  ethIntfStatusDir_->intfStatusDel(intfId);
  ethIntfStatusDir_->intfStatusIs(intfId, former->ethAddr(), config.portNumber)
      ->linkStatusIs(former->linkStatus());
}

void Host::handleShutdown() {
  status_->macsecEnabledIs(!config_->shutdown());
  if (config_->shutdown()) dropPorts(*status_);
}

void Host::start() {
  Vesk::WorldScope const scope(world_);
  if (running()) return;
  status_->fipsStatusIs(Macsec::FipsStatus());
  dropStaleInterfaces(*config_, *status_);
  dropStalePorts(*status_);
  dropMovedPorts(*ethIntfStatusDir_, *status_);
  dropConfiguredKeys(*config_, *status_, false);
  handleShutdown();
  takeUpLivePeers(*status_);
  numberKeysOn(keyHistory_, *status_);
  machines_ = std::make_unique<Machines>(*this);
  applyDialects();
}

// The tree that the store holds, and somebody who tells the store how it goes on.
void Host::rebuildStatus() {
  StateValues values = options_.store->readAll();
  StateValues const keys = extracted(values, KeyHistory::kPathBegin);
  keptConfig_.takeUp(extracted(values, KeptConfig::kPathBegin));
  RebuiltState rebuilt = rebuiltStatus(status_->name(), values);
  status_ = rebuilt.status;
  droppedState_ = std::move(rebuilt.dropped);
  for (std::string const& path : keyHistory_.takeUp(keys)) {
    droppedState_.push_back({path, "it is damaged"});
  }
  keeper_ = std::make_unique<StateKeeper>(status_, *options_.store, std::move(rebuilt.repair));
}

bool Host::commit() {
  Vesk::WorldScope const scope(world_);
  bool const kept = keyHistory_.commit();
  bool const keptConfig = keptConfig_.commit();
  return (keeper_ && keeper_->commit()) || kept || keptConfig;
}

void Host::stop() {
  Vesk::WorldScope const scope(world_);
  machines_.reset();
  commit();
}

void Host::die() {
  Vesk::WorldScope const scope(world_);
  keeper_ = nullptr;
  if (machines_) machines_->companion.reset();
  auto left = options_.store ? status_ : copyOf(*status_);
  if (running()) {
    SilentWorld dead(world_);
    Vesk::WorldScope const inDead(dead);
    machines_.reset();
    commit();
  }
  status_ = left;
  if (options_.store) rebuildStatus();
  Vesk::Ptr<Interface::EthDevPamCollection const> const pam = pamManager_->ethDevPamCollection();
  pamManager_ = Macsec::mkaPamManagerFactory(pam);
  hwStatus_ = Macsec::macSecIntfStatusPtrDirFactory(hwStatus_->name());
  timerWheel_ = Vesk::make<Zorn::TimerWheel>();
  frameEvidence_.clear();
}

void Host::restart() {
  Vesk::WorldScope const scope(world_);
  die();
  start();
}

// Who hears of the frame, or of what follows from it, may take the interface away or end what the
// switch runs.
void Host::receive(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  Vesk::WorldScope const scope(world_);
  if (!running()) return;
  frameEvidence_.memberIs(intfId);
  taps_.passed(intfId, FrameWay::in, frame);
  if (!running()) return;
  auto const message = pamManager_->rxMessageInfo();
  Codec::Refusal const refusal = machines_->codec.receive(intfId, frame);
  FrameEvidence* const evidence = frameEvidence_.find(intfId);
  if (!evidence) return;
  if (refusal) return evidence->refused(refusal, frame);
  evidence->accepted(*message, frame);
}

void Host::expect(Lumo::IntfId intfId) const {
  if (running()) machines_->codec.expect(intfId);
}

std::optional<KeyAge> Host::keyAge(Lumo::IntfId intfId) const {
  Vesk::WorldScope const scope(world_);
  return running() ? machines_->keyAges.age(intfId) : std::nullopt;
}

void Host::keyIsSpent(Lumo::IntfId intfId, SakId const& sak) {
  Vesk::WorldScope const scope(world_);
  keyHistory_.spend(intfId, sak);
  if (!running()) return;
  TransmitHold& transmitHold = *machines_->transmitHold;
  Vesk::runHandler(&transmitHold, [&] { transmitHold.look(intfId); });
}

TransmitHold::Reason Host::transmitHold(Lumo::IntfId intfId) const {
  return running() ? machines_->transmitHold->reason(intfId) : TransmitHold::Reason::none;
}

Passage Host::passage(Lumo::IntfId intfId) const {
  Vesk::WorldScope const scope(world_);
  return passageOf(
      {*status_, *forwardingModelInputDir_, *peerLossInputDir_, *transmitHoldInputDir_, *slices_},
      hardwareReport(intfId), intfId);
}

PortDoctor::Counts const* Host::doctorCounts() const {
  return running() && machines_->doctor ? &machines_->doctor->counts() : nullptr;
}

FrameEvidence const& Host::frameEvidence(Lumo::IntfId intfId) const {
  FrameEvidence const* const evidence = frameEvidence_.find(intfId);
  static FrameEvidence const none;
  return evidence ? *evidence : none;
}

void Host::hardwareFaultIs(Lumo::IntfId intfId, std::string const& fault,
                           std::string const& remedy) {
  Vesk::WorldScope const scope(world_);
  bool const isNews = hardwareFault(intfId) != fault;
  if (fault.empty()) {
    hardwareFaults_.erase(intfId);
  } else {
    hardwareFaults_[intfId] = {fault, remedy};
  }
  if (isNews) taps_.hardwareFaultChanged(intfId, fault);
}

std::string Host::hardwareFault(Lumo::IntfId intfId) const {
  auto const found = hardwareFaults_.find(intfId);
  return found == hardwareFaults_.end() ? "" : found->second.what;
}

std::string Host::hardwareRemedy(Lumo::IntfId intfId) const {
  auto const found = hardwareFaults_.find(intfId);
  return found == hardwareFaults_.end() ? "" : found->second.remedy;
}

HardwareReport Host::hardwareReport(Lumo::IntfId intfId) const {
  return hardwareReports_ ? hardwareReports_(intfId) : HardwareReport();
}

void Host::hardwareReportChanged(Lumo::IntfId intfId) {
  Vesk::WorldScope const scope(world_);
  taps_.hardwareReportChanged(intfId);
}

Codec::FrameCodec* Host::codec() const { return machines_ ? &machines_->codec : nullptr; }

Vesk::Ptr<Macsec::MkaKeyServerSm> Host::keyServerSm(Lumo::IntfId intfId) const {
  auto const mkaSm = machines_ ? machines_->mkaRootSm->mkaSm() : nullptr;
  auto const portSm = mkaSm ? mkaSm->mkaPortSm(intfId) : nullptr;
  if (!portSm) return nullptr;
  for (Macsec::MkaActorSm const& actorSm : portSm->mkaActorSm()) {
    if (actorSm.keyServerSm()) return actorSm.keyServerSm();
  }
  return nullptr;
}

}  // namespace Macsecd
