#include <memory>

#include "analyses/dc.h"
#include "run/driver.h"
#include "small_runs.h"
#include "targets.h"

namespace {
constexpr std::string_view deck =
    "title: t\nbegin_circuit\nrefnode 0\n"
    "eelement name=V1 type=vsrcdc p=a n=0 vdc=2\neelement name=R1 type=r p=a n=b r=1k\n"
    "eelement name=D1 type=diode p=b n=0\n"
    "end_circuit\nbegin_solve\nsolve_type dc\ninitial_sol file filename start.sol\n"
    "begin_output\nfilename out.dat\nvariables: all_nodes\nend_output\nend_solve\nend_cf\n";

// A circuit whose block begins with a solution file. It stays for all texts: a start overwrites what a solve left.
struct standing_circuit {
    circuit c;
    std::unique_ptr<run_state> r;

    standing_circuit() {
        runs_through([&] {
            c = circuit_of(deck, installed_libraries(deck));
            r = std::make_unique<run_state>(c);
            prepare_circuit(*r);
            read_block(*r, 0);
            keep_short(*r);
            define_offs_solvec(r->mat, c, analysis::dc);
            define_method_type(r->slv, c.cct);
            set_mat(r->mat, c, r->ebe.jac, r->gbe.jac);
        });
    }
};
}  // namespace

bool fuzz_solution(std::string_view text) {
    static standing_circuit s;
    run_state& r = *s.r;
    r.slv.task.init_sol_path = file_of(text);
    const bool done = runs_through([&] { init_sol(r); });
    if (done) runs_through([&] { solve_dc(r); });
    return done;
}
