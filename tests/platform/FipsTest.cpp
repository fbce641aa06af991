#include "platform/Fips.h"
