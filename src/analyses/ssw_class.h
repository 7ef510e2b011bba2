// ssw_class.h -- what a search for the periodic steady state keeps: n states, each a column of svec.
#pragma once
#include <vector>

struct ssw_class {
    // Set up for the system.
    std::vector<int> statevar_indx;                          // [n] column of each state, in the order of its row
    std::vector<int> row_of_state;                           // [n] its entry in state_rows
    std::vector<int> first_entry{0}, entry_slot, entry_col;  // [n + 1] entries of the state's row: slot, column

    std::vector<double> x_ssw, x_ssw_old, delx_ssw, rhs_ssw;  // [n]
    std::vector<double> dxdt_ssw;                             // [n] at the start of the shot, 1/s
    std::vector<double> ssw_mat, inverse;                     // [n][n]
    std::vector<double> map;                 // [n][n] end by start values, of the last shot with derivatives
    std::vector<double> sens_ssw, sens_rhs;  // [n][n_svec] derivatives by start value j; work space
    std::vector<double> svec_shot;           // [n_svec] end of the shot before
    std::vector<int> p1, p2, p3;             // [n] work space

    int ssw_iter_newton = 0;
    double rhs_ssw_norm = 0.0;
    int i_statevar_period = 0;  // the state that gives way to the period
    double rhs_ssw_max = 0.0;   // its |dx/dt|

    int n_statevar() const { return static_cast<int>(statevar_indx.size()); }
};
