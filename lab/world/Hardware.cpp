#include "lab/world/Hardware.h"

#include <algorithm>

#include "lab/world/Clock.h"
#include "model/Factories.h"
#include "runtime/NestedReactors.h"
#include "runtime/World.h"

namespace Lab {

using Macsec::AssociationNumber;
using Macsec::MacSecIntfStatus;
using Macsec::Sak;

namespace {

// How many frames each transmit SA is taken to have sent, whatever becomes of it: less than what is
// reserved at a time, and so much that no second one begins among them by chance.
constexpr uint64_t kFramesSent = Macsecd::KeyHistory::kReserved / 2;

}  // namespace

// What the emulator installs. Removals are no answers: the next key in the place replaces it.
struct Hardware::CopyReactor final : Vesk::Reactor<MacSecIntfStatus const, Hardware, CopyReactor> {
  using Reactor::Reactor;
  void onTxSaStatus() override {
    if (notifier()->txSaStatus()) owner().copied(notifier()->intfId(), std::nullopt);
  }
  void onRxSaStatus(AssociationNumber const& an) override {
    if (notifier()->rxSaStatus(an)) owner().copied(notifier()->intfId(), an);
  }
};

// The first reactor of each entry of the slice, so that the packet number stands when others look.
struct Hardware::SliceReactor final
    : Vesk::Reactor<MacSecIntfStatus const, Hardware, SliceReactor> {
  using Reactor::Reactor;
  void onTxSaStatus() override {
    auto& numbers = owner().packetNumbers_;
    auto const number = numbers.find(notifier()->intfId());
    if (number == numbers.end() || !notifier()->txSaStatus()) return;
    notifier()->txSaStatus()->lpnIs(number->second);
    numbers.erase(number);
  }
};

// Whose transmit key the host holds back.
struct Hardware::HoldReactor final
    : Vesk::Reactor<Interface::IntfForwardingModelInputDir const, Hardware, HoldReactor> {
  using Reactor::Reactor;
  void onForwardingModelInput(Lumo::IntfId const& intfId) override { owner().handleHold(intfId); }
};

// The emulator doesn't know of SSCIs, which are part of what is installed, and takes nothing out.
struct Hardware::CpStatusReactor final
    : Vesk::Reactor<Macsec::CpStatus const, Hardware, CpStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onMySsci() override { owner().handleMySsci(fwkKey()); }
  void onPeerSsci() override { owner().handlePeerSsci(fwkKey()); }
  void onTxSak() override { owner().handleAsked(fwkKey()); }
  void onRxSak(AssociationNumber const&) override { owner().handleAsked(fwkKey()); }
};

struct Hardware::StatusReactor final
    : Vesk::Reactor<Macsec::Status const, Hardware, StatusReactor> {
  StatusReactor(Hardware& owner, Vesk::Ptr<Macsec::Status const> status)
      : Reactor(owner, std::move(status)) {
    cpStatus_.followAll(owner, notifier()->cpStatus());
  }
  void onCpStatus(Lumo::IntfId const& intfId) override {
    cpStatus_.follow(owner(), notifier()->cpStatus(), intfId);
    owner().handleAsked(intfId);
  }
  auto nested() { return std::tie(cpStatus_); }

 private:
  Vesk::NestedReactors<CpStatusReactor, Lumo::IntfId> cpStatus_;
};

Hardware::Hardware(Macsecd::Host& host, std::vector<Lumo::IntfId> const& interfaces,
                   std::string const& name, Macsecd::NonceWatch& nonces)
    : host_(host),
      name_(name),
      nonces_(nonces),
      slice_(Macsec::macSecStatusFactory("lab")),
      copy_(Macsec::macSecIntfStatusPtrDirFactory("copy")),
      status_(host.status()) {
  for (Lumo::IntfId const intfId : interfaces) interfaceIs(intfId);
  holdReactor_ = Vesk::make<HoldReactor>(*this, host.transmitHoldInputDir());
  holdReactor_->hasNotificationActiveIs(true);
  host.slices()->entityPtrIs(slice_);
  host.hardwareReportsFrom([this](Lumo::IntfId intfId) { return report(intfId); });
}

Hardware::~Hardware() {
  host_.hardwareReportsFrom(nullptr);
  followNothing();
  Vesk::retire(holdReactor_);
  for (auto& [intfId, reactor] : copyReactors_) Vesk::retire(reactor);
  for (auto& [intfId, reactor] : sliceReactors_) Vesk::retire(reactor);
}

void Hardware::interfaceIs(Lumo::IntfId intfId) {
  if (copyReactors_.contains(intfId)) return;
  sliceReactors_[intfId] = Vesk::make<SliceReactor>(*this, slice_->statusIs(intfId));
  auto const copy = MacSecIntfStatus::MacSecIntfStatusIs(intfId);
  copyReactors_[intfId] = Vesk::make<CopyReactor>(*this, copy);
  copy_->statusIs(copy);
}

