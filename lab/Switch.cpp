#include "lab/Switch.h"

#include <algorithm>
#include <limits>

#include "lab/FrameSummary.h"
#include "platform/CknOctets.h"
#include "platform/Hex.h"
#include "platform/WardcodeLib.h"

namespace Lab {

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();

// A process that ends while it starts would do so again at once.
constexpr double kSecondsToNextTry = 1.0;

bool isConfiguration(Vesk::Entity const& entity) {
  return dynamic_cast<Macsec::Config const*>(&entity) ||
         dynamic_cast<Macsec::Profile const*>(&entity) ||
         dynamic_cast<Macsec::IntfConfig const*>(&entity);
}

// All that the switch has, whatever its configuration names now.
std::vector<Macsecd::InterfaceConfig> interfacesOf(SwitchSpec const& spec) {
  auto all = spec.config.interfaces;
  all.insert(all.end(), spec.laterInterfaces.begin(), spec.laterInterfaces.end());
  return all;
}

using SubType = Codec::FrameCounters::SubType;
constexpr size_t kSubTypes = static_cast<size_t>(SubType::unrecognizedSetErr) + 1;

// Frames received on an interface: accepted, and refused by each sub type.
struct RxCounts {
  uint64_t accepted = 0;
  std::array<uint64_t, kSubTypes> refused{};
};

RxCounts rxCounts(Macsecd::Host const& host, Lumo::IntfId intfId) {
  using enum Macsec::MessageCounterDirection;
  using enum Macsec::MessageCounterType;
  RxCounts counts;
  if (!host.codec()) return counts;
  auto const& counters = host.codec()->counters();
  counts.accepted = counters.value(intfId, rx, success, SubType::none);
  for (size_t i = 0; i < kSubTypes; ++i) {
    counts.refused[i] = counters.value(intfId, rx, failure, static_cast<SubType>(i));
  }
  return counts;
}

std::string verdict(RxCounts const& before, RxCounts const& after) {
  if (after.accepted != before.accepted) return "accepted";
  for (size_t i = 0; i < kSubTypes; ++i) {
    if (after.refused[i] != before.refused[i]) return stringValue(static_cast<SubType>(i));
  }
  return "ignored";
}

}  // namespace

template <class Work>
void Switch::inWorld(Work work) {
  Vesk::WorldScope const scope(world_);
  try {
    work();
  } catch (SwitchExit const& exit) {
    processEnded(exit.status);
  }
}

Switch::Switch(SwitchSpec const& spec, Codec::IcvIndicator icvIndicator, Clock const& clock,
               uint32_t seed, uint32_t index, Outlets outlets)
    : spec_(spec),
      icvIndicator_(icvIndicator),
      config_(spec.config),
      outlets_(std::move(outlets)),
      world_(clock, seed, index, spec.firstDelays),
      startsAgain_(kNever) {
  world_.hasFipsProvider = spec.hasFipsProvider;
  withIcvIndicator(config_);
  for (auto const& interface : interfacesOf(spec)) interfaces_.emplace_back(interface.name.c_str());
  inWorld([&] {
    host_ = std::make_unique<Macsecd::Host>(spec_.name, *this,
                                            Macsecd::HostOptions{.emulateHardware = false});
    hardware_ = std::make_unique<Hardware>(host_->slices(), interfaces_);
  });
  watch_ = std::make_unique<TreeWatch>(*host_, hardware_->slice(), interfaces_,
                                       [this](TreeWatch::What what) { tell(std::move(what)); });
  connectWorld();
}

Switch::~Switch() {
  // The simulation is over: what is taken down now is no part of it.
  world_.sinks = {};
  Vesk::WorldScope const scope(world_);
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
  if (isConfiguration(write.entity)) ++record_.configurationWrites;
  watch_->written(write);
}

