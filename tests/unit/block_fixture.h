// block_fixture.h -- a solve block read against a small circuit.
#pragma once
#include <functional>
#include <string>

#include "circuit_fixture.h"
#include "settings/solve_class.h"

inline const char* const block_circuit =
    "refnode 0\n"
    "eelement name=V1 type=vs p=in n=0 vdc=10\n"
    "eelement name=R1 type=r p=in n=out r=ra\n"
    "eelement name=R2 type=r p=out n=0 r=2k n_par=3\n"
    "outvar: vout=nodev_of_out iv=i_of_V1 ir=i_of_R1 p2=pwr_elec_of_R2 r2=r_of_R2 np=n_par_of_R2 vin=nodev_of_in\n";
inline const char* const block_globals = "greal ra=1k rb=$((ra)*(2)) half=0.5\nginteger twenty=20\n";

struct block_run {
    circuit c;
    solve_class slv;
    flags_class flags;
};

// The circuit with these solve blocks behind it, elaborated.
inline block_run prepared(const std::string& solve_blocks, const std::string& circuit_block = block_circuit) {
    const std::string deck = "title: test\n" + std::string(block_globals) + "begin_circuit\n" + circuit_block +
                             "end_circuit\n" + solve_blocks + "end_cf\n";
    block_run r{fixture_circuit(deck), {}, {}};
    elaborate(r.c);
    classify(r.c);
    check_linear(r.c);
    return r;
}

inline void read_block(block_run& r, int index = 0) {
    method_default(r.slv, r.c, r.flags);
    set_values(r.slv, index, r.c, r.flags);
}

inline std::string solve_block(const std::string& cards) { return "begin_solve\n" + cards + "end_solve\n"; }

// One block of these cards, read.
inline block_run read_cards(const std::string& cards) {
    block_run r = prepared(solve_block(cards));
    read_block(r);
    return r;
}

inline std::string out_block(const std::string& statements) { return "begin_output\n" + statements + "end_output\n"; }
