#include "lab/Hardware.h"

#include <limits>

#include "model/Factories.h"
#include "runtime/World.h"

namespace Lab {

using Macsec::AssociationNumber;
using Macsec::MacSecIntfStatus;
using Macsec::Sak;

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

Hardware::Hardware(Vesk::Ptr<Vesk::Dir> const& slices, std::vector<Lumo::IntfId> const& interfaces)
    : slice_(Macsec::macSecStatusFactory("lab")),
      copy_(Macsec::macSecIntfStatusPtrDirFactory("copy")) {
  for (Lumo::IntfId const intfId : interfaces) {
    sliceReactors_.push_back(Vesk::make<SliceReactor>(*this, slice_->statusIs(intfId)));
    auto const copy = MacSecIntfStatus::MacSecIntfStatusIs(intfId);
    copyReactors_.push_back(Vesk::make<CopyReactor>(*this, copy));
    copy_->statusIs(copy);
  }
  slices->entityPtrIs(slice_);
}

Hardware::~Hardware() {
  emulator_ = nullptr;
  for (auto& reactor : copyReactors_) Vesk::retire(reactor);
  for (auto& reactor : sliceReactors_) Vesk::retire(reactor);
}

void Hardware::follow(Vesk::Ptr<Macsec::Status> const& status) {
  emulator_ = nullptr;
  status_ = status;
  takingUp_ = true;
  emulator_ = Macsec::hwEmulatorFactory(status, copy_);
  takingUp_ = false;
}

// Whether the slice has what the copy has.
bool Hardware::isInstalled(Lumo::IntfId intfId, std::optional<AssociationNumber> rx) const {
  auto const here = slice_->status(intfId), there = copy_->status(intfId);
  auto const a = rx ? here->rxSaStatus(*rx) : here->txSaStatus();
  auto const b = rx ? there->rxSaStatus(*rx) : there->txSaStatus();
  return a && a->associationNumber() == b->associationNumber() && a->keyId() == b->keyId() &&
         a->keyNum() == b->keyNum();
}

double Hardware::dueTime() const {
  if (mood_ == HardwareMood::silent) return std::numeric_limits<double>::infinity();
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
  if (!packetNumbers_.erase(intfId)) return;
  entry->txSaStatus()->lpnIs(number);
}

double Hardware::nextTime() const {
  double next = std::numeric_limits<double>::infinity();
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

void Hardware::give(Answer const& answer) {
  if (answer.rx) {
    giveRx(answer.intfId, *answer.rx);
  } else {
    giveTx(answer.intfId);
  }
}

// Only what is still asked for is installed: a key that was withdrawn meanwhile isn't.
void Hardware::giveRx(Lumo::IntfId intfId, AssociationNumber an) {
  auto const cpStatus = status_->cpStatus(intfId);
  Sak const* const asked = cpStatus ? cpStatus->rxSak(an) : nullptr;
  if (!asked) return;
  Sak const sak = *asked;
  auto const entry = slice_->status(intfId);
  if (entry->rxSaStatus(an)) entry->rxSaStatusDel(an);
  entry->rxSaStatusIs(sak.an(), sak.keyMsgId(), sak.keyNum());
}

void Hardware::giveTx(Lumo::IntfId intfId) {
  auto const cpStatus = status_->cpStatus(intfId);
  if (!cpStatus || cpStatus->txSak() == Sak()) return;
  Sak const sak = cpStatus->txSak();
  slice_->status(intfId)->txSaStatusIs(sak.an(), sak.keyMsgId(), sak.keyNum());
}

}  // namespace Lab
