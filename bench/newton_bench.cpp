// One Newton iteration of a small circuit: a ladder of resistors with a diode at each node, 30 units, 12 unknowns.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <sstream>

#include "analyses/assembly.h"
#include "analyses/convergence.h"
#include "analyses/evaluate.h"
#include "analyses/newton.h"
#include "analyses/solution_vector.h"
#include "circuit_from_text.h"
#include "measure.h"
#include "run/driver.h"

namespace {
constexpr int n_section = 10;

std::string diode_ladder() {
    std::ostringstream deck;
    deck << "title: diode ladder\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcdc p=n0 n=0 vdc=5\n";
    for (int i = 0; i < n_section; ++i) {
        deck << "eelement name=R" << i << " type=r p=n" << i << " n=n" << i + 1 << " r=100\n";
        deck << "eelement name=D" << i << " type=diode p=n" << i + 1 << " n=0\n";
        if (i > 0) deck << "eelement name=S" << i << " type=r p=n" << i + 1 << " n=0 r=1k\n";
    }
    deck << "outvar: v=nodev_of_n3\nend_circuit\nbegin_solve\nsolve_type dc\nbegin_output\nfilename out.dat\n"
            "variables: v\nend_output\nend_solve\nend_cf\n";
    return deck.str();
}

// Two iterates on the way to the solution, so that every call works on values that differ from the last ones.
struct newton_case {
    circuit c = circuit_of(diode_ladder(), installed_libraries());
    run_state r{c};
    newton_limits limits;
    std::vector<double> start, svec[2], val_m[2], rhs_m[2];
    int turn = 0;
    double n_iteration = 0;  // of one solve

    newton_case() {
        prepare_circuit(r);
        read_block(r, 0);
        define_offs_solvec(r.mat, c, analysis::dc);
        define_method_type(r.slv, c.cct);
        set_mat(r.mat, c, r.ebe.jac, r.gbe.jac);
        r.flags.init_flags();
        start = r.mat.svec;
        limits.itmax = 500;
        limits.who = "bench_newton";
        limits.fix_order = true;
        for (const int k : {0, 1}) {
            limits.itmax = 5 + k;  // before convergence
            solve();
            svec[k] = r.mat.svec;
            form_jac_rhs(r, false);
            val_m[k] = r.mat.val_m;
            rhs_m[k] = r.mat.rhs_m;
        }
        limits.itmax = 500;
        limits.fix_order = false;
        r.flags.n_solve_lin = 0;
        solve();
        n_iteration = r.flags.n_solve_lin;
        if (!r.slv.now.l_converged) std::printf("bench_newton: the circuit does not converge\n");
        r.slv.now.iter_newton = 1;
        r.mat.svec_old = svec[0];
    }
    void solve() {
        r.mat.svec = start;
        dcmp_solvec(r);
        newton(r, limits);
    }
    void set_point() {
        turn ^= 1;
        r.mat.svec = svec[turn];
        dcmp_solvec(r);
    }
    void gather() { ebce_form_arrays(r); }
    void evaluate() {
        r.flags.dc = r.flags.function = r.flags.jacobian = 1;
        for (int u = 0; u < c.ebeu.n(); ++u) get_unit(r, r.ebe, u);
        r.flags.dc = r.flags.function = r.flags.jacobian = 0;
    }
    void form() { form_jac_rhs(r, false); }
    void replay() {
        turn ^= 1;
        solve_jac(r.mat.e, r.mat.m, val_m[turn].data(), rhs_m[turn].data(), 1, 0, 0, 1, 3);
    }
    void update() {
        update_sol_1(r);
        benchmark::DoNotOptimize(has_nan(r.mat.svec));
        dcmp_solvec(r);
    }
    void converge() { check_convergence(r.mat, r.flags, r.slv); }
};

struct measured {
    const char* what;
    void (newton_case::*call)();
};
constexpr measured parts[] = {
    {"set_point", &newton_case::set_point},  {"gather", &newton_case::gather}, {"evaluate", &newton_case::evaluate},
    {"form_jac_rhs", &newton_case::form},    {"replay", &newton_case::replay}, {"update", &newton_case::update},
    {"convergence", &newton_case::converge}, {"solve", &newton_case::solve},
};

double ns(newton_case& b, void (newton_case::*call)()) {
    b.r.mat.delsvec.assign(b.r.mat.delsvec.size(), 0.0);
    return 1e3 * median_us([&] { (b.*call)(); });
}

void print_table() {
    newton_case b;
    const int n = b.c.ebeu.n();
    b.set_point();
    const double gather = ns(b, &newton_case::gather), evaluate = ns(b, &newton_case::evaluate);
    const double form = ns(b, &newton_case::form), replay = ns(b, &newton_case::replay);
    const double update = ns(b, &newton_case::update), converge = ns(b, &newton_case::converge);
    const double whole = ns(b, &newton_case::solve) / b.n_iteration;
    const struct {
        const char* what;
        double ns;
    } rows[] = {{"gather", gather},
                {"evaluate", evaluate},
                {"assemble (form_jac_rhs less the two above)", form - gather - evaluate},
                {"negate, factor, solve", replay},
                {"update, NaN test, spread", update},
                {"convergence test", converge},
                {"sum of parts", form + replay + update + converge},
                {"whole iteration, in a solve", whole}};
    std::printf("%d units, %d unknowns, %.0f iterations of a solve. Processor time, medians.\n\n", n, b.r.mat.n_svec,
                b.n_iteration);
    std::printf("| part of an iteration | ns | ns per unit |\n|---|---|---|\n");
    for (const auto& row : rows) std::printf("| %s | %.0f | %.1f |\n", row.what, row.ns, row.ns / n);
}
}  // namespace

int main(int argc, char** argv) {
    if (argc == 1) {
        print_table();
        return 0;
    }
    for (const measured& m : parts)
        benchmark::RegisterBenchmark((std::string("newton_30_units/") + m.what).c_str(),
                                     [call = m.call](benchmark::State& state) {
                                         newton_case b;
                                         b.set_point();
                                         for (auto _ : state) (b.*call)();
                                     });
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
