#pragma once

// The status tree with its hardware side, whole.

#include "model/CpStatus.h"
#include "model/IntfStatus.h"
#include "model/MacSecIntfStatus.h"
#include "model/MacSecStatus.h"
#include "model/MkaActorStatus.h"
#include "model/MkaPeer.h"
#include "model/MkaPortStatus.h"
#include "model/Status.h"