void Hardware::interfaceDel(Lumo::IntfId intfId) {
  auto const copy = copyReactors_.find(intfId);
  if (copy == copyReactors_.end()) return;
  Vesk::retire(copy->second);
  copyReactors_.erase(copy);
  Vesk::retire(sliceReactors_[intfId]);
  sliceReactors_.erase(intfId);
  std::erase_if(answers_, [&](Answer const& answer) { return answer.intfId == intfId; });
  packetNumbers_.erase(intfId);
  downDevices_.erase(intfId);
  dataPaths_.erase(intfId);
  sent_.erase(intfId);
  slice_->statusDel(intfId);
}

void Hardware::deviceIs(Lumo::IntfId intfId, bool up) {
  if (up) {
    downDevices_.erase(intfId);
  } else {
    downDevices_.insert(intfId);
  }
  host_.hardwareReportChanged(intfId);
}

Macsecd::HardwareReport Hardware::report(Lumo::IntfId intfId) const {
  Macsecd::HardwareReport report;
  if (!sliceReactors_.contains(intfId)) report.deviceState = Macsecd::DeviceState::absent;
  if (isDeviceDown(intfId)) report.deviceState = Macsecd::DeviceState::down;
  return report;
}

void Hardware::followNothing() {
  emulator_ = nullptr;
  Vesk::retire(statusReactor_);
}

void Hardware::follow(Vesk::Ptr<Macsec::Status> const& status) {
  followNothing();
  status_ = status;
  statusReactor_ = Vesk::make<StatusReactor>(*this, status);
  statusReactor_->hasNotificationActiveIs(true);
  for (auto const& [intfId, sent] : sent_) noteSent(intfId, sent);
  takingUp_ = true;
  emulator_ = Macsec::hwEmulatorFactory(status, copy_);
  takingUp_ = false;
  for (auto const& [intfId, reactor] : sliceReactors_) {
    handleAsked(intfId);
    auto const cpStatus = status_->cpStatus(intfId);
    if (!cpStatus || cpStatus->txSak() == Sak()) sendNothing(intfId);
  }
}

// The emulator takes nothing out, and says nothing of a key that comes under the identifier of one
// that was there. What was withdrawn is gone from its copy, so that it does.
void Hardware::handleAsked(Lumo::IntfId intfId) {
  auto const cpStatus = status_->cpStatus(intfId);
  auto const copy = copy_->status(intfId);
  for (uint8_t an = 0; copy && an < SecY::kAssociationNumbers; ++an) {
    AssociationNumber const number(an);
    if (!cpStatus || !cpStatus->rxSak(number)) copy->rxSaStatusDel(number);
  }
  if (copy && (!cpStatus || cpStatus->txSak() == Sak())) copy->txSaStatusDel();
  keepWhatIsAskedFor(intfId);
}

// Whether the slice has what the copy has.
bool Hardware::isInstalled(Lumo::IntfId intfId, std::optional<AssociationNumber> rx) const {
  auto const here = slice_->status(intfId), there = copy_->status(intfId);
  if (!here) return false;
  auto const a = rx ? here->rxSaStatus(*rx) : here->txSaStatus();
  auto const b = rx ? there->rxSaStatus(*rx) : there->txSaStatus();
  return a && a->associationNumber() == b->associationNumber() && a->keyId() == b->keyId() &&
         a->keyNum() == b->keyNum();
}

double Hardware::dueTime() const {
  if (mood_ == HardwareMood::silent) return kNever;
  return mood_ == HardwareMood::slow ? Vesk::now() + delay_ : Vesk::now();
}

void Hardware::copied(Lumo::IntfId intfId, std::optional<AssociationNumber> rx) {
  if (takingUp_ && isInstalled(intfId, rx)) return;
  Answer const answer{dueTime(), intfId, rx};
  if (mood_ == HardwareMood::normal && answers_.empty()) return give(answer);
  answers_.push_back(answer);
}

void Hardware::moodIs(HardwareMood mood, double delay) {
  mood_ = mood;
  delay_ = delay;
  for (Answer& answer : answers_) answer.due = dueTime();
}

void Hardware::packetNumberIs(Lumo::IntfId intfId, uint32_t number) {
  nextPacketNumberIs(intfId, number);
  auto const entry = slice_->status(intfId);
  auto const cpStatus = status_->cpStatus(intfId);
  if (!entry || !cpStatus || cpStatus->txSak() == Sak()) return;
  giveTx(intfId);
  auto const there = entry->txSaStatus();
  if (!there || !packetNumbers_.erase(intfId)) return;
  there->lpnIs(number);
}

double Hardware::nextTime() const {
  double next = kNever;
  for (Answer const& answer : answers_) next = std::min(next, answer.due);
  return next;
}

bool Hardware::answerOne() {
  for (auto answer = answers_.begin(); answer != answers_.end(); ++answer) {
    if (answer->due > Vesk::now()) continue;
    Answer const due = *answer;
    answers_.erase(answer);
    give(due);
    return true;
  }
  return false;
}

