#include "linux/trace/Tracing.h"

#include <filesystem>

namespace Linux {

Tracing::~Tracing() { wishIs({}); }

void Tracing::wishIs(Macsecd::TraceWish const& wish) {
  if (wish.levels != 0 && path_.empty()) {
    throw Macsecd::Fault{"there is no file to trace to", "start macsecd with --trace FILE"};
  }
  std::unique_ptr<TraceFile> opened;
  if (wish.levels != 0 && !file_) {
    std::error_code ignored;  // what can't be made is told of the file in it
    std::filesystem::create_directories(std::filesystem::path(path_).parent_path(), ignored);
    opened = std::make_unique<TraceFile>(path_);
  }
  Macsecd::traceIs(wish);
  if (opened) file_ = std::move(opened);
  if (wish.levels == 0) {
    world_.traceTo(nullptr);
    file_.reset();
  } else {
    world_.traceTo([this](auto const& record) { file_->add(Vesk::now(), record); });
  }
}

}  // namespace Linux
