#include "linux/client/ControlFollow.h"

#include <fmt/format.h>

#include <ostream>

#include "host/client/ControlText.h"
#include "host/client/EventText.h"
#include "host/client/Pcap.h"
#include "host/text/ControlProtocol.h"
#include "linux/client/ControlClient.h"
#include "linux/client/ExitStatus.h"
#include "linux/process/WallClock.h"

namespace Linux {

namespace {

std::string requestOf(char const* command, ControlFollow const& follow) {
  Macsecd::Json request = Macsecd::requestOf(command);
  if (!follow.interface.empty()) request["interface"] = follow.interface;
  return Macsecd::jsonText(request);
}

/// Follows to the end: `take` gets each line behind the answer, and returns whether it was good.
int followed(char const* command, ControlFollow const& follow, std::ostream& err,
             std::function<bool(std::string_view)> const& take) {
  int status = 0;
  bool isAnswered = false;
  size_t taken = 0;
  auto const takeAny = [&](std::string_view line) {
    if (std::exchange(isAnswered, true)) {
      if (!take(line)) status = kRefused;
      return status == 0 && (follow.count == 0 || ++taken < follow.count);
    }
    auto const reading = Macsecd::readingOf(Macsecd::ControlView::done, line);
    err << reading.text << std::flush;
    if (!reading.isGood) status = kRefused;
    return reading.isGood;
  };
  auto const result = followAt(follow.socket, requestOf(command, follow), takeAny, follow.seconds);
  if (result) return status;
  err << "macsecctl: " << result.fault().text() << '\n';
  return kNoAnswer;
}

}  // namespace

int showEvents(ControlFollow const& follow, std::ostream& out, std::ostream& err) {
  return followed("watch", follow, err, [&](std::string_view line) {
    auto const event = Macsecd::eventLineOf(line);
    if (follow.json || !event) {
      out << line << std::endl;
    } else {
      out << wallTimeText(event->time) << "  " << event->interface << "  " << event->words
          << std::endl;
    }
    return out.good();
  });
}

int captureFrames(ControlFollow const& follow, std::string const& file, std::ostream& out,
                  std::ostream& err) {
  Macsecd::PcapWriter writer(file);
  writer.flush();
  size_t frames = 0;
  auto const take = [&](std::string_view line) {
    if (auto const frame = Macsecd::capturedFrameOf(line)) {
      writer.add(frame->time, frame->octets);
      ++frames;
    }
    writer.flush();
    return writer.good();
  };
  int const status = writer.good() ? followed("capture", follow, err, take) : kRefused;
  if (!writer.good()) {
    err << "macsecctl: " << file << ": can't be written; name a file that may be, on a disk with "
        << "room\n";
  }
  nlohmann::ordered_json const told = {{"file", file}, {"frames", frames}};
  out << (follow.json ? Macsecd::jsonText(told) : fmt::format("{} frames in {}", frames, file))
      << '\n';
  return status;
}

}  // namespace Linux
