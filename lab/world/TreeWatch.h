#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/Host.h"
#include "lab/world/Event.h"
#include "model/MacSecStatus.h"
#include "runtime/Entity.h"

namespace Lab {

/// Turns the effective writes to the trees of one switch into events: what stands otherwise
/// than it was told last is told. It runs as each write is stored and before any reactor hears of
/// it.
class TreeWatch {
 public:
  using What = decltype(Event::what);

  /// `slice` is the hardware. The trees are asked of the host each time: a restart makes new ones.
  TreeWatch(Macsecd::Host const& host, Vesk::Ptr<Macsec::MacSecStatus const> slice,
            std::vector<Lumo::IntfId> interfaces, std::function<void(What)> tell)
      : host_(host),
        slice_(std::move(slice)),
        interfaces_(std::move(interfaces)),
        tell_(std::move(tell)) {}

  void written(Vesk::AttributeWrite const& write);
  /// The same of whether traffic may pass, where no tree has it: the devices of the hardware.
  void lookAtPorts();

 private:
  using Actor = std::pair<Lumo::IntfId, std::string>;
  // What was told of one interface.
  struct Told {
    std::string state = "absent";
    bool unauthorized = false;
    std::pair<std::string, std::string> keyInUse;  // its name and its role
    std::map<std::pair<bool, uint8_t>, KeyName> asked;
    std::map<std::pair<bool, uint8_t>, std::pair<KeyName, uint32_t>> installed;
  };
  struct ToldActor {
    std::pair<std::string, bool> keyServer;
    std::pair<std::vector<std::string>, std::vector<std::string>> peers;
  };

  void lookAtAsked(Lumo::IntfId intfId);
  void lookAtInstalled(Lumo::IntfId intfId);
  void lookAtForwarding();
  void lookAtKeysInUse();
  void lookAtActor(Macsec::MkaActorStatus const& actor);

  Macsecd::Host const& host_;
  Vesk::Ptr<Macsec::MacSecStatus const> slice_;
  std::vector<Lumo::IntfId> interfaces_;
  std::function<void(What)> tell_;
  std::map<Lumo::IntfId, Told> told_;
  std::map<Actor, ToldActor> toldActors_;
};

}  // namespace Lab
