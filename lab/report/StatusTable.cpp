#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <ostream>

#include "host/text/CounterText.h"
#include "host/text/TextTable.h"
#include "lab/report/Timeline.h"
#include "lab/world/PortView.h"

namespace Lab {

namespace {

using Row = std::vector<std::string>;

Row const header = {"Port", "State", "Principal key", "Key server", "SAK", "AN", "SSCI", "Peers"};

std::string nameOf(Simulation const& simulation, Macsec::Sci const& sci) {
  for (auto const& one : simulation.switches()) {
    if (one->spec().mac == sci.addr()) return one->name();
  }
  return sciText(sci);
}

std::string peersOf(Simulation const& simulation, Macsec::MkaActorStatus const& actor) {
  std::vector<std::string> peers;
  for (Macsec::MkaPeer& peer : actor.livePeer()) {
    peers.push_back(nameOf(simulation, peer.baseInfo().sci()));
  }
  std::sort(peers.begin(), peers.end());
  return fmt::format("{}", fmt::join(peers, ", "));
}

Row rowOf(Simulation const& simulation, Switch const& owner, Lumo::IntfId intfId) {
  PortView const port(*owner.host().status(), intfId);
  Row row(header.size());
  row[0] = owner.name() + " " + intfId.stringValue().charPtr();
  row[1] = stateOf(owner.host(), intfId);
  if (auto const actor = port.principal()) {
    row[2] = actor->ckn().charPtr();
    if (actor->keyServer() != Macsec::Sci()) row[3] = nameOf(simulation, actor->keyServer());
    if (actor->electedSelf()) row[3] = owner.name();
    row[7] = peersOf(simulation, *actor);
  }
  if (Macsec::Sak const sak = port.txSak(); sak != Macsec::Sak()) {
    row[4] = sakText(sak);
    row[5] = std::to_string(sak.an().value());
  }
  if (auto const cpStatus = owner.host().status()->cpStatus(intfId)) {
    std::string const ssci = cpStatus->mySsci().ssci().charPtr();
    if (!ssci.empty()) row[6] = ssci;
  }
  return row;
}

}  // namespace

void writeStatusTable(std::ostream& out, Simulation const& simulation) {
  std::vector<Row> rows{header};
  for (auto const& one : simulation.switches()) {
    for (Lumo::IntfId const intfId : one->interfaces()) {
      rows.push_back(rowOf(simulation, *one, intfId));
    }
  }
  out << Macsecd::textTable(rows);
}

void writeCounters(std::ostream& out, Simulation const& simulation) {
  for (auto const& one : simulation.switches()) {
    Vesk::WorldScope const scope(one->world());
    out << fmt::format("\nFrames of {}:\n\n{}", one->name(),
                       Macsecd::counterText(one->host().counters()->reader()));
  }
}

}  // namespace Lab
