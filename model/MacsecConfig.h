#pragma once

// The configuration tree, whole.

#include "model/Config.h"
#include "model/Profile.h"
