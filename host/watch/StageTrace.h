#pragma once

#include <functional>
#include <map>

#include "host/watch/PortChanges.h"
#include "host/watch/PortStages.h"

namespace Macsecd {

/// Traces each step of a port from one stage to the next ("Macsecd::StageTrace", level 2). Nobody
/// tells that the guard on new SAKs has run off: that step is traced with the next one.
class StageTrace final : private PortListener {
 public:
  using KeyServerOf = std::function<Vesk::Ptr<Macsec::MkaKeyServerSm>(Lumo::IntfId)>;

  /// `ports` lives longer.
  StageTrace(PortChanges& ports, KeyServerOf keyServerOf);
  ~StageTrace();
  StageTrace(StageTrace const&) = delete;
  StageTrace& operator=(StageTrace const&) = delete;

 private:
  void portChanged(Lumo::IntfId intfId) override { look(intfId); }
  void portStepped(Lumo::IntfId intfId) override { look(intfId); }
  void look(Lumo::IntfId intfId);

  PortChanges& ports_;
  KeyServerOf const keyServerOf_;
  std::map<Lumo::IntfId, PortStages> last_;
};

}  // namespace Macsecd
