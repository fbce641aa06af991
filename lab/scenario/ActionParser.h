#pragma once

#include "lab/scenario/Words.h"

namespace Lab {

/// Reads what stands behind "at TIME", up to the end of the line. Keys and marks that the action
/// brings become known. Throws LineError.
Action parseAction(Words& words, double at, Known& known);

}  // namespace Lab
