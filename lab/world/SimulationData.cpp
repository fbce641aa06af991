#include <algorithm>

#include "lab/world/Simulation.h"

// Frames of data: a test flow of numbered frames from each port through which traffic may pass.

namespace Lab {

namespace {

// Between local experimental stations (IEEE 802, 9.2.3).
constexpr uint16_t kEtherType = 0x88b5;
constexpr size_t kNumberAt = 14;
constexpr size_t kSize = 64;

Frame dataFrame(Lumo::EthAddr const& source, uint64_t number) {
  Frame frame(kSize);
  std::fill_n(frame.begin(), 6, uint8_t{0xff});
  std::ranges::copy(source.bytes(), frame.begin() + 6);
  frame[12] = kEtherType >> 8;
  frame[13] = kEtherType & 0xff;
  for (size_t i = 0; i < 8; ++i) {
    frame[kNumberAt + i] = static_cast<uint8_t>(number >> (56 - 8 * i));
  }
  return frame;
}

}  // namespace

void Simulation::sendDueData() {
  if (!notAfter(nextData_, clock_.now)) return;
  nextData_ += *scenario_.dataEvery;
  for (size_t wire = 0; wire < wires_.size(); ++wire) {
    for (size_t end = 0; end < scenario_.wires[wire].ends.size(); ++end) sendData(wire, end);
  }
}

void Simulation::sendData(size_t wire, size_t end) {
  PortName const& from = scenario_.wires[wire].ends[end];
  Switch& sender = switchOf(from.switchName);
  Lumo::IntfId const intfId(from.interface.c_str());
  if (!sender.passes(intfId)) return;
  uint64_t const number = ++dataSent_[from];
  SecY* const secY = sender.secY(intfId);
  auto frame = secY ? secY->protect(dataFrame(sender.spec().mac, number)) : std::nullopt;
  std::span<uint8_t const> const leaves =
      frame ? std::span<uint8_t const>(*frame) : std::span<uint8_t const>();
  for (Audience* audience : audience_) audience->dataSent(clock_.now, {from, number, leaves});
  if (!frame || wires_[wire].isCut(end)) return;
  double const arrives = clock_.now + scenario_.wires[wire].delay.value_or(scenario_.frameDelay);
  DataInFlight flight{arrives, clock_.now, wire, end, number, std::move(*frame)};
  auto const isLater = [&](DataInFlight const& other) { return other.time > arrives; };
  dataInFlight_.insert(std::ranges::find_if(dataInFlight_, isLater), std::move(flight));
}

void Simulation::deliverDueData() {
  while (!dataInFlight_.empty() && notAfter(dataInFlight_.front().time, clock_.now)) {
    DataInFlight const flight = std::move(dataInFlight_.front());
    dataInFlight_.pop_front();
    for (size_t end = 0; end < scenario_.wires[flight.wire].ends.size(); ++end) {
      if (end != flight.from) deliverData(flight, end);
    }
  }
}

void Simulation::deliverData(DataInFlight const& flight, size_t end) {
  auto const& ends = scenario_.wires[flight.wire].ends;
  Switch& receiver = switchOf(ends[end].switchName);
  Lumo::IntfId const intfId(ends[end].interface.c_str());
  if (!receiver.isUp(intfId)) return;
  Frame got;
  SecY* const secY = receiver.secY(intfId);
  auto const verdict = secY ? secY->validate(flight.frame, got) : SecY::Verdict::noSa;
  Lumo::EthAddr const& source = switchOf(ends[flight.from].switchName).spec().mac;
  DataArrived const arrived{ends[flight.from],
                            ends[end],
                            flight.number,
                            flight.sentAt,
                            flight.frame,
                            verdict,
                            receiver.passes(intfId),
                            got == dataFrame(source, flight.number)};
  for (Audience* audience : audience_) audience->dataArrived(clock_.now, arrived);
}

}  // namespace Lab
