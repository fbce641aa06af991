#pragma once

#include <string>

#include "model/Keys.h"
#include "model/Sci.h"

namespace Macsecd {

/// "02:00:00:00:00:01/1": address and port number.
std::string sciText(Macsec::Sci const& sci);
/// Whether no key is there yet, whatever association number it is to have.
bool isNone(Macsec::Sak const& sak);
/// "5e6f7081:2", as the syslog lines call a key: the end of its identifier, and its number.
std::string sakText(Macsec::Sak const& sak);
/// "key 5e6f7081:2", or "the next key" as long as there is none.
std::string keyText(Macsec::Sak const& sak);

}  // namespace Macsecd
