#include "config/ConfigSmReactors.h"
#include "platform/Corruption.h"
#include "runtime/Entity.h"
#include "runtime/Trace.h"
#include "runtime/World.h"

// What holds for the whole switch: FIPS mode, delay protection, message counters.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::Config");

}  // namespace

void ConfigSm::updateFipsStatus() {
  VESK_TRACE(3, " Updating Fips Status ");
  bool const fips = config()->fipsRestrictions();
  if (fips) Vesk::world().randCleanup();
  int const result = Vesk::world().fipsModeSet(fips);
  if (result == 0) {
    VESK_TRACE(1, "Setting Fips Mode failed.Dying again!");
    Vesk::world().exit(0);
    return;
  }
  status()->fipsStatusIs(FipsStatus(fips, true));
}

// The mode of a running process never changes.
void ConfigSm::handleFipsRestrictions() {
  VESK_TRACE(8, " Handle Fips Restrictions");
  if (status()->macsecEnabled()) cleanUpAndDie();
}

void ConfigSm::maybeUpdateFipsStatus() {
  if (!initialized_) return;
  bool const runsInFips = status()->fipsStatus().fipsRestrictions();
  if (!status()->macsecEnabled()) {
    if (runsInFips) cleanUpAndDie();
  } else if (config()->fipsRestrictions() != runsInFips) {
    cleanUpAndDie();
  }
}

void ConfigSm::cleanUpAndDie() {
  for (auto i = status()->intfStatus().iterator(); i; ++i) status()->intfStatusDel(i->intfId());
  Vesk::flushEntityLogOutputBuffer();
  VESK_TRACE(1, " Dying gracefully !");
  Vesk::world().exit(0);
}

void ConfigSm::handleDelayProtection() {
  VESK_TRACE(8, " Updating Delay Protection Flag");
  bool const isOn = config()->delayProtection();
  status()->mkpduPeriodIs(isOn ? Status::mkpduPeriodBounded : Status::mkpduPeriodDefault);
  status()->delayProtectionIs(isOn);
  status()->mkpduThresholdIs(Status::mkpduThresholdDefault);
}

void ConfigSm::handleClearMkaCounters() {
  VESK_TRACE(8, "");
  for (IntfStatus& intfStatus : status()->intfStatus()) doClearCounters(intfStatus.intfId());
}

void ConfigSm::doClearCounters(Lumo::IntfId intfId) {
  VESK_TRACE(3, "Clearing counters for: ", intfId);
  if (!brineCounters_) return;
  Brine::MessageCounterData record;
  try {
    record = brineCounters_->messageCounterData(intfId);
  } catch (Pollux::CorruptionDetectedException const& corruption) {
    brineCounters_->corruptionDetected(corruption.what());
    record = brineCounters_->emptyRecord();
  }
  brineCounters_->msgCounterSnapshotIs(record);
}

}  // namespace Macsec
