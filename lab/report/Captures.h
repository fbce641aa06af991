#pragma once

#include <filesystem>
#include <vector>

#include "host/client/Pcap.h"
#include "lab/report/Files.h"
#include "lab/world/Event.h"

namespace Lab {

/// Writes a capture of each wire of a scenario: the frames as they leave their ports, with virtual
/// time stamps, whatever the wire does to them then.
class Captures final : public Audience {
 public:
  /// Makes the folder and the files. Throws FileError that names what can't be written.
  Captures(Scenario const& scenario, std::filesystem::path const& folder);

  void captured(double time, size_t wire, std::span<uint8_t const> frame) override;
  std::vector<std::filesystem::path> const& paths() const { return paths_; }

 private:
  std::vector<std::filesystem::path> paths_;
  std::vector<Macsecd::PcapWriter> files_;
};

}  // namespace Lab
