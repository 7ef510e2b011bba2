// dp_class.h -- data tables read from files, and what models share.
#pragma once
#include <cmath>

#include "base/halt.h"
#include "base/numeric.h"
#include "models/algebra_functions.h"
#include "models/block_functions.h"
#include "models/control_edges.h"
#include "models/data_table.h"
#include "models/delay_angles.h"
#include "models/delayed_clock.h"
#include "models/digital_clocks.h"
#include "models/digital_counters.h"
#include "models/digital_flipflops.h"
#include "models/digital_gates.h"
#include "models/digital_links.h"
#include "models/digital_outputs.h"
#include "models/direct_torque.h"
#include "models/edges.h"
#include "models/explicit_functions.h"
#include "models/explicit_user.h"
#include "models/explicit_waves.h"
#include "models/frames.h"
#include "models/general_waves.h"
#include "models/heat.h"
#include "models/levels.h"
#include "models/lookup.h"
#include "models/machines.h"
#include "models/model_functions.h"
#include "models/pulse_of_edge.h"
#include "models/rotor_angle.h"
#include "models/sampling.h"
#include "models/source_waves.h"
#include "models/stator_flux.h"
#include "models/toggles.h"

// Read once before the first analysis; a later change of a file name has no effect.
struct dp_class {
    data_tables gbe, xbe;
    delay_angles clock_delay_2;
    mean_slots average_mv_g, rms_mv_g, average_mv_x, rms_mv_x;
    delay_lines delay_2_g, delay_2_x;

    const data_table& of_gbe(int i_gbeu) const { return gbe.of(i_gbeu); }
    const data_table& of_xbe(int i_xbeu) const { return xbe.of(i_xbeu); }
};
