#include "host/control/ControlJson.h"

#include "host/text/CounterText.h"

namespace Macsecd {

namespace {

Json jsonOf(KeyAge const& age) { return {{"seconds", age.seconds}, {"at-least", age.isLeast}}; }

Json jsonOf(PeerSummary const& peer) {
  return {{"member-id", peer.memberId},
          {"sci", peer.sci},
          {"live", peer.isLive},
          {"priority", peer.priority},
          {"message-number", peer.messageNumber},
          {"seconds-since-heard", peer.age}};
}

Json jsonOf(KeySummary const& key) {
  Json json = {{"ckn", key.name},
               {"role", key.role},
               {"principal", key.isPrincipal},
               {"agrees", key.agrees},
               {"key-server", orNull(key.keyServer)},
               {"is-key-server", key.isKeyServer},
               {"peers", Json::array()}};
  for (PeerSummary const& peer : key.peers) json["peers"].push_back(jsonOf(peer));
  return json;
}

}  // namespace

Json jsonOf(PortSummary const& port) {
  Json json = {{"interface", port.interface},
               {"profile", orNull(port.profile)},
               {"link", port.link},
               {"state", port.state},
               {"cipher-suite", orNull(port.cipherSuite)},
               {"sci", orNull(port.sci)},
               {"ssci", orNull(port.ssci)},
               {"sak", orNull(port.sak)},
               {"an", orNull(port.an)},
               {"key-age", port.keyAge ? jsonOf(*port.keyAge) : Json()},
               {"device", orNull(port.hardware.device)},
               {"tx-packet-number", orNull(port.hardware.txPacketNumber)},
               {"rx-packet-number", orNull(port.hardware.rxPacketNumber)},
               {"keys", Json::array()}};
  for (KeySummary const& key : port.keys) json["keys"].push_back(jsonOf(key));
  return json;
}

Json jsonOf(PortStages const& stages) {
  Json json = {{"key", nullptr}, {"guard", nullptr}, {"members", Json::array()}};
  if (stages.key) json["key"] = Vesk::stringValue(*stages.key);
  if (stages.guard) json["guard"] = Vesk::stringValue(*stages.guard);
  for (auto const& [member, stage] : stages.members) {
    json["members"].push_back({{"ckn", member.first.charPtr()},
                               {"member", member.second.charPtr()},
                               {"stage", Vesk::stringValue(stage)}});
  }
  return json;
}

Json jsonOf(Explanation const& explanation) {
  Json json = {{"interface", explanation.intfId.stringValue().charPtr()},
               {"secured", explanation.secured},
               {"causes", Json::array()},
               {"stages", jsonOf(explanation.stages)}};
  for (Cause const& cause : explanation.causes) {
    json["causes"].push_back(
        {{"cause", Vesk::stringValue(cause.kind)}, {"what", cause.what}, {"remedy", cause.remedy}});
  }
  return json;
}

Json jsonOf(Diagnostic const& diagnostic) {
  return {{"file", diagnostic.file},
          {"line", diagnostic.line},
          {"column", diagnostic.column},
          {"what", diagnostic.what},
          {"remedy", diagnostic.remedy}};
}

Json jsonOf(Macsec::Brine::InterfaceCounters const& counters, bool sinceClear) {
  Json frames = Json::array();
  auto const& shown = sinceClear ? counters.sinceSnapshot : counters.total;
  for (size_t i = 0; i < shown.size(); ++i) {
    if (shown[i] == 0) continue;
    frames.push_back({{"frames", counterName(i)}, {"since-clear", counters.sinceSnapshot[i]}});
    if (!sinceClear) frames.back()["total"] = counters.total[i];
  }
  return {{"interface", orNull(counters.name)}, {"counters", frames}};
}

}  // namespace Macsecd
