// dp_class.h -- data tables read from files, and what models share.
#pragma once
#include <cmath>
#include <vector>

#include "base/halt.h"
#include "base/numeric.h"
#include "models/block_functions.h"
#include "models/control_edges.h"
#include "models/digital_clocks.h"
#include "models/digital_counters.h"
#include "models/digital_flipflops.h"
#include "models/digital_gates.h"
#include "models/digital_links.h"
#include "models/digital_outputs.h"
#include "models/edges.h"
#include "models/explicit_functions.h"
#include "models/frames.h"
#include "models/model_functions.h"
#include "models/sampling.h"
#include "models/source_waves.h"

// Two columns of a data file, x ascending.
struct data_table {
    std::vector<double> x, y;
};

// Read once before the first analysis; a later change of a file name has no effect.
struct dp_class {
    std::vector<data_table> table;
    std::vector<int> gbe_table;  // [general units] its table; -1
    mean_slots average_mv_x, rms_mv_x;
    delay_lines delay_2_x;

    const data_table& of_gbe(int i_gbeu) const {
        return table[static_cast<std::size_t>(gbe_table[static_cast<std::size_t>(i_gbeu)])];
    }
};
