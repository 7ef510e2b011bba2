// devices.h -- what the semiconductors among the electrical elements share.
#pragma once
#include "models/diode_elements.h"
#include "models/gummel_poon.h"
#include "models/junctions.h"
#include "models/voltage_limits.h"
