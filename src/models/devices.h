// devices.h -- what the semiconductors among the electrical elements share.
#pragma once
#include "models/bsim1.h"
#include "models/jfet.h"
#include "models/junctions.h"
#include "models/voltage_limits.h"
