#include "runtime/IntfId.h"

#include <deque>
#include <map>
#include <ostream>
#include <string_view>

namespace Lumo {

namespace {

struct Named {
  Vesk::String8 name;
  uint32_t hash;
};

// Never destroyed: static objects that hold interface ids may outlive any order of destruction.
struct NameTable {
  std::deque<Named> byIndex{{Vesk::String8(), Vesk::String8().hash()}};
  std::map<std::string_view, uint32_t> byName{{std::string_view(), 0}};
};

NameTable& nameTable() {
  alignas(NameTable) static unsigned char storage[sizeof(NameTable)];
  static NameTable* table = ::new (storage) NameTable;
  return *table;
}

}  // namespace

IntfId::IntfId(Vesk::String8 const& name) {
  NameTable& table = nameTable();
  auto known = table.byName.find(name.view());
  if (known != table.byName.end()) {
    index_ = known->second;
    return;
  }
  index_ = static_cast<uint32_t>(table.byIndex.size());
  table.byIndex.push_back({name, name.hash()});
  table.byName.emplace(table.byIndex.back().name.view(), index_);
}

Vesk::String8 const& IntfId::stringValue() const { return nameTable().byIndex[index_].name; }

uint32_t IntfId::hash() const { return nameTable().byIndex[index_].hash; }

std::ostream& operator<<(std::ostream& out, IntfId id) { return out << id.stringValue(); }

}  // namespace Lumo
