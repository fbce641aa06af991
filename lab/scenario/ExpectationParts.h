#pragma once

#include "lab/scenario/Words.h"

namespace Lab {

/// What is expected of a whole switch, read behind its name: nothing if it is of one of its ports,
/// and then nothing is read.
std::optional<decltype(Expectation::what)> parseOfSwitch(std::string const& switchName,
                                                         Words& words, Known const& known);

/// Behind "explains".
Explains parseExplains(PortName const& port, Words& words);

}  // namespace Lab
