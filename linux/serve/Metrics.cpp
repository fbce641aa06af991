#include "linux/serve/Metrics.h"

#include <prometheus/metric_family.h>
#include <prometheus/text_serializer.h>

#include <limits>
#include <sstream>

#include "platform/Corruption.h"
#include "platform/MessageCounterReason.h"

namespace Linux {

namespace {

using Macsec::Brine::MessageCounterData;
using prometheus::ClientMetric;
using prometheus::MetricFamily;
using prometheus::MetricType;
using Label = ClientMetric::Label;

void add(MetricFamily& family, std::vector<Label> labels, double value) {
  ClientMetric& metric = family.metric.emplace_back();
  metric.label = std::move(labels);
  metric.gauge.value = value;
  metric.counter.value = value;
}

/// The families of the ports, a port at a time.
class PortFamilies {
 public:
  PortFamilies(Macsecd::Host const& host, Macsecd::PortHistory const& history)
      : host_(host), history_(history) {}

  std::vector<MetricFamily> families() {
    for (Lumo::IntfId const intfId : Macsecd::interfacesOf(host_)) {
      Macsecd::PortSummary const port = summaryOf(host_, intfId);
      addState(intfId, port);
      addSak(intfId, port);
      addHistory(intfId);
      addFrames(intfId);
    }
    return {secured_,      key_,    keyServer_, peers_,  rekeys_,   openings_,
            timeToSecure_, sakAge_, packet_,    faulty_, notValid_, mkpdus_};
  }

 private:
  static std::vector<Label> of(Lumo::IntfId intfId) {
    return {{"interface", intfId.stringValue().charPtr()}};
  }

  void addState(Lumo::IntfId intfId, Macsecd::PortSummary const& port) {
    Macsecd::KeySummary const* const key = port.principal();
    add(secured_, of(intfId), port.state == "open");
    add(keyServer_, of(intfId), key && key->isKeyServer);
    double live = 0;
    if (key) {
      for (auto const& peer : key->peers) live += peer.isLive;
      add(key_, {of(intfId)[0], {"ckn", key->name}, {"role", key->role}}, 1);
    }
    add(peers_, of(intfId), live);
  }
  void addSak(Lumo::IntfId intfId, Macsecd::PortSummary const& port) {
    if (port.keyAge) add(sakAge_, of(intfId), port.keyAge->seconds);
    if (port.hardware.txPacketNumber) {
      add(packet_, of(intfId), static_cast<double>(*port.hardware.txPacketNumber));
    }
    add(faulty_, of(intfId), !host_.hardwareFault(intfId).empty());
    add(notValid_, of(intfId), static_cast<double>(port.hardware.framesNotValid));
  }
  void addHistory(Lumo::IntfId intfId) {
    auto const& port = history_.port(intfId.stringValue().charPtr());
    add(rekeys_, of(intfId), static_cast<double>(port.rekeys));
    add(openings_, of(intfId), static_cast<double>(port.openings));
    if (port.timeToSecure) add(timeToSecure_, of(intfId), *port.timeToSecure);
  }
  // A table that is damaged tells nothing here; `macsecctl counters` says what is wrong with it.
  void addFrames(Lumo::IntfId intfId) {
    try {
      auto const read = host_.counters()->counters(intfId);
      if (read) addCounters(intfId, *read);
    } catch (Pollux::CorruptionDetectedException const&) {
    }
  }
  void addCounters(Lumo::IntfId intfId, Macsec::Brine::InterfaceCounters const& counters) {
    for (size_t i = 0; i < counters.total.size(); ++i) {
      auto const [direction, type, reason] = MessageCounterData::kindOf(i);
      bool const isUsual = reason == Macsec::MessageCounterFailureSubType::none;
      if (counters.total[i] == 0 && !(isUsual && type == Macsec::MessageCounterType::success)) {
        continue;
      }
      add(mkpdus_,
          {of(intfId)[0],
           {"direction", Vesk::stringValue(direction)},
           {"result", Vesk::stringValue(type)},
           {"reason", isUsual ? "" : Macsec::reasonName(reason)}},
          static_cast<double>(counters.total[i]));
    }
  }

