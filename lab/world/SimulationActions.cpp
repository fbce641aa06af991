#include "lab/world/PortView.h"
#include "lab/world/Simulation.h"
#include "runtime/Assert.h"

namespace Lab {

void Simulation::act(Action const& action) {
  for (Audience* audience : audience_) audience->acts(clock_.now, action);
  std::string const text = withoutTime(action.text);
  for (Audience* audience : audience_) audience->acted(clock_.now, text);
  std::visit([this](auto const& what) { carryOut(what); }, action.what);
}

void Simulation::carryOut(LinkChange const& change) {
  switchOf(change.port.switchName).linkIs(Lumo::IntfId(change.port.interface.c_str()), change.up);
}

void Simulation::carryOut(DeviceChange const& change) {
  switchOf(change.port.switchName).deviceIs(Lumo::IntfId(change.port.interface.c_str()), change.up);
}

void Simulation::carryOut(InterfaceChange const& change) {
  Switch& owner = switchOf(change.port.switchName);
  Lumo::IntfId const intfId(change.port.interface.c_str());
  if (!change.isThere) return owner.interfaceDel(intfId);
  owner.interfaceIs(intfId, change.mac.value_or(owner.spec().mac));
}

void Simulation::carryOut(WireFault const& fault) {
  WireEnd const* const at = wireAt(fault.port);
  VESK_ASSERT(at);
  wires_[at->wire].faultIs(at->end, fault);
}

void Simulation::changeProfile(ProfileName const& name,
                               std::function<void(Macsecd::ProfileConfig&)> const& change) {
  switchOf(name.switchName).configure([&](Macsecd::SwitchConfig& config) {
    for (auto& profile : config.profiles) {
      if (profile.name == name.profile) change(profile);
    }
  });
}

void Simulation::carryOut(KeyChange const& change) {
  changeProfile(change.profile, [&](Macsecd::ProfileConfig& profile) {
    (change.fallback ? profile.fallbackKey : profile.key) = change.key;
  });
}

void Simulation::carryOut(PriorityChange const& change) {
  changeProfile(change.profile, [&](Macsecd::ProfileConfig& profile) {
    profile.keyServerPriority = change.priority;
  });
}

void Simulation::carryOut(RekeyPeriodChange const& change) {
  changeProfile(change.profile,
                [&](Macsecd::ProfileConfig& profile) { profile.rekeyPeriod = change.seconds; });
}

void Simulation::carryOut(SuiteChange const& change) {
  changeProfile(change.profile,
                [&](Macsecd::ProfileConfig& profile) { profile.cipherSuite = change.suite; });
}

void Simulation::carryOut(ProfileChange const& change) {
  switchOf(change.port.switchName).configure([&](Macsecd::SwitchConfig& config) {
    for (auto& interface : config.interfaces) {
      if (interface.name == change.port.interface) interface.profile = change.profile;
    }
  });
}

void Simulation::carryOut(Dot1xKeyChange const& change) {
  for (auto const& [port, type] : change.ends) {
    switchOf(port.switchName).dot1xKeyIs(Lumo::IntfId(port.interface.c_str()), type, change.key);
  }
}

void Simulation::carryOut(ShutdownChange const& change) {
  switchOf(change.switchName).configure([&](Macsecd::SwitchConfig& config) {
    config.shutdown = change.shutdown;
  });
}

void Simulation::carryOut(DelayProtectionChange const& change) {
  switchOf(change.switchName).configure([&](Macsecd::SwitchConfig& config) {
    config.delayProtection = change.on;
  });
}

void Simulation::carryOut(FipsChange const& change) {
  switchOf(change.switchName).configure([&](Macsecd::SwitchConfig& config) {
    config.fips = change.on;
  });
}

void Simulation::carryOut(FipsProviderChange const& change) {
  switchOf(change.switchName).world().hasFipsProvider = change.isThere;
}

void Simulation::endFaults() {
  for (Audience* audience : audience_) {
    audience->faultsEnd(clock_.now);
    audience->acted(clock_.now, "all faults end");
  }
  for (Wire& wire : wires_) wire.repair();
  for (WireSpec const& wire : scenario_.wires) {
    for (size_t end = 0; end < wire.ends.size(); ++end) endFaultsAt(wire.ends[end], end < 2);
  }
  for (auto const& one : switches_) {
    one->world().hasFipsProvider = true;
    one->world().clockRateIs(1);
    one->storeRefuses(false);
    one->hardware([](Hardware& hardware) { hardware.moodIs(HardwareMood::normal, 0); });
  }
}

void Simulation::endFaultsAt(PortName const& port, bool belongs) {
  Switch& owner = switchOf(port.switchName);
  Lumo::IntfId const intfId(port.interface.c_str());
  if (owner.isDeleted(intfId)) owner.interfaceIs(intfId, owner.spec().mac);
  if (owner.hardware().isDeviceDown(intfId)) owner.deviceIs(intfId, true);
  if (owner.isLinkUp(intfId) != belongs) owner.linkIs(intfId, belongs);
}

void Simulation::carryOut(CountersCleared const& cleared) {
  switchOf(cleared.switchName).clearCounters();
}

void Simulation::carryOut(Reload const& reload) { switchOf(reload.switchName).reload(reload); }

void Simulation::carryOut(Restart const& restart) {
  switchOf(restart.switchName).restart(restart.deadFor, restart.keepsState);
}

void Simulation::carryOut(Kill const& kill) {
  Switch& killed = switchOf(kill.switchName);
  killed.killedAt({killed.store().commits() + kill.commit, kill.isTaken}, {}, kill.deadFor);
}

void Simulation::carryOut(Standstill const& still) {
  switchOf(still.switchName).standStill(still.seconds);
}

void Simulation::carryOut(ClockRate const& clock) {
  switchOf(clock.switchName).world().clockRateIs(clock.rate);
}

void Simulation::carryOut(StoreChange const& change) {
  switchOf(change.switchName).storeRefuses(change.refuses);
}

void Simulation::carryOut(HardwareChange const& change) {
  switchOf(change.switchName).hardware([&](Hardware& hardware) {
    hardware.moodIs(change.mood, change.delay);
  });
}

void Simulation::carryOut(PacketNumber const& number) {
  switchOf(number.port.switchName).hardware([&](Hardware& hardware) {
    Lumo::IntfId const intfId(number.port.interface.c_str());
    if (number.ofNextKey) {
      hardware.nextPacketNumberIs(intfId, number.number);
    } else {
      hardware.packetNumberIs(intfId, number.number);
    }
  });
}

void Simulation::carryOut(KeySpent const& spent) {
  switchOf(spent.port.switchName).keyIsSpent(Lumo::IntfId(spent.port.interface.c_str()));
}

void Simulation::carryOut(KeyLost const& lost) {
  Lumo::IntfId const intfId(lost.port.interface.c_str());
  switchOf(lost.port.switchName).hardware([&](Hardware& hardware) { hardware.keyLost(intfId); });
}

void Simulation::carryOut(Mark const& mark) {
  for (auto const& one : switches_) {
    marked_[{mark.name, one->name()}] = one->record();
    for (Lumo::IntfId const intfId : one->interfaces()) {
      sakHistory_.markIs(mark.name, {one->name(), intfId.stringValue().charPtr()},
                         PortView(*one->host().status(), intfId).txSak());
    }
  }
}

}  // namespace Lab
