// time_fixture.h -- a circuit with general blocks and a transient block over it, for tests of what its rows hold.
#pragma once
#include <string>

#include "block_fixture.h"
#include "output/row_writers.h"

// A block with every kind of number that an output can name, and two of them in a row through an internal variable.
inline const char* const time_gbes = R"(
gbe name=lag
Jacobian: constant
main_vars: x y
iparms: n_avg=4
sparms: mode=fast
rparms: k=1 tau=0.5
aux_vars: a
xvar:
stparms: y_st=0
igparms: y_ig=0
no_functions 2
f_1 x d_dt(y)
f_2 x a
C: compiled
endgbe
)";
inline const char* const time_gels = R"(
gce name=two_lags
begin_dc
mainvars: x y
auxvars: m
xvars:
outvar: mid=var_of_m out=var_of_y a2=a_of_second n2=n_avg_of_second t2=tau_of_second
bias:
stparms:
igparms:
iparms: n_avg=7
sparms: mode=slow
rparms: k=3
rparms_derived: k2=$((k)*(2))
gbe type=lag name=first x=x y=m k=k
gbe type=lag name=second x=m y=y n_avg=n_avg tau=k2
end_dc
C:
endC
begin_ac
outvar_ac:
end_ac
endgce
)";
inline const std::string time_circuit =
    std::string(block_circuit) +
    "gelement name=G1 type=two_lags x=u y=v\n"
    "gelement name=G2 type=two_lags x=v y=w k=5 n_avg=9 mode=other\n"
    "outvar: gu=var_of_u gw=var_of_w mid=mid_of_G2 aux=a2_of_G2 navg=n2_of_G2 tau=t2_of_G2 gain=k_of_G2\n";

// The circuit with one solve block of these cards, read.
inline block_run with_blocks(const std::string& cards) {
    const std::string deck = "title: test\n" + std::string(block_globals) + "begin_circuit\n" + time_circuit +
                             "end_circuit\n" + solve_block(cards) + "end_cf\n";
    static const libraries lib =
        libraries_of({.ebes = fixture_ebes, .gbes = time_gbes, .eels = fixture_eels(), .gels = time_gels});
    block_run r{circuit_of(deck, lib), {}, {}};
    elaborate(r.c);
    classify(r.c);
    check_linear(r.c);
    read_block(r);
    return r;
}

// A transient block from 0 to 1 s.
inline const std::string trns_cards = "solve_type trns\nmethod: back_euler=yes t_start=0 t_end=1 delt_const=0.1\n";

// The node voltage that vout reads.
inline double& vout(circuit& c) {
    return c.ebeu.val_nd[static_cast<std::size_t>(c.cct.ect.to_eu[static_cast<std::size_t>(c.cct.ect.find("out"))])];
}
