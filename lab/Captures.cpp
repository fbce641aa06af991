#include "lab/Captures.h"

#include <cmath>

#include "lab/Clock.h"

namespace Lab {

namespace {

// The classic format, in the byte order of this machine as its magic number tells readers.
struct FileHeader {
  uint32_t magic = 0xa1b2c3d4;
  uint16_t major = 2;
  uint16_t minor = 4;
  int32_t zone = 0;
  uint32_t accuracy = 0;
  uint32_t longest = 65535;
  uint32_t linkType = 1;  // Ethernet
};
struct RecordHeader {
  uint32_t seconds;
  uint32_t microseconds;
  uint32_t kept;
  uint32_t length;
};

template <class Header>
void put(std::ofstream& out, Header const& header) {
  out.write(reinterpret_cast<char const*>(&header), sizeof header);
}

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
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  for (WireSpec const& wire : scenario.wires) {
    paths_.push_back(folder / fileName(scenario, wire));
    files_.emplace_back(paths_.back(), std::ios::binary | std::ios::trunc);
    if (!files_.back()) {
      throw FileError("can't write " + paths_.back().string() +
                      "; name a folder that may be written with --pcap-dir");
    }
    put(files_.back(), FileHeader{});
  }
}

void Captures::captured(double time, size_t wire, std::span<uint8_t const> frame) {
  auto const total = static_cast<uint64_t>(std::llround(time * 1e6));
  auto const size = static_cast<uint32_t>(frame.size());
  put(files_[wire], RecordHeader{static_cast<uint32_t>(total / 1'000'000),
                                 static_cast<uint32_t>(total % 1'000'000), size, size});
  files_[wire].write(reinterpret_cast<char const*>(frame.data()), size);
}

}  // namespace Lab
