// dp_class.h -- data tables read from files, and what models share.
#pragma once
#include <cmath>

#include "models/edges.h"
#include "models/model_functions.h"
#include "run/halt.h"
#include "run/numeric.h"

// No element uses data tables or per-unit scratch yet.
struct dp_class {};
