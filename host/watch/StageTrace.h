#pragma once

#include <functional>
#include <map>

#include "host/watch/PortStages.h"

namespace Macsecd {

/// Traces each step of a port from one stage to the next ("Macsecd::StageTrace", level 2). Nobody
/// tells that the guard on new SAKs has run off: that step is traced with the next one.
class StageTrace {
 public:
  using KeyServerOf = std::function<Vesk::Ptr<Macsec::MkaKeyServerSm>(Lumo::IntfId)>;

  StageTrace(Vesk::Ptr<Macsec::Status const> status, KeyServerOf keyServerOf);
  ~StageTrace();
  StageTrace(StageTrace const&) = delete;
  StageTrace& operator=(StageTrace const&) = delete;

 private:
  struct StatusReactor;
  struct CpStatusReactor;
  struct PortStatusReactor;
  struct ActorStatusReactor;

  void look(Lumo::IntfId intfId);

  KeyServerOf const keyServerOf_;
  std::map<Lumo::IntfId, PortStages> last_;
  Vesk::Ptr<StatusReactor> status_;
};

}  // namespace Macsecd