// Interfaces whose configuration asks for no other form go by that of the scenario.
void Switch::withIcvIndicator(Macsecd::SwitchConfig& config) const {
  for (auto& interface : config.interfaces) {
    auto& indicator = interface.dialect.icvIndicator;
    if (indicator == Codec::Dialect().icvIndicator) indicator = icvIndicator_;
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

void Switch::restart() {
  if (!started_) return;
  inWorld([&] {
    processDied();
    startProcess();
  });
}

// A process reads the whole configuration, however far the one before it has come.
void Switch::startProcess() {
  startsAgain_ = kNever;
  starting_ = true;
  host_->configIs(config_);
  host_->start();
  starting_ = false;
}

void Switch::processDied() {
  host_->die();
  hardware_->follow(host_->status());
}

void Switch::processEnded(int status) {
  bool const wasStarting = std::exchange(starting_, false);
  processDied();
  world_.processBegins();
  record_.exits.push_back(status);
  startsAgain_ = wasStarting ? world_.now() + kSecondsToNextTry : world_.now();
  tell(ProcessEnded{status, startsAgain_});
  if (!wasStarting) inWorld([&] { startProcess(); });
}

void Switch::linkIs(Lumo::IntfId intfId, bool up) {
  if (up) {
    downLinks_.erase(intfId);
  } else {
    downLinks_.insert(intfId);
  }
  if (started_) inWorld([&] { host_->linkIs(intfId, up); });
}

void Switch::configure(std::function<void(Macsecd::SwitchConfig&)> const& change) {
  change(config_);
  if (started_) inWorld([&] { host_->configIs(config_); });
}

void Switch::reload(Reload reload) {
  withIcvIndicator(reload.read.config);
  record_.reloadMistakes = reload.read.mistakes;
  std::vector<std::string> mistakes;
  for (auto const& mistake : reload.read.mistakes) mistakes.push_back(mistake.text());
  tell(Reloaded{reload.file, reload.read.good(), mistakes});
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

void Switch::hardware(std::function<void(Hardware&)> const& change) {
  inWorld([&] { change(*hardware_); });
}

double Switch::nextTime() const {
  return std::min({startsAgain_, host_->timerWheel()->nextTime(), hardware_->nextTime()});
}

bool Switch::runOne() {
  if (nextTime() > world_.now()) return false;
  bool ran = true;
  inWorld([&] {
    if (startsAgain_ <= world_.now()) return startProcess();
    ran = host_->timerWheel()->runOne() || hardware_->answerOne();
  });
  return ran;
}

void Switch::receive(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  FramePassed frameReceived = passed(intfId, frame);
  frameReceived.received = true;
  heldBack_.emplace();
  inWorld([&] {
    RxCounts const before = rxCounts(*host_, intfId);
    host_->receive(intfId, frame);
    frameReceived.verdict = verdict(before, rxCounts(*host_, intfId));
  });
  auto const following = std::exchange(heldBack_, std::nullopt);
  tell(std::move(frameReceived));
  for (auto const& what : *following) tell(what);
}

void Switch::send(Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  tell(passed(intfId, frame));
  outlets_.sent(*this, intfId, frame);
}

void Switch::tell(TreeWatch::What what) {
  if (heldBack_) {
    heldBack_->push_back(std::move(what));
  } else {
    outlets_.happened(*this, std::move(what));
  }
}

// A key is called as its actor here spells it, or by its octets if there is none.
FramePassed Switch::passed(Lumo::IntfId intfId, std::span<uint8_t const> frame) const {
  FrameSummary summary = summaryOf(frame);
  auto const portStatus = host_->status()->portStatus(intfId);
  if (portStatus && summary.ckn) {
    for (Macsec::MkaActorStatus& actor : portStatus->actorStatus()) {
      Macsec::CknOctets const ckn(actor.ckn().view());
      if (Macsec::hexString(ckn.octets()) != summary.ckn->c_str()) continue;
      summary.ckn = actor.ckn().charPtr();
      break;
    }
  }
  return {intfId.stringValue().charPtr(), false,        summary.ckn,  summary.memberId,
          summary.messageNumber,          frame.size(), summary.sets, std::nullopt};
}

}  // namespace Lab
