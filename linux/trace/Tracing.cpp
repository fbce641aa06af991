#include "linux/trace/Tracing.h"

#include <filesystem>

namespace Linux {

namespace {

using Macsecd::Fault;
using Macsecd::Result;

Result<std::unique_ptr<TraceFile>> fileAt(std::string const& path) {
  std::error_code ignored;  // what can't be made is told of the file in it
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
  try {
    return std::make_unique<TraceFile>(path);
  } catch (Fault const& fault) {
    return fault;
  }
}

}  // namespace

Tracing::~Tracing() { static_cast<void>(wishIs({})); }

Result<> Tracing::wishIs(Macsecd::TraceWish const& wish) {
  if (wish.levels != 0 && path_.empty()) {
    return Fault{"there is no file to trace to", "start macsecd with --trace FILE"};
  }
  std::unique_ptr<TraceFile> opened;
  if (wish.levels != 0 && !file_) {
    auto file = fileAt(path_);
    if (!file) return file.fault();
    opened = *std::move(file);
  }
  if (auto known = Macsecd::traceIs(wish); !known) return known;
  if (opened) file_ = std::move(opened);
  if (wish.levels == 0) {
    world_.traceTo(nullptr);
    file_.reset();
  } else {
    world_.traceTo([this](auto const& record) { file_->add(Vesk::now(), record); });
  }
  return {};
}

}  // namespace Linux
