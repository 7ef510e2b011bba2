// devices.h -- what the semiconductors among the electrical elements share.
#pragma once
#include <cstring>

#include "models/junctions.h"
#include "models/mos_level1.h"
#include "models/mos_level3.h"
