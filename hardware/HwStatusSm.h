#pragma once

#include "model/MacSecStatus.h"
#include "runtime/Dir.h"
#include "runtime/NestedReactors.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// Merges the slices of the hardware into the one view that the engine reads, and remembers which
/// slice each interface came from, so that a slice that goes takes exactly its own interfaces
/// along.
class HwStatusSm final : public Vesk::StateMachine {
 public:
  HwStatusSm(Vesk::Ptr<MacSecIntfStatusPtrDir> hwStatus,
             Vesk::Ptr<Vesk::Dir const> hwStatusSliceDir);
  ~HwStatusSm() override;
  static Vesk::Ptr<HwStatusSm> HwStatusSmIs(Vesk::Ptr<MacSecIntfStatusPtrDir> hwStatus,
                                            Vesk::Ptr<Vesk::Dir const> hwStatusSliceDir);
  void hasNotificationActiveIs(bool active) override;

  Vesk::Ptr<MacSecIntfStatusPtrDir> const& hwStatus() const { return hwStatus_; }
  Vesk::Ptr<Vesk::Dir const> const& hwStatusSliceDir() const;

  using SliceMap = Vesk::ValueMap<Lumo::IntfId, Vesk::String8>;
  /// Which slice each interface came from.
  SliceMap const& sliceMap() const { return sliceMap_; }
  /// How many slices have a reactor.
  size_t hwSlices() const { return hwSlice_.members(); }

  void doInit();
  /// The slice with that name appeared or vanished.
  void handleSliceDir(Vesk::Name const& sliceName);
  /// Removes that slice's interfaces from the view.
  void handleSliceStatusDelete(Vesk::Name const& sliceName);
  /// The single writer of the view; null takes the interface out.
  void doUpdateHwStatus(Vesk::Ptr<MacSecIntfStatus const> const& intfStatus,
                        Vesk::Name const& sliceName, Lumo::IntfId intfId);
  /// Dumps the state at level 8.
  void trace() const;

 protected:
  void end() override;

 private:
  struct HwStatusSliceDirReactor;
  struct HwSliceReactor;

  Vesk::Ptr<MacSecStatus> slice(Vesk::Name const& name) const;
  void hwSliceIs(Vesk::Ptr<MacSecStatus> const& slice);
  void hwSliceDel(Vesk::Name const& name);
  void sliceMapIs(Lumo::IntfId intfId, Vesk::String8 const& sliceName);
  void sliceMapDel(Lumo::IntfId intfId);

  Vesk::Ptr<MacSecIntfStatusPtrDir> hwStatus_;
  Vesk::Ptr<HwStatusSliceDirReactor> hwStatusSliceDir_;
  SliceMap sliceMap_;
  Vesk::NestedReactors<HwSliceReactor, Vesk::Name> hwSlice_;
};

/// Builds the state machine with its notification on.
Vesk::Ptr<HwStatusSm> hwStatusSmFactory(Vesk::Ptr<MacSecIntfStatusPtrDir> hwStatus,
                                        Vesk::Ptr<Vesk::Dir const> hwStatusSliceDir);

}  // namespace Macsec
