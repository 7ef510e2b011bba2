// devices.h -- what electrical elements share beside the functions of all: reactances, semiconductors, transformers,
// machines, switches.
#pragma once
#include <cstring>

#include "models/batteries.h"
#include "models/bsim1.h"
#include "models/compact_mosfet.h"
#include "models/diode_elements.h"
#include "models/gummel_poon.h"
#include "models/jfet.h"
#include "models/junctions.h"
#include "models/machine_rows.h"
#include "models/mos_level1.h"
#include "models/mos_level3.h"
#include "models/norton.h"
#include "models/power_switches.h"
#include "models/reactances.h"
#include "models/voltage_limits.h"
#include "models/windings.h"
