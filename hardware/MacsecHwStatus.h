#pragma once

// What the hardware reports, and the state machine that merges it.

#include "hardware/HwStatusSm.h"
#include "model/MacSecIntfStatus.h"
#include "model/MacSecStatus.h"
