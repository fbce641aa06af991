#pragma once

// The plain value types of the system, with value semantics: copying copies all fields, two values
// compare by their fields, and a value in an attribute is replaced as a whole. Every string that
// bears a key holds it encoded; no type here interprets it.

#include "model/AssociationNumber.h"
#include "model/CipherSuite.h"
#include "model/DataPath.h"
#include "model/Keys.h"
#include "model/ParameterSets.h"
#include "model/Sci.h"
#include "platform/MessageCounterTypes.h"
