#pragma once

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "host/Host.h"

namespace Macsecd {

/// A configuration on trial: it is in force for a while, and goes again unless somebody keeps it.
///
///     none -> begin -> running -> keep -> kept: it is the one in force
///                              -> time, or the death of the process -> the former one again
///                              -> a file read over it -> replaced
///
/// That it was tried stands in the store before it is in force, so that no start takes it for one
/// that was wanted.
class Trial {
 public:
  enum class State : uint8_t { none, running, kept, wentBack, replaced };
  /// Takes over what the tree doesn't hold of a configuration.
  using Apply = std::function<void(SwitchConfig const&)>;

  /// `file` is the one that a start reads. The host lives longer.
  Trial(Host& host, std::string file, Apply apply)
      : host_(host), file_(std::move(file)), apply_(std::move(apply)) {}

  /// Takes a file over for so many seconds; one with mistakes changes nothing. A fault says that it
  /// can't be read, that there is nothing to go back to, or that the store doesn't take that it is
  /// tried: then nothing has changed.
  Result<std::vector<Diagnostic>> begin(std::string const& path, unsigned seconds);
  /// It stays in force; a fault says that none is on trial.
  Result<> keep();
  /// A start takes another file than the one on trial, or than the one kept last.
  bool isOfAnotherFile() const;
  /// Another configuration has been taken over: what was on trial is so no more.
  void endReplaced();

  State state() const { return state_; }
  /// What was tried last.
  std::string const& path() const { return path_; }
  double secondsLeft() const;

  /// When `run()` wants to be called, in seconds of the world's clock; infinity for never.
  double nextTime() const { return end_; }
  void run();

 private:
  void end(State state);

  Host& host_;
  std::string const file_;
  Apply const apply_;
  State state_ = State::none;
  std::string path_;
  double end_ = std::numeric_limits<double>::infinity();
};

}  // namespace Macsecd

template <>
struct Vesk::EnumNames<Macsecd::Trial::State> {
  using State = Macsecd::Trial::State;
  static constexpr std::pair<State, char const*> names[] = {{State::none, "none"},
                                                            {State::running, "running"},
                                                            {State::kept, "kept"},
                                                            {State::wentBack, "went-back"},
                                                            {State::replaced, "replaced"}};
};
