#include "settings/directives.h"

#include <gtest/gtest.h>

#include <cmath>

#include "block_fixture.h"
#include "halt_throws.h"

namespace {
using doubles = std::vector<double>;

double& rparm(circuit& c, const std::string& name, int k = 0) { return c.eelu.rprm.row(c.eelu.find(name))[k]; }
double unit_rparm(const circuit& c, const std::string& name, int k = 0) {
    const int i = c.eelu.find(name);
    return c.ebeu.unit.rprm.row(c.eelu.first_unit[static_cast<std::size_t>(i)])[k];
}

// Values of R2 over the points of a sweep.
doubles swept(const std::string& statement) {
    block_run r = read_cards("solve_type dc\n" + statement + "\n");
    doubles list;
    for (int i = 0; i < r.slv.task.n_sweep; ++i) {
        vary_parm(r.slv, r.c, i);
        list.push_back(unit_rparm(r.c, "R2"));
    }
    return list;
}
}  // namespace

TEST(set_parm, writes_reals_and_integers_down_to_the_units) {
    block_run r = read_cards("solve_type dc\nset_parm r_of_R2=half n_par_of_R2=twenty\nset_parm vdc_of_V1=12\n");
    ASSERT_EQ(r.slv.task.set_parm.size(), 3u);
    set_parm(r.slv, r.c);
    EXPECT_EQ(unit_rparm(r.c, "R2"), 0.5);
    EXPECT_EQ(rparm(r.c, "R2", 1), 1.0) << "the derived parameter is twice r";
    EXPECT_EQ(r.c.ebeu.unit.iprm.row(2)[0], 20);
    EXPECT_EQ(unit_rparm(r.c, "V1"), 12.0);
}

TEST(set_parm, of_a_global_reaches_dependents_and_every_tied_parameter) {
    block_run r = read_cards("solve_type dc\nset_parm glbl_of_ra=2k\n");
    EXPECT_EQ(unit_rparm(r.c, "R1"), 1000.0);
    set_parm(r.slv, r.c);
    EXPECT_EQ(r.c.gprm.greal, (doubles{2000.0, 4000.0, 0.5}));
    EXPECT_EQ(r.c.gprm.greal_base[0], 2000.0);
    EXPECT_EQ(unit_rparm(r.c, "R1"), 2000.0);
    EXPECT_EQ(unit_rparm(r.c, "R2"), 2000.0) << "a number of its own";
}

TEST(set_parm, ignores_an_item_without_a_value) {
    EXPECT_EQ(read_cards("solve_type dc\nset_parm r_of_R1=5 r_of_R2\n").slv.task.set_parm.size(), 1u);
}

TEST(vary_parm, of_a_div_range_rounds_the_number_of_pieces) {
    EXPECT_EQ(swept("vary_parm r_of_R2 from 1 to 2 type linear div 0.25"), (doubles{1, 1.25, 1.5, 1.75, 2}));
    EXPECT_EQ(swept("vary_parm r_of_R2 from 2 to 1 type linear div -0.5"), (doubles{2, 1.5, 1}));
    EXPECT_EQ(swept("vary_parm r_of_R2 from 0 to 1 type linear div 0.3").size(), 4u);  // 3.33 pieces
    EXPECT_EQ(swept("vary_parm r_of_R2 from 0 to 1 type linear div 0.4").size(), 4u);  // 2.5 pieces, up
}

TEST(vary_parm, takes_as_many_points_as_can_be_numbered) {
    const auto points = [](const std::string& form) {
        return read_cards("solve_type dc\nvary_parm r_of_R2 from 1 to 2 type " + form + "\n").slv.task.n_sweep;
    };
    EXPECT_EQ(points("linear n_points 2147483647"), 2147483647);
    EXPECT_EQ(points("log n_points 2147483647"), 2147483647);
    EXPECT_EQ(points("linear div 1e-9"), 1000000001);
    EXPECT_EQ(points("linear n_points 32768\nvary_parm r_of_R1 from 1 to 2 type linear n_points 65535"), 2147450880);
}

TEST(vary_parm, of_ranges_and_tables_takes_the_points_of_the_deck) {
    EXPECT_EQ(swept("vary_parm r_of_R2 from=1 to=3 type=linear n_points=5"), (doubles{1, 1.5, 2, 2.5, 3}));
    EXPECT_EQ(swept("vary_parm r_of_R2 type table 5 1k half"), (doubles{5, 1000, 0.5}));
    const doubles log = swept("vary_parm r_of_R2 from 1m to 1k type log n_points 7");
    ASSERT_EQ(log.size(), 7u);
    for (int i = 0; i < 7; ++i) EXPECT_NEAR(log[static_cast<std::size_t>(i)] / std::pow(10.0, i - 3), 1.0, 1e-12);
}

TEST(vary_parm, accepts_the_keys_of_a_range_in_any_order_behind_from) {
    EXPECT_EQ(swept("vary_parm r_of_R2 from 1 n_points 3 type linear to 2"), (doubles{1, 1.5, 2}));
}

