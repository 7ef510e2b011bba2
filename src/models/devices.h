// devices.h -- what electrical elements alone share.
#pragma once
#include <cstring>

#include "models/batteries.h"
#include "models/bsim1.h"
#include "models/compact_mosfet.h"
#include "models/diode_elements.h"
#include "models/gummel_poon.h"
#include "models/jfet.h"
#include "models/junctions.h"
#include "models/mos_level1.h"
#include "models/mos_level3.h"
#include "models/norton.h"
#include "models/reactances.h"
#include "models/voltage_limits.h"
