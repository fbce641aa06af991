#include "lab/report/Captures.h"

namespace Lab {

namespace {

// Letters, digits and hyphens stay; what a file name shouldn't hold becomes an underscore.
std::string fileName(Scenario const& scenario, WireSpec const& wire) {
  std::string name = std::filesystem::path(scenario.file).stem().string();
  for (PortName const& end : wire.ends) name += "." + end.switchName + "-" + end.interface;
  for (char& c : name) {
    bool const plain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (!plain && c != '-' && c != '.') c = '_';
  }
  return name + ".pcap";
}

}  // namespace

Captures::Captures(Scenario const& scenario, std::filesystem::path const& folder) {
  std::error_code error;  // shows when the file is made
  std::filesystem::create_directories(folder, error);
  for (WireSpec const& wire : scenario.wires) {
    paths_.push_back(folder / fileName(scenario, wire));
    files_.emplace_back(paths_.back().string());
    if (!files_.back().good()) {
      throw FileError("can't write " + paths_.back().string() +
                      "; name a folder that may be written with --pcap-dir");
    }
  }
}

void Captures::captured(double time, size_t wire, std::span<uint8_t const> frame) {
  files_[wire].add(time, frame);
}

}  // namespace Lab