TEST(vary_parm, of_a_logarithmic_range_with_a_zero_bound_halts_at_the_first_step) {
    block_run r = read_cards("solve_type dc\nvary_parm r_of_R2 from 0 to 1 type log n_points 3\n");
    EXPECT_HALT(vary_parm(r.slv, r.c, 0),
                "interp_log: check x_start and x_end\ninterp_log: x_start=0\ninterp_log: x_end=1\n");
}

TEST(vary_parm, of_two_statements_varies_the_last_fastest_and_parts_the_curves_by_blank_lines) {
    const temp_folder folder;
    block_run r = read_cards(
        "solve_type dc\nvary_parm r_of_R1 type table 10 20 30\nvary_parm r_of_R2 type table 1 2 3 4\n" +
        out_block("filename rows.dat\nvariables: vout\n") + out_block("filename parms.dat\nvariables: parms\n"));
    ASSERT_EQ(r.slv.task.n_sweep, 12);
    for (out_file& file : r.slv.out.files) {
        file.stream = std::make_unique<row_file>();
        file.stream->open(file.path, false);
    }
    doubles r1, r2;
    for (int i = 0; i < r.slv.task.n_sweep; ++i) {
        vary_parm(r.slv, r.c, i);
        r.slv.out.files[0].stream->put_text("row\n");
        r1.push_back(unit_rparm(r.c, "R1"));
        r2.push_back(unit_rparm(r.c, "R2"));
    }
    delete_arrays(r.slv);
    EXPECT_EQ(r1, (doubles{10, 10, 10, 10, 20, 20, 20, 20, 30, 30, 30, 30}));
    EXPECT_EQ(r2, (doubles{1, 2, 3, 4, 1, 2, 3, 4, 1, 2, 3, 4}));
    const std::string group = "row\nrow\nrow\nrow\n";
    EXPECT_EQ(read_file("rows.dat"), group + "\n" + group + "\n" + group);
    EXPECT_EQ(read_file("parms.dat"), "\n\n") << "every file has them";
}

TEST(vary_parm, writes_only_values_whose_index_moved) {
    block_run r = read_cards("solve_type dc\nvary_parm r_of_R1 type table 10 20\nvary_parm r_of_R2 type table 1 2\n");
    vary_parm(r.slv, r.c, 0);
    rparm(r.c, "R1") = -1;  // whoever writes in between is not overwritten until the index moves
    vary_parm(r.slv, r.c, 1);
    EXPECT_EQ(rparm(r.c, "R1"), -1.0);
    vary_parm(r.slv, r.c, 2);
    EXPECT_EQ(rparm(r.c, "R1"), 20.0);
}

TEST(vary_parm, of_a_global_moves_the_present_value_and_keeps_the_base) {
    block_run r = read_cards("solve_type dc\nvary_parm glbl_of_ra type table 3 4\n");
    vary_parm(r.slv, r.c, 1);
    EXPECT_EQ(r.c.gprm.greal[0], 4.0);
    EXPECT_EQ(r.c.gprm.greal[1], 8.0);
    EXPECT_EQ(r.c.gprm.greal_base[0], 1000.0);
    EXPECT_EQ(unit_rparm(r.c, "R1"), 4.0);
}

TEST(vary_parm, of_the_automatic_form_takes_the_present_value_of_the_driver) {
    block_run r =
        read_cards("solve_type dc\nvary_parm r_of_R2 type auto p_begin 0 p_end 1 step 0.1 step_min 1m step_max 0.2\n");
    EXPECT_TRUE(r.slv.task.flag_vary_auto);
    const auto_sweep& a = r.slv.task.automatic;
    EXPECT_EQ((doubles{a.p_begin, a.p_end, a.step, a.step_min, a.step_max, a.factor_red, a.factor_inc}),
              (doubles{0, 1, 0.1, 1e-3, 0.2, 0.8, 1.1}));
    EXPECT_EQ(a.itmax_sweep, 500);
    r.slv.task.automatic.p_now = 0.125;
    vary_parm(r.slv, r.c, 0);
    EXPECT_EQ(unit_rparm(r.c, "R2"), 0.125);
}

TEST(vary_parm, reads_numbers_but_no_globals_as_keys_of_the_automatic_form) {
    EXPECT_TRUE(run_and_listen([] {
                    read_cards(
                        "solve_type dc\nvary_parm r_of_R2 type auto p_begin half p_end 1 step 1 step_min 1 "
                        "step_max 1\n");
                }).stopped);
}

TEST(vary_parmsync, moves_all_its_statements_together) {
    block_run r = read_cards(
        "solve_type dc\nvary_parm_sync r_of_R1 type table 10 20 30\n"
        "vary_parm_sync r_of_R2 from 1 to 3 type linear n_points 3\n");
    ASSERT_EQ(r.slv.task.n_sync, 3);
    EXPECT_EQ(r.slv.task.n_sweep, 1);
    doubles seen;
    for (int i = 0; i < 3; ++i) {
        vary_parmsync(r.slv, r.c, i);
        seen.push_back(unit_rparm(r.c, "R1") + unit_rparm(r.c, "R2"));
    }
    EXPECT_EQ(seen, (doubles{11, 22, 33}));
}

