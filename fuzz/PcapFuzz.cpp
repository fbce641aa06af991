#include <sys/mman.h>
#include <unistd.h>

#include <sstream>
#include <string>

#include "fuzz/FuzzedSwitch.h"
#include "fuzz/Require.h"
#include "host/client/Pcap.h"
#include "lab/report/Decode.h"

// Any octets as a capture: it is read and decoded, and what was read can be written and read again.

namespace {

using Fuzz::require;

// A file in memory.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("capture", 0)) { require(descriptor_ >= 0, "no memory"); }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(MemoryFile const&) = delete;
  MemoryFile& operator=(MemoryFile const&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
  void write(uint8_t const* octets, size_t size) const {
    auto const written = ::write(descriptor_, octets, size);
    require(written == static_cast<ssize_t>(size), "no room");
  }

 private:
  int const descriptor_;
};

void writeAndReadAgain(Macsecd::Pcap const& pcap) {
  MemoryFile const file;
  {
    Macsecd::PcapWriter writer(file.path());
    for (auto const& frame : pcap.frames) writer.add(frame.time, frame.octets);
    writer.flush();
    require(writer.good(), "a capture can't be written");
  }
  auto const again = Macsecd::readPcap(file.path());
  require(again.fault.empty(), "a capture that was written can't be read");
  require(again.frames.size() == pcap.frames.size(), "a capture has other frames");
  for (size_t i = 0; i < again.frames.size(); ++i) {
    require(again.frames[i].octets == pcap.frames[i].octets, "a frame of a capture has changed");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* octets, size_t size) {
  Fuzz::FuzzWorld world;
  Vesk::WorldScope const scope(world);
  MemoryFile const file;
  file.write(octets, size);
  auto const pcap = Macsecd::readPcap(file.path());
  size_t held = 0;
  for (auto const& frame : pcap.frames) held += frame.octets.size();
  require(held <= size, "a capture has more octets than its file");
  std::ostringstream out, err;
  bool const showsKeys = size % 2 == 0;
  int const status = Lab::decode(file.path(), {{Fuzz::kCkn, Fuzz::kCak}}, showsKeys, out, err);
  require((status == 2) == !pcap.fault.empty(), "the status isn't that of the file");
  writeAndReadAgain(pcap);
  return 0;
}
