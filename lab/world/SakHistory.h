#pragma once

#include <map>
#include <string>

#include "lab/scenario/Scenario.h"
#include "lab/world/Event.h"
#include "model/Keys.h"

namespace Lab {

/// Which SAKs the ports have sent with: how often another one took over, and what stood at marks.
class SakHistory final : public Audience {
 public:
  struct Record {
    std::optional<KeyName> last;
    uint32_t rotations = 0;
  };
  struct Marked {
    Macsec::Sak sak = Macsec::Sak();
    uint32_t rotations = 0;
  };

  void happened(Event const& event) override {
    auto const* const asked = std::get_if<SaAsked>(&event.what);
    if (!asked || !asked->transmit || !asked->key) return;
    Record& record = records_[{event.switchName, asked->interface}];
    if (record.last && record.last != asked->key) ++record.rotations;
    record.last = asked->key;
  }
  uint32_t rotations(PortName const& port) const {
    auto const record = records_.find(port);
    return record == records_.end() ? 0 : record->second.rotations;
  }
  void markIs(std::string const& name, PortName const& port, Macsec::Sak const& sak) {
    marks_[name][port] = {sak, rotations(port)};
  }
  Marked marked(std::string const& name, PortName const& port) const {
    auto const mark = marks_.find(name);
    if (mark == marks_.end()) return Marked();
    auto const marked = mark->second.find(port);
    return marked == mark->second.end() ? Marked() : marked->second;
  }

 private:
  std::map<PortName, Record> records_;
  std::map<std::string, std::map<PortName, Marked>> marks_;
};

}  // namespace Lab
