#include <cstring>
#include <memory>

#include "analyses/evaluate.h"
#include "models/data_files.h"
#include "run/driver.h"
#include "small_runs.h"
#include "targets.h"

namespace {
// A block that follows the file, one behind it, and a source that does not; a start-up, then steps of changing size.
constexpr std::string_view deck =
    "title: t\nbegin_circuit\nrefnode 0\n"
    "gelement name=F type=pwl_file y=u file=/proc/self/fd/0000000000\n"
    "gelement name=L type=lag_1 x=u y=w\n"
    "gelement name=K type=clock y=k t1=0.3 t2=0.2 dt1=1m dt2=1m\n"
    "eelement name=R1 type=r p=a n=0\n"
    "outvar: u=var_of_u w=var_of_w\nend_circuit\n"
    "begin_solve\nsolve_type startup\ninitial_sol initialize\n"
    "begin_output\nfilename start.dat\nvariables: u w\nend_output\nend_solve\n"
    "begin_solve\nsolve_type trns\ninitial_sol previous\nmethod: trapezoidal=yes t_start=-1 t_end=4 delt_const=0.1\n"
    "begin_output\nfilename out.dat\nvariables: u w\nend_output\nend_solve\n"
    "begin_solve\nsolve_type trns\ninitial_sol initialize\nmethod: back_euler_auto=yes gmin_step=no t_end=4 "
    "delt_const=0.1 delt_min=20m delt_max=0.5\n"
    "begin_output\nfilename auto.dat\nvariables: u w\ncontrol: fixed_interval=0.05\nend_output\nend_solve\nend_cf\n";

// The circuit stands for all texts; each gets its own tables, parameters and values.
struct standing_circuit {
    circuit c;
    standing_circuit() {
        if (!runs_through([&] {
                c = circuit_of(deck, installed_libraries());
                elaborate(c);
            }))
            std::abort();
    }
};

void follow(circuit& c, const std::string& path) {
    run_state r(c);
    std::strcpy(c.gbeu.unit.sprm.row(0)[0], path.c_str());
    read_gbe_data_files(c.lib.gbes, c.gbeu.unit.i_lib, c.gbeu.unit.sprm, r.dp);
    classify(c);
    bind_models(r);
    for (int i = 0; i < c.gelu.n; ++i) instance_changed(c, fam_g, i);
    one_time_parms(r);
    allocate_system(r.mat, c);
    for (int index = 0; index < c.cf.n_solve; ++index) {
        read_block(r, index);
        if (!keep_short(r)) std::abort();
        run_block(r);
    }
}
}  // namespace

bool fuzz_data(std::string_view text) {
    static standing_circuit s;
    const bool done = runs_through([&] { follow(s.c, file_of(text)); });
    empty_scratch_folder();
    return done;
}
