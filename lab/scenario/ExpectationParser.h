#pragma once

#include "lab/scenario/Words.h"

namespace Lab {

/// Reads what stands behind "expect", up to the end of the line. Throws LineError.
Expectation parseExpectation(Words& words, When const& when, Known const& known);

}  // namespace Lab
