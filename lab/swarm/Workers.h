#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Lab {

/// Processes that work side by side, each a copy of this one, and tell in lines. What ends one of
/// them ends none of the others.
class Workers {
 public:
  /// Tells a line.
  using Tell = std::function<void(std::string const&)>;
  /// What worker `number` does.
  using Work = std::function<void(uint32_t number, Tell const& tell)>;
  /// A worker has told a line, or has ended: with this status as wait(2) has it.
  using Heard = std::function<void(uint32_t number, std::string const& line)>;
  using Ended = std::function<void(uint32_t number, int status)>;

  explicit Workers(Work work) : work_(std::move(work)) {}

  /// Another process begins. Throws `std::system_error` if the machine refuses it.
  void start(uint32_t number);
  /// Until all have ended. `ended` may start one anew.
  void listen(Heard const& heard, Ended const& ended);

 private:
  struct Worker {
    uint32_t number;
    int pid;
    int pipe;
    std::string rest;  ///< of what was told, without its end
  };

  void read(Worker& worker, Heard const& heard, bool& isOver);

  Work const work_;
  std::vector<Worker> workers_;
};

/// Whether this ends the process that does it, other than by its return.
bool endsItsProcess(std::function<void()> const& work);

}  // namespace Lab
