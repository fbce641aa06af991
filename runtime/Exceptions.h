#pragma once

#include <stdexcept>
#include <string>

namespace Vesk {

/// A value outside its range, or a null where an object has to be.
class RangeException : public std::range_error {
 public:
  using std::range_error::range_error;
};

/// A member asked for again under its key with another constructor parameter.
class NameInUseException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The runtime's own error.
class InternalException : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// A text that isn't the printed form of the value asked for.
class ParseException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

[[noreturn]] void throwRangeException(std::string const& text);
[[noreturn]] void throwNameInUseException(std::string const& text);
[[noreturn]] void throwInternalException(std::string const& text);
[[noreturn]] void throwParseException(std::string const& text);

}  // namespace Vesk
