#pragma once

#include <cstdint>

/// Where the memory of homes comes from: addresses for all homes of the process, reserved together,
/// so that an address alone tells whether an object is at home. They cost nothing before they are
/// used.
namespace Vesk::HomeBlocks {

/// A block of `Home::kBlock` octets at a multiple of that; null if there is no more.
void* take();
void give(void* block);
/// The first of `Home::kReserved` addresses, from the first `take()` that gave a block on.
uintptr_t begin();

}  // namespace Vesk::HomeBlocks
