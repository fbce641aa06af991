#pragma once

#include <concepts>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "runtime/Assert.h"

namespace Macsecd {

/// What is wrong, and what to do about it. Never holds the text of a key.
struct Fault {
  std::string what;
  std::string remedy;

  /// Both in one sentence, as it is logged; the first alone where there is nothing to do.
  std::string text() const { return remedy.empty() ? what : what + "; " + remedy; }
  friend bool operator==(Fault const&, Fault const&) = default;
};

/// What came of something that a file, a peer, an operator or the kernel can make fail: its value,
/// or the fault. True when all went well.
template <class T = void>
class [[nodiscard]] Result {
 public:
  template <std::convertible_to<T> U>
  Result(U value) : outcome_(std::in_place_index<0>, std::move(value)) {}
  Result(Fault fault) : outcome_(std::in_place_index<1>, std::move(fault)) {}

  explicit operator bool() const { return outcome_.index() == 0; }
  /// The value, of one that went well.
  T const& operator*() const& { return value(); }
  T& operator*() & { return const_cast<T&>(value()); }
  T&& operator*() && { return std::move(const_cast<T&>(value())); }
  T const* operator->() const { return &value(); }
  T* operator->() { return &**this; }
  /// Of one that didn't.
  Fault const& fault() const {
    VESK_ASSERT(!*this);
    return *std::get_if<1>(&outcome_);
  }

 private:
  T const& value() const {
    VESK_ASSERT(*this);
    return *std::get_if<0>(&outcome_);
  }

  std::variant<T, Fault> outcome_;
};

/// The same of something that has no value: `return {};` when all went well.
template <>
class [[nodiscard]] Result<void> {
 public:
  Result() = default;
  Result(Fault fault) : fault_(std::move(fault)) {}

  explicit operator bool() const { return !fault_; }
  Fault const& fault() const {
    VESK_ASSERT(fault_.has_value());
    return *fault_;
  }

 private:
  std::optional<Fault> fault_;
};

}  // namespace Macsecd
