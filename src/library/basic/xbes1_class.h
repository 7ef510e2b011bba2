// xbes1_class.h -- where a model of an explicit block leaves its partial derivatives.
#pragma once
#include "library/jac_tables.h"

// Rows: functions f, g and h of the block. Columns: its variables (inputs, then outputs), general variables, auxiliary
// variables, branch voltages, branch currents. The solver of networks reads those of h.
struct xbes1_class : jac_tables<double> {
    double **dfdvr = nullptr, **dfdgvr = nullptr, **dfdaux = nullptr, **dfdbev = nullptr, **dfdcur = nullptr;
    double **dgdvr = nullptr, **dgdgvr = nullptr, **dgdaux = nullptr, **dgdbev = nullptr, **dgdcur = nullptr;
    double **dhdvr = nullptr, **dhdgvr = nullptr, **dhdaux = nullptr, **dhdbev = nullptr, **dhdcur = nullptr;

    void initialise(const basic_library& lib, int i_lib);
};
