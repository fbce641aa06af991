#include "host/client/Pcap.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <optional>

namespace Macsecd {

namespace {

constexpr uint32_t kMicroseconds = 0xa1b2c3d4;
constexpr uint32_t kNanoseconds = 0xa1b23c4d;
constexpr uint32_t kEthernet = 1;
constexpr uint32_t kSnapLength = 262144;
constexpr size_t kFileHead = 24;
constexpr size_t kFrameHead = 16;

double perSecond(PcapTimes times) { return times == PcapTimes::nanoseconds ? 1e9 : 1e6; }

uint32_t swapped(uint32_t word) { return __builtin_bswap32(word); }

/// The octets of a file, word by word.
class PcapReader {
 public:
  explicit PcapReader(std::string octets) : octets_(std::move(octets)) {}

  Pcap read() {
    if (!readHead()) return std::move(pcap_);
    while (at_ < octets_.size() && readFrame()) {
    }
    return std::move(pcap_);
  }

 private:
  bool readHead() {
    if (octets_.size() < kFileHead) return fault("ends within the head of a pcap file");
    uint32_t const magic = word(0);
    isSwapped_ = magic == swapped(kMicroseconds) || magic == swapped(kNanoseconds);
    uint32_t const kind = word(0);
    if (kind != kMicroseconds && kind != kNanoseconds) {
      return fault("is no classic pcap file; convert it with: editcap -F pcap");
    }
    times_ = kind == kNanoseconds ? PcapTimes::nanoseconds : PcapTimes::microseconds;
    at_ = 20;
    uint32_t const link = word(20) & 0x0fffffff;
    if (link != kEthernet) {
      return fault(fmt::format("says link type {}; only Ethernet, 1, is understood", link));
    }
    at_ = kFileHead;
    return true;
  }

  bool readFrame() {
    if (octets_.size() - at_ < kFrameHead) return fault("ends within the head of a frame");
    PcapFrame frame;
    frame.time = word(at_) + word(at_ + 4) / perSecond(times_);
    size_t const size = word(at_ + 8);
    frame.length = word(at_ + 12);
    if (size > kSnapLength) return fault(fmt::format("says a frame of {} octets", size));
    if (octets_.size() - at_ - kFrameHead < size) return fault("begins a frame that is cut off");
    auto const from = octets_.begin() + static_cast<ptrdiff_t>(at_ + kFrameHead);
    frame.octets.assign(from, from + static_cast<ptrdiff_t>(size));
    pcap_.frames.push_back(std::move(frame));
    at_ += kFrameHead + size;
    return true;
  }

  bool fault(std::string const& what) {
    pcap_.fault = fmt::format("octet {} {}", at_, what);
    return false;
  }

  uint32_t word(size_t at) const {
    uint32_t w = 0;
    for (size_t i = 4; i-- > 0;) w = w << 8 | static_cast<uint8_t>(octets_[at + i]);
    return isSwapped_ ? swapped(w) : w;
  }

  std::string octets_;
  size_t at_ = 0;
  bool isSwapped_ = false;
  PcapTimes times_ = PcapTimes::microseconds;
  Pcap pcap_;
};

}  // namespace

PcapWriter::PcapWriter(std::string const& file, PcapTimes times)
    : out_(file, std::ios::binary | std::ios::trunc), times_(times) {
  put32(times == PcapTimes::nanoseconds ? kNanoseconds : kMicroseconds);
  put16(2);
  put16(4);
  put32(0);
  put32(0);
  put32(kSnapLength);
  put32(kEthernet);
}

void PcapWriter::add(double time, std::span<uint8_t const> frame) {
  auto const unit = static_cast<uint64_t>(perSecond(times_));
  auto const ticks = static_cast<uint64_t>(std::llround(time * perSecond(times_)));
  put32(static_cast<uint32_t>(ticks / unit));
  put32(static_cast<uint32_t>(ticks % unit));
  put32(static_cast<uint32_t>(frame.size()));
  put32(static_cast<uint32_t>(frame.size()));
  out_.write(reinterpret_cast<char const*>(frame.data()),
             static_cast<std::streamsize>(frame.size()));
}

void PcapWriter::put32(uint32_t word) {
  put16(static_cast<uint16_t>(word));
  put16(static_cast<uint16_t>(word >> 16));
}

void PcapWriter::put16(uint16_t word) {
  out_.put(static_cast<char>(word & 0xff));
  out_.put(static_cast<char>(word >> 8));
}

Pcap readPcap(std::string const& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return {{}, "can't be opened; give the name of a pcap file that you may read"};
  std::string octets{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  if (in.bad()) return {{}, "can't be read"};
  return PcapReader(std::move(octets)).read();
}

}  // namespace Macsecd
