#include "engine/MkaRootSm.h"

#include "runtime/Reactor.h"
#include "runtime/Trace.h"

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

}  // namespace

struct MkaRootSm::StatusReactor final : Vesk::Reactor<Status, MkaRootSm, StatusReactor> {
  using Reactor::Reactor;
  void onMacsecEnabled() override { owner().handleMacsecEnabled(); }
};

MkaRootSm::MkaRootSm(Vesk::Ptr<Status> status,
                     Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
                     Vesk::Ptr<MkaPamManager> pamManager,
                     Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                     Vesk::Ptr<Zorn::TimerWheel> timerWheel)
    : status_(Vesk::make<StatusReactor>(*this, std::move(status))),
      ethIntfStatusDir_(std::move(ethIntfStatusDir)),
      pamManager_(std::move(pamManager)),
      hwStatus_(std::move(hwStatus)),
      timerWheel_(std::move(timerWheel)) {
  handleMacsecEnabled();
  handleInitialized();
}

MkaRootSm::~MkaRootSm() = default;

void MkaRootSm::end() {
  Vesk::endReactors(status_);
  mkaSmDel();
}

Vesk::Ptr<MkaRootSm> MkaRootSm::MkaRootSmIs(
    Vesk::Ptr<Status> status, Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
    Vesk::Ptr<MkaPamManager> pamManager, Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
    Vesk::Ptr<Zorn::TimerWheel> timerWheel) {
  return Vesk::makeActive<MkaRootSm>(std::move(status), std::move(ethIntfStatusDir),
                                     std::move(pamManager), std::move(hwStatus),
                                     std::move(timerWheel));
}

Vesk::Ptr<MkaRootSm> mkaRootSmFactory(Vesk::Ptr<Status> status,
                                      Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
                                      Vesk::Ptr<MkaPamManager> pamManager,
                                      Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                      Vesk::Ptr<Zorn::TimerWheel> timerWheel) {
  return MkaRootSm::MkaRootSmIs(std::move(status), std::move(ethIntfStatusDir),
                                std::move(pamManager), std::move(hwStatus), std::move(timerWheel));
}

void MkaRootSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  Vesk::passNotificationActive(active, status_, mkaSm_);
}

Vesk::Ptr<Status> const& MkaRootSm::status() const { return status_->notifier(); }

Vesk::Ptr<MkaSm> MkaRootSm::mkaSmIs(
    Vesk::Ptr<Status> const& status,
    Vesk::Ptr<Interface::EthIntfStatusDir const> const& ethIntfStatusDir,
    Vesk::Ptr<MkaPamManager> const& pamManager,
    Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus,
    Vesk::Ptr<Zorn::TimerWheel> const& timerWheel) {
  if (mkaSm_) return mkaSm_;
  return Vesk::childIs(mkaSm_, Vesk::make<MkaSm>(Vesk::Unstarted(), status, ethIntfStatusDir,
                                                 pamManager, hwStatus, timerWheel));
}

void MkaRootSm::handleInitialized() {
  VESK_TRACE(8, "");
  initialized_ = true;
}

void MkaRootSm::handleMacsecEnabled() {
  VESK_TRACE(8, "");
  if (!status()->macsecEnabled()) mkaSmDel();
  if (!status()->macsecEnabled()) return;
  mkaSmIs(status(), ethIntfStatusDir_, pamManager_, hwStatus_, timerWheel_);
}

}  // namespace Macsec
