#pragma once

#include "lab/scenario/Words.h"

namespace Lab {

// Parts of lines that are about refused frames and their counters. They throw LineError.

/// Behind "send a frame with".
SendFrame parseSendFrame(Words& words, Known const& known);
/// Behind "counts".
HasCounted parseCounts(PortName const& port, Words& words);

}  // namespace Lab
