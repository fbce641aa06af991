#include "runtime/Exceptions.h"

namespace Vesk {

void throwRangeException(std::string const& text) { throw RangeException(text); }
void throwNameInUseException(std::string const& text) { throw NameInUseException(text); }
void throwInternalException(std::string const& text) { throw InternalException(text); }
void throwParseException(std::string const& text) { throw ParseException(text); }

}  // namespace Vesk
