#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

#include "codec/FrameSink.h"
#include "host/Host.h"
#include "lab/Hardware.h"
#include "lab/SwitchWorld.h"
#include "lab/TreeWatch.h"

namespace Lab {

/// One whole switch in a simulation: its world, its host, its hardware. Whatever runs in it runs in
/// its world; a switch whose process ends itself is restarted over its trees.
class Switch final : public Codec::FrameSink {
 public:
  struct Outlets {
    std::function<void(Switch&, Lumo::IntfId, std::span<uint8_t const>)> sent;
    std::function<void(Switch const&, TreeWatch::What)> happened;
    std::function<void(Switch const&, int status)> exited;
  };

  /// `icvIndicator` is that of interfaces whose configuration names no other than the default.
  Switch(SwitchSpec const& spec, Codec::IcvIndicator icvIndicator, Clock const& clock,
         uint32_t seed, uint32_t index, Outlets outlets);
  ~Switch() override;

  SwitchSpec const& spec() const { return spec_; }
  std::string const& name() const { return spec_.name; }
  Macsecd::Host const& host() const { return *host_; }
  SwitchWorld& world() { return world_; }
  std::vector<Lumo::IntfId> const& interfaces() const { return interfaces_; }
  bool isUp(Lumo::IntfId intfId) const { return started_ && !downLinks_.count(intfId); }

  void start();
  void restart();
  void linkIs(Lumo::IntfId intfId, bool up);
  /// The configuration after `change` has been at it.
  void configure(std::function<void(Macsecd::SwitchConfig&)> const& change);
  void hardware(std::function<void(Hardware&)> const& change);
  void receive(Lumo::IntfId intfId, std::span<uint8_t const> frame);

  /// When a timer or an answer of the hardware is due next; infinity when none is.
  double nextTime() const;
  /// Runs one timer that is due, or else one answer that is due. False if nothing was.
  bool runOne();

  void send(Lumo::IntfId intfId, std::span<uint8_t const> frame) override;

 private:
  template <class Work>
  void inWorld(Work work);
  void connectWorld();
  void tell(TreeWatch::What what);
  FramePassed passed(Lumo::IntfId intfId, std::span<uint8_t const> frame) const;

  SwitchSpec const& spec_;
  Macsecd::SwitchConfig config_;
  Outlets outlets_;
  SwitchWorld world_;
  std::vector<Lumo::IntfId> interfaces_;
  std::set<Lumo::IntfId> downLinks_;
  std::unique_ptr<Macsecd::Host> host_;
  std::unique_ptr<Hardware> hardware_;
  std::unique_ptr<TreeWatch> watch_;
  bool started_ = false;
  // What a frame brings about is told behind the frame, whose verdict is known at its end alone.
  std::optional<std::vector<TreeWatch::What>> heldBack_;
};

}  // namespace Lab