  Macsecd::Host const& host_;
  Macsecd::PortHistory const& history_;
  MetricFamily secured_{"macsecd_port_secured",
                        "1 while traffic may pass the controlled port",
                        MetricType::Gauge,
                        {}};
  MetricFamily key_{"macsecd_port_key_in_use_info",
                    "The CAK that the port uses, by its name",
                    MetricType::Gauge,
                    {}};
  MetricFamily keyServer_{
      "macsecd_port_is_key_server", "1 while this switch is the key server", MetricType::Gauge, {}};
  MetricFamily peers_{
      "macsecd_port_live_peers", "Live peers under the key in use", MetricType::Gauge, {}};
  MetricFamily rekeys_{"macsecd_port_rekeys_total",
                       "SAKs that took the place of another one",
                       MetricType::Counter,
                       {}};
  MetricFamily openings_{
      "macsecd_port_openings_total", "How often the port became secured", MetricType::Counter, {}};
  MetricFamily timeToSecure_{
      "macsecd_port_time_to_secure_seconds",
      "Seconds that the last opening took, from the link or the last closing",
      MetricType::Gauge,
      {}};
  MetricFamily sakAge_{"macsecd_port_sak_age_seconds",
                       "For how long the SAK in use has been sent with",
                       MetricType::Gauge,
                       {}};
  MetricFamily faulty_{"macsecd_port_hardware_faulty",
                       "1 while the hardware refuses what is asked of it",
                       MetricType::Gauge,
                       {}};
  MetricFamily notValid_{"macsecd_port_frames_not_valid_total",
                         "Frames received that weren't valid under their SAK",
                         MetricType::Counter,
                         {}};
  MetricFamily packet_{"macsecd_port_next_packet_number",
                       "The packet number that is sent next under the SAK in use",
                       MetricType::Gauge,
                       {}};
  MetricFamily mkpdus_{
      "macsecd_mkpdus_total", "MKPDUs by what became of them", MetricType::Counter, {}};
};

MetricFamily delays(LoopDelay const& delay) {
  MetricFamily family{"macsecd_loop_delay_seconds",
                      "How late the daemon ran what was due",
                      MetricType::Histogram,
                      {}};
  auto& histogram = family.metric.emplace_back().histogram;
  for (size_t i = 0; i < delay.counts().size(); ++i) {
    bool const isLast = i == LoopDelay::kBounds.size();
    histogram.sample_count += delay.counts()[i];
    histogram.bucket.push_back(
        {histogram.sample_count,
         isLast ? std::numeric_limits<double>::infinity() : LoopDelay::kBounds[i]});
  }
  histogram.sample_sum = delay.sum();
  return family;
}

MetricFamily freezes(LoopDelay const& delay) {
  MetricFamily family{"macsecd_loop_frozen_total",
                      "How often it was late by more than a second",
                      MetricType::Counter,
                      {}};
  add(family, {}, static_cast<double>(delay.frozen()));
  return family;
}

MetricFamily cures(Macsecd::Host const& host) {
  MetricFamily family{"macsecd_doctor_bound_anew_total",
                      "How often a port that couldn't get well was bound to its profile anew",
                      MetricType::Counter,
                      {}};
  auto const* const counts = host.doctorCounts();
  if (counts) add(family, {}, static_cast<double>(counts->boundAnew));
  return family;
}

MetricFamily refusals(char const* name, char const* help, StreamServer::Counts const& counts) {
  MetricFamily family{name, help, MetricType::Counter, {}};
  std::pair<char const*, uint64_t> const reasons[] = {{"user", counts.refusedUsers},
                                                      {"too-many", counts.turnedAway},
                                                      {"made-room", counts.madeRoom},
                                                      {"slow-reader", counts.slowReaders},
                                                      {"broken-line", counts.brokenLines}};
  for (auto const& [reason, count] : reasons) {
    add(family, {{"reason", reason}}, static_cast<double>(count));
  }
  return family;
}

}  // namespace

Metrics::Metrics(Macsecd::Host& host, LoopDelay const& delay, StreamServer::Counts const& control,
                 StreamServer::Counts const& eapKeys)
    : host_(host), delay_(delay), control_(control), eapKeys_(eapKeys), history_(host) {}

std::vector<MetricFamily> Metrics::Collect() const {
  std::vector<MetricFamily> families = PortFamilies(host_, history_).families();
  families.push_back(delays(delay_));
  families.push_back(freezes(delay_));
  families.push_back(cures(host_));
  families.push_back(refusals("macsecd_control_refusals_total",
                              "Connections and lines that the control socket refused", control_));
  families.push_back(refusals("macsecd_eap_keys_refusals_total",
                              "Connections and lines that the feed of 802.1X keys refused",
                              eapKeys_));
  return families;
}

std::string Metrics::text() const {
  std::ostringstream out;
  prometheus::TextSerializer().Serialize(out, Collect());
  return std::move(out).str();
}

}  // namespace Linux
