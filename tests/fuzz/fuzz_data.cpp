#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "analyses/evaluate.h"
#include "models/data_files.h"
#include "run/driver.h"
#include "small_runs.h"
#include "targets.h"

namespace {
// A block that reads the file, one behind it, and a source that does not; a start-up, then steps of changing size.
constexpr std::string_view head = "title: t\nbegin_circuit\nrefnode 0\n";
constexpr std::string_view tail =
    " file=/proc/self/fd/0000000000\n"
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
// One of each layout, and of those that share one what does another thing with it.
constexpr std::string_view readers[] = {
    "type=pwl_file y=u",
    "type=src_table_1 y=u",
    "type=pwl_file_xy_1 x=w y=u",
    "type=pwm_file_1 y=u per=0.7",
    "type=pwm_file_2 y=u per=1.3 t0=-2",
    "type=lut_file_1_to_3 x=k y1=u y2=u2 y3=u3",
    "type=lut_file_2_to_1 x1=k x2=w y=u x2_end=2",
    "type=lut_file_3_to_1 x1=k x2=w x3=k y=u x1_begin=3",
    "type=lut_file_4_to_1 x1=k x2=w x3=k x4=w y=u",
};

// The circuit stands for all texts; each gets its own tables, parameters and values.
struct standing_circuit {
    circuit c;
    explicit standing_circuit(std::string_view reader) {
        const std::string deck = std::string(head) + "gelement name=F " + std::string(reader) + std::string(tail);
        if (!runs_through([&] {
                c = circuit_of(deck, installed_libraries(deck));
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
    static std::vector<std::unique_ptr<standing_circuit>> all;
    if (all.empty())
        for (const std::string_view reader : readers) all.push_back(std::make_unique<standing_circuit>(reader));
    // Most readers stop at a text of another layout.
    bool done = false;
    for (const auto& s : all) done = runs_through([&] { follow(s->c, file_of(text)); }) || done;
    empty_scratch_folder();
    return done;
}
