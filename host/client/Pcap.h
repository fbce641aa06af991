#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <span>
#include <string>
#include <vector>

namespace Macsecd {

/// Resolution of the times in a capture.
enum class PcapTimes : uint8_t { microseconds, nanoseconds };

/// Writes a classic pcap file of Ethernet frames, in the byte order of no machine in particular:
/// the same frames at the same times give the same file everywhere.
class PcapWriter {
 public:
  explicit PcapWriter(std::string const& file, PcapTimes times = PcapTimes::nanoseconds);

  /// False once the file couldn't be made or written.
  bool good() const { return out_.good(); }
  /// Adds a frame at a time in seconds, from 0; it is rounded to the resolution of the file.
  void add(double time, std::span<uint8_t const> frame);
  /// Writes out what is still held.
  void flush() { out_.flush(); }

 private:
  void put32(uint32_t word);
  void put16(uint16_t word);

  std::ofstream out_;
  PcapTimes times_;
};

/// One frame of a capture.
struct PcapFrame {
  double time = 0;
  /// How long it was on the wire; more than `octets` holds if the capture cut it.
  size_t length = 0;
  std::vector<uint8_t> octets;
};

/// What a capture holds.
struct Pcap {
  std::vector<PcapFrame> frames;
  /// What is wrong with the file, at which octet of it, and what to do; empty if nothing is. The
  /// frames in front of that place are there.
  std::string fault;
};

/// Reads a classic pcap file of Ethernet frames, of either byte order and resolution.
Pcap readPcap(std::string const& file);

}  // namespace Macsecd