TEST(vary_parm, leaves_its_last_value_for_the_next_block) {
    block_run r =
        prepared(solve_block("solve_type dc\nvary_parm r_of_R2 type table 1 2\n") + solve_block("solve_type dc\n"));
    read_block(r, 0);
    vary_parm(r.slv, r.c, 0);
    vary_parm(r.slv, r.c, 1);
    delete_arrays(r.slv);
    read_block(r, 1);
    EXPECT_EQ(unit_rparm(r.c, "R2"), 2.0);
}

// ---- starting values and guesses, by families
namespace {
// Gives each family that the circuit lacks one instance of one composite with a start and a guess parameter.
void add_instance(instance_core& inst, composite_library& lib, const char* name) {
    inst = {};
    inst.n = 1;
    inst.name = {name};
    inst.index[name] = 0;
    inst.i_lib = {0};
    for (auto* row : {&inst.sv, &inst.ig, &inst.rprm}) {
        row->add(0.0);
        row->close_row();
    }
    inst.iprm.close_row();
    lib = {};
    lib.list.entry = {"block"};
    for (auto [list, word] :
         {std::pair{&lib.list.sv, "y0"}, std::pair{&lib.list.ig, "y_ig"}, std::pair{&lib.list.rprm, "k"}}) {
        list->name.pool = {word};
        list->name.first = {0, 1};
        list->dflt = {0.0};
    }
    lib.list.iprm.name.first = {0, 0};
    lib.derived.row.close_row();
}

block_run with_all_families(const std::string& cards) {
    block_run r = prepared(solve_block("solve_type startup\n" + cards));
    add_instance(r.c.gelu, r.c.lib.gels, "G1");
    // A composite without elements.
    r.c.lib.gels.be.first_be = r.c.gelu.first_unit = {0, 0};
    r.c.lib.gels.beac.first_be = r.c.gelu.first_unit_ac = {0, 0};
    add_instance(r.c.delu, r.c.lib.dels, "D1");
    r.c.lib.dels.be.first_be = r.c.delu.first_unit = {0, 0};
    add_instance(r.c.xelu, r.c.lib.xels, "X1");
    r.c.lib.xels.be.first_be = r.c.xelu.first_unit = {0, 0};
    r.c.lib.xels.beac.first_be = r.c.xelu.first_unit_ac = {0, 0};
    r.c.cct.dct.name = {"q"};
    r.c.cct.dct.index["q"] = 0;
    read_block(r);
    return r;
}
}  // namespace

TEST(start_values, reach_the_instances_of_their_families) {
    block_run r = with_all_families(
        "set_stparm y0_of_G1=3\nset_dstparm y0_of_D1=1\nset_igparm y_ig_of_G1=5 y_ig_of_X1=6\n"
        "set_digparm y_ig_of_D1=1\nset_dgtl q=1\n");
    set_sv(r.slv, r.c);
    EXPECT_EQ(r.c.gelu.sv.data, (doubles{3}));
    EXPECT_EQ(r.c.delu.sv.data, (doubles{0}));
    set_dsv(r.slv, r.c);
    EXPECT_EQ(r.c.delu.sv.data, (doubles{1}));
    set_ig(r.slv, r.c);
    EXPECT_EQ(r.c.gelu.ig.data, (doubles{5}));
    EXPECT_EQ(r.c.xelu.ig.data, (doubles{0})) << "the explicit side has its own call";
    set_ig_x(r.slv, r.c);
    EXPECT_EQ(r.c.xelu.ig.data, (doubles{6}));
    set_dig(r.slv, r.c);
    EXPECT_EQ(r.c.delu.ig.data, (doubles{1}));
    ASSERT_EQ(r.slv.task.set_dgtl.size(), 1u);
    EXPECT_EQ(r.slv.task.set_dgtl[0].level, 1);
}

TEST(set_parm, finds_instances_of_every_family) {
    block_run r = with_all_families("set_parm k_of_G1=1 k_of_D1=2 k_of_X1=3\n");
    set_parm(r.slv, r.c);
    EXPECT_EQ(r.c.gelu.rprm.data, (doubles{1}));
    EXPECT_EQ(r.c.delu.rprm.data, (doubles{2}));
    EXPECT_EQ(r.c.xelu.rprm.data, (doubles{3}));
}

TEST(vary_parm, does_not_know_explicit_instances) {
    EXPECT_HALT(with_all_families("vary_parm k_of_X1 type table 1 2\n"),
                "solve_class: parameter not identified in\n   vary_parm statement.\n   Check this string: k_of_X1\n"
                "   Halting...\n");
}
