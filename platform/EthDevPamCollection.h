#pragma once

#include <cstdint>

#include "runtime/Describe.h"
#include "runtime/Reactor.h"

namespace Interface {

/// The packet access points on Ethernet devices: only its identity is used here.
class EthDevPamCollection final : public Vesk::DescribedEntity<EthDevPamCollection> {
 public:
  explicit EthDevPamCollection(Vesk::Name const& name) : DescribedEntity(name) {}
  static Vesk::Ptr<EthDevPamCollection> EthDevPamCollectionIs(Vesk::Name const& name) {
    return Vesk::makeActive<EthDevPamCollection>(name);
  }

  template <class V>
  static void describe(V&& v) {}

 private:
};

}  // namespace Interface