// Another transmit key may be asked for meanwhile, whose receive key isn't there yet: it is told
// behind that, as drivers do.
void Hardware::give(Answer const& answer) {
  if (answer.rx) return giveRx(answer.intfId, *answer.rx);
  auto const cpStatus = status_->cpStatus(answer.intfId);
  auto const isItsReceiver = [&](Answer const& other) {
    return other.intfId == answer.intfId && cpStatus && other.rx == cpStatus->txSak().an();
  };
  auto const receiver = std::ranges::find_if(answers_, isItsReceiver);
  if (receiver == answers_.end()) return giveTx(answer.intfId);
  answers_.push_back({receiver->due, answer.intfId, {}});
}

// Only what is still asked for is installed: a key that was withdrawn meanwhile isn't.
void Hardware::giveRx(Lumo::IntfId intfId, AssociationNumber an) {
  auto const cpStatus = status_->cpStatus(intfId);
  Sak const* const asked = cpStatus ? cpStatus->rxSak(an) : nullptr;
  if (!asked) return;
  Sak const sak = *asked;
  auto const entry = slice_->status(intfId);
  if (!entry) return;
  if (auto const id = Macsecd::SakId::of(sak)) {
    host_.keyHistory().bindSsci(intfId, *id, ssciOf(intfId));
  }
  if (entry->rxSaStatus(an)) entry->rxSaStatusDel(an);
  receiveWith(intfId, sak);
  entry->rxSaStatusIs(sak.an(), sak.keyMsgId(), sak.keyNum());
}

void Hardware::giveTx(Lumo::IntfId intfId) {
  auto const cpStatus = status_->cpStatus(intfId);
  if (!cpStatus || cpStatus->txSak() == Sak()) return;
  Sak const sak = cpStatus->txSak();
  auto const entry = slice_->status(intfId);
  if (!entry || host_.transmitHoldInputDir()->forwardingModelInput(intfId)) return;
  auto const there = entry->txSaStatus();
  bool const goesOn = there && there->keyId() == sak.keyMsgId() && there->keyNum() == sak.keyNum();
  if (!goesOn) {
    auto const first = firstToSend(intfId, sak);
    if (!first) return;
    sendWith(intfId, sak, *first);
  }
  entry->txSaStatusIs(sak.an(), sak.keyMsgId(), sak.keyNum());
}

// The driver finds it gone, and installs it where its numbers go on.
void Hardware::keyLost(Lumo::IntfId intfId) {
  auto const entry = slice_->status(intfId);
  auto const there = entry ? entry->txSaStatus() : nullptr;
  auto const cpStatus = status_->cpStatus(intfId);
  if (!there || !cpStatus) return;
  Sak const sak = cpStatus->txSak();
  if (there->keyId() != sak.keyMsgId() || there->keyNum() != sak.keyNum()) return;
  if (auto const first = firstToSend(intfId, sak)) sendWith(intfId, sak, *first);
}

// Its packet number; nothing for a key that mustn't be used.
std::optional<uint64_t> Hardware::firstToSend(Lumo::IntfId intfId, Sak const& sak) {
  auto const id = Macsecd::SakId::of(sak);
  if (!id) return std::nullopt;
  uint32_t const ssci = ssciOf(intfId);
  auto const first = host_.keyHistory().firstToSend(intfId, *id, ssci);
  if (!first) {
    host_.keyIsSpent(intfId, *id);
    return std::nullopt;
  }
  Macsecd::NonceWatch::Sender const sender{
      name_ + " " + intfId.stringValue().charPtr(),
      std::string(sak.keyMsgId().view()) + ":" + std::to_string(sak.keyNum()), ssci};
  host_.keyHistory().noteSent(intfId, *id, ssci, *first);
  nonces_.begins(sender, *first);
  nonces_.reaches(sender, *first + kFramesSent);
  sent_[intfId] = {*id, ssci, *first + kFramesSent};
  return *first;
}

void Hardware::noteSent(Lumo::IntfId intfId, Sent const& sent) {
  host_.keyHistory().noteSent(intfId, sent.id, sent.ssci, sent.next);
}

void Hardware::handleHold(Lumo::IntfId intfId) {
  auto const entry = slice_->status(intfId);
  if (!entry) return;
  bool const isHeld = host_.transmitHoldInputDir()->forwardingModelInput(intfId) != nullptr;
  isHeld ? sendNothing(intfId) : copied(intfId, std::nullopt);
}

void Hardware::sendNothing(Lumo::IntfId intfId) {
  auto const entry = slice_->status(intfId);
  if (entry->txSaStatus()) entry->txSaStatusDel();
  if (auto const path = dataPaths_.find(intfId); path != dataPaths_.end()) {
    path->second.secY.txSaDel();
  }
}

// An SA can't change its SSCI: it is installed anew, if it may be.
void Hardware::handleMySsci(Lumo::IntfId intfId) {
  auto const entry = slice_->status(intfId);
  if (!entry || !entry->txSaStatus()) return;
  sendNothing(intfId);
  giveTx(intfId);
}

}  // namespace Lab
