#pragma once

// Everything that lies on the octets of an MKPDU, in the order of the frame.

#include "model/BasicParameterSet.h"
#include "model/DistCakSet.h"
#include "model/DistSakSet.h"
#include "model/Eapol.h"
#include "model/IcvIndicatorSet.h"
#include "model/PeerListSet.h"
#include "model/SakUseSet.h"
