#pragma once

#include <string>

#include "host/Host.h"
#include "host/text/KeyText.h"

namespace Macsecd {

/// What came of asking for a new SAK.
struct Rekeyed {
  std::string sak;     ///< the new key, as "5e6f7081:3"; empty when it has to wait
  double seconds = 0;  ///< until it is made
};

/// Has the key server make a new SAK for a port that is secured, without the loss of a frame. There
/// is at most one in an MKA life time: a further one waits for the rest of it. A fault says why
/// there is none to be had, above all where another switch is the key server.
Result<Rekeyed> rekey(Host& host, Lumo::IntfId intfId);

}  // namespace Macsecd
