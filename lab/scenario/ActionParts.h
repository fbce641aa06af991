#pragma once

#include "lab/scenario/Words.h"

namespace Lab {

// The kinds of actions, each read behind its first words.

/// The fault whose word stands here.
std::optional<FaultKind> takeFault(Words& words);
WireFault parseFault(FaultKind kind, Words& words, Known const& known);
/// Behind "set" and "remove": what the configuration says.
decltype(Action::what) parseSet(Words& words, Known& known);
KeyChange parseRemove(Words& words, Known const& known);
/// Behind "publish" and "withdraw". Of a published key the last word is the key itself.
Dot1xKeyChange parsePublish(Words& words, Known& known);
Dot1xKeyChange parseWithdraw(Words& words, Known const& known);
/// Behind "replay": recorded frames.
Replay parseReplay(Words& words, Known const& known);
/// Behind "delete interface" and "make interface".
InterfaceChange parseInterface(bool isThere, Words& words, Known const& known);
/// Behind "reload". What the file names is known from then on.
Reload parseReload(Words& words, Known& known);

}  // namespace Lab
