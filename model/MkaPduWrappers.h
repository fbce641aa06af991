#pragma once

// The wrappers that point an overlay at a packet, in the order of the frame.

#include "model/BasicParameterSetWrapper.h"
#include "model/DistSakSetWrapper.h"
#include "model/EapolWrapper.h"
#include "model/PeerInfoParameterWrapper.h"
#include "model/PeerListSetWrapper.h"
#include "model/SakUseSetWrapper.h"
