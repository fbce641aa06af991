#pragma once

#include <memory>
#include <string>

#include "host/control/TraceWish.h"
#include "linux/process/ProcessWorld.h"
#include "linux/trace/TraceFile.h"

namespace Linux {

/// Turns the traces of a process on and off. While they are off there is no file open, and a
/// statement costs a load and a branch.
class Tracing {
 public:
  /// The statements of the switch in `world`, which has to outlive this, go to the file at `path`.
  Tracing(ProcessWorld& world, std::string path) : world_(world), path_(std::move(path)) {}
  ~Tracing();
  Tracing(Tracing const&) = delete;
  Tracing& operator=(Tracing const&) = delete;

  /// A fault says that there is no such handle, or why the file can't be had; all stays as it was.
  Macsecd::Result<> wishIs(Macsecd::TraceWish const& wish);

 private:
  ProcessWorld& world_;
  std::string const path_;
  std::unique_ptr<TraceFile> file_;
};

}  // namespace Linux
