#include "codec/FrameCounters.h"

namespace Codec {

void FrameCounterTable::intfIs(Lumo::IntfId intfId) {
  if (rows_.size() <= intfId.index()) rows_.resize(intfId.index() + 1);
  auto& row = rows_[intfId.index()];
  if (!row) row = std::make_unique<Row>();
}

FrameCounterTable::Row* FrameCounterTable::row(Lumo::IntfId intfId) const {
  return intfId.index() < rows_.size() ? rows_[intfId.index()].get() : nullptr;
}

size_t FrameCounterTable::column(Direction direction, Type type, SubType subType) {
  return (2 * static_cast<size_t>(direction) + static_cast<size_t>(type)) * kSubTypes +
         static_cast<size_t>(subType);
}

void FrameCounterTable::inc(Lumo::IntfId intfId, Direction direction, Type type, SubType subType) {
  Row* const own = row(intfId);
  ++(*(own ? own : rows_[0].get()))[column(direction, type, subType)];
}

uint64_t FrameCounterTable::value(Lumo::IntfId intfId, Direction direction, Type type,
                                  SubType subType) const {
  Row* const own = row(intfId);
  return own ? (*own)[column(direction, type, subType)] : 0;
}

}  // namespace Codec
