#pragma once

#include "model/Config.h"
#include "model/MacSecStatus.h"
#include "model/MkaPamManager.h"
#include "model/Status.h"

namespace Macsec {

// What a host builds its entities with.

inline Vesk::Ptr<Status> statusFactory(Vesk::Name const& name) { return Status::StatusIs(name); }

inline Vesk::Ptr<Config> configFactory(Vesk::Name const& name) { return Config::ConfigIs(name); }

inline Vesk::Ptr<MkaPamManager> mkaPamManagerFactory(
    Vesk::Ptr<Interface::EthDevPamCollection const> const& ethDevPamCollection) {
  return MkaPamManager::MkaPamManagerIs(ethDevPamCollection);
}

inline Vesk::Ptr<MacSecStatus> macSecStatusFactory(Vesk::Name const& name) {
  return MacSecStatus::MacSecStatusIs(name);
}

inline Vesk::Ptr<MacSecIntfStatusPtrDir> macSecIntfStatusPtrDirFactory(Vesk::Name const& name) {
  return MacSecIntfStatusPtrDir::MacSecIntfStatusPtrDirIs(name);
}

}  // namespace Macsec
