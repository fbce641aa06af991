#include "host/state/UnreadableKeys.h"

#include <fmt/format.h>

#include "platform/WardcodeLib.h"
#include "runtime/Log.h"

namespace Macsecd {

namespace {

Vesk::LogHandle const MACSECD_KEY_UNREADABLE(
    "MACSECD_KEY_UNREADABLE", Vesk::LogSeverity::error, "%s: %s",
    "A key in the state of the switch was stored under another key of the host, or was damaged. It "
    "counts as no key, and so does each further one, which isn't logged.",
    "Do what the message says.", 0.0, 1.0);

bool isUnreadable(Vesk::String8 const& stored) {
  return !stored.empty() && WardcodeLib::doDecodeKey(stored).empty();
}

/// Keys in words, in the order in which they are found.
class List {
 public:
  void look(Macsec::Cak const& key, Lumo::IntfId intfId) {
    if (isUnreadable(key.cak())) add(fmt::format("key {}", key.ckn().view()), intfId);
  }
  void look(Macsec::Sak const& sak, Lumo::IntfId intfId) {
    if (isUnreadable(sak.key())) add(fmt::format("SAK {}", sak.keyNum()), intfId);
  }
  std::string const& text() const { return text_; }

 private:
  void add(std::string const& what, Lumo::IntfId intfId) {
    if (!text_.empty()) text_ += ", ";
    text_ += fmt::format("{} of {}", what, intfId.stringValue().view());
  }

  std::string text_;
};

}  // namespace

std::string unreadableKeys(Macsec::Status const& status) {
  List list;
  for (Macsec::IntfStatus& port : status.intfStatus()) {
    list.look(port.key(), port.intfId());
    list.look(port.defaultKey(), port.intfId());
  }
  for (Macsec::CpStatus& port : status.cpStatus()) list.look(port.txSak(), port.intfId());
  return list.text();
}

UnreadableKeyTeller::UnreadableKeyTeller(StatusAtWork status)
    : world_(Vesk::world()), status_(std::move(status)) {
  WardcodeLib::decodeFailureSinkIs([this](std::string_view what) { tell(what); });
}

UnreadableKeyTeller::~UnreadableKeyTeller() {
  Vesk::WorldScope const scope(world_);
  WardcodeLib::decodeFailureSinkIs(nullptr);
}

// The failure is reported already, so that those met here are counted and no more.
void UnreadableKeyTeller::tell(std::string_view what) const {
  Vesk::Ptr<Macsec::Status const> const status = status_();
  std::string const keys = status ? unreadableKeys(*status) : "";
  Vesk::log(MACSECD_KEY_UNREADABLE, keys.empty() ? "A key that stands in no port" : keys, what);
}

}  // namespace Macsecd
