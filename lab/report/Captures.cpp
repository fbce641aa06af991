#include "lab/report/Captures.h"

namespace Lab {

namespace {

std::string captureName(Scenario const& scenario, WireSpec const& wire) {
  std::string ends;
  for (PortName const& end : wire.ends) ends += "." + end.switchName + "-" + end.interface;
  return fileName(scenario, ends + ".pcap");
}

}  // namespace

Captures::Captures(Scenario const& scenario, std::filesystem::path const& folder) {
  std::error_code error;  // shows when the file is made
  std::filesystem::create_directories(folder, error);
  for (WireSpec const& wire : scenario.wires) {
    paths_.push_back(folder / captureName(scenario, wire));
    files_.emplace_back(paths_.back().string());
    if (!files_.back().good()) throw FileError(paths_.back(), "--pcap-dir");
  }
}

void Captures::captured(double time, size_t wire, std::span<uint8_t const> frame) {
  files_[wire].add(time, frame);
}

}  // namespace Lab
