// devices.h -- what the semiconductors among the electrical elements share.
#pragma once
#include "models/compact_mosfet.h"
#include "models/junctions.h"
