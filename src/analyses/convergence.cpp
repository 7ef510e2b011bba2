#include "analyses/convergence.h"

#include <cmath>
#include <iomanip>
#include <iostream>

#include "base/at.h"
#include "base/halt.h"
#include "base/numeric.h"

namespace {
// Console numbers in scientific form with 4 digits while it lives.
class scientific_4 {
public:
    scientific_4() : flags_(std::cout.flags()), precision_(std::cout.precision(4)) {
        std::cout.setf(std::ios::scientific, std::ios::floatfield);
    }
    ~scientific_4() {
        std::cout.flags(flags_);
        std::cout.precision(precision_);
    }
    scientific_4(const scientific_4&) = delete;
    scientific_4& operator=(const scientific_4&) = delete;

private:
    std::ios::fmtflags flags_;
    std::streamsize precision_;
};

void print_norm(int iter_newton, const char* label, double value) {
    std::cout << iter_newton << ' ' << label << std::setw(11) << value << '\n';
}

void print_spice(const mat_class& mat, int iter_newton) {
    std::cout << "SPICE convergence: iter_newton=" << iter_newton << "\nSPICE convergence: i,tol,norm,svec_flag\n";
    for (int i = 0; i < mat.n_svec; ++i)
        std::cout << i << ' ' << mat.tol_spice[at(i)] << ' ' << mat.del_spice[at(i)] << ' ' << mat.svec_flag[at(i)]
                  << (mat.tol_spice[at(i)] < mat.del_spice[at(i)] ? " *\n" : "\n");
}

double largest_node_step(const mat_class& mat) {
    double largest = 0.0;
    for (int i = 0; i < mat.n_svec; ++i) {
        const double step = std::fabs(mat.delsvec[at(i)]);
        if (mat.svec_flag[at(i)] == kind_v && (step > largest || std::isnan(step))) largest = step;
    }
    return largest;
}

void compute_norms(mat_class& mat, solve_class& slv) {
    const int n = mat.n_svec;
    const double* rhs = mat.rhs_m.data();
    if (slv.method.chk_rhs2 || slv.method.write_rhs2 || slv.method.chk_rhs2_rel || slv.method.chk_spice ||
        slv.method.write_spice)
        norm_2_avg(n, rhs, slv.now.norm_rhs_2);
    if ((slv.method.chk_spice || slv.method.write_spice) && slv.now.iter_newton > 0) compute_norm_spice(mat, slv);
    if (slv.method.chk_rhs2_rel) {
        if (slv.now.iter_newton == 0)
            slv.now.norm_rhs_2_first = slv.now.norm_rhs_2;
        else
            slv.now.norm_rhs_2_rel = slv.now.norm_rhs_2 / slv.now.norm_rhs_2_first;
    }
    if (slv.method.chk_rhsinf || slv.method.write_rhsinf) norm_inf(n, rhs, slv.now.norm_rhs_inf);
    if (slv.method.chk_delx_sprt || slv.method.write_delx_sprt) {
        slv.now.norm_delx_volt = slv.now.norm_delx_kcl = 0.0;
        if (slv.method.chk_delx_volt || slv.method.write_delx_volt) slv.now.norm_delx_volt = largest_node_step(mat);
        // In spite of its name a residual.
        if (slv.method.chk_delx_kcl || slv.method.write_delx_kcl) norm_inf(n, rhs, slv.now.norm_delx_kcl);
    }
    if (slv.method.chk_delx_all || slv.method.write_delx_all) norm_inf(n, mat.delsvec.data(), slv.now.norm_delx_all);
}

void print_norms(const mat_class& mat, const solve_class& slv) {
    if (slv.method.write_rhs2) print_norm(slv.now.iter_newton, "norm_rhs_2=", slv.now.norm_rhs_2);
    if (slv.method.write_rhsinf) print_norm(slv.now.iter_newton, "norm_rhs_inf=", slv.now.norm_rhs_inf);
    if (slv.method.write_delx_volt) print_norm(slv.now.iter_newton, " norm_delx_volt=", slv.now.norm_delx_volt);
    if (slv.method.write_delx_kcl) print_norm(slv.now.iter_newton, " norm_delx_kcl=", slv.now.norm_delx_kcl);
    if (slv.method.write_delx_all) print_norm(slv.now.iter_newton, " norm_delx_all=", slv.now.norm_delx_all);
    if (slv.method.write_spice && slv.now.iter_newton > 0) print_spice(mat, slv.now.iter_newton);
}

// Above norm_large or NaN: the iteration has run away.
bool too_large(solve_class& slv, const char* name, double norm) {
    if (norm <= slv.method.norm_large) return false;
    std::cout << "check_convergence: norm too large.\n   slv->" << name << '=' << norm << '\n';
    slv.now.l_norm_too_large = 1;
    return true;
}

bool spice_test_passes(const mat_class& mat, solve_class& slv) {
    if (slv.now.iter_newton == 0) return false;
    for (int i = 0; i < mat.n_svec; ++i) {
        const double change = mat.del_spice[at(i)];
        if (!(change <= slv.method.norm_large)) {
            std::cout << "check_convergence: spice norm too large.\n";
            slv.now.l_norm_too_large = 1;
            return false;
        }
        if (!(change <= mat.tol_spice[at(i)])) return false;
    }
    // Accepted by the step alone, it must have a small residual too.
    return slv.method.chk_rhs2 || (!too_large(slv, "norm_rhs_2", slv.now.norm_rhs_2) && slv.now.norm_rhs_2 <= 1.0);
}

bool step_test_passes(solve_class& slv) {
    if (slv.method.chk_delx_volt && too_large(slv, "norm_delx_volt", slv.now.norm_delx_volt)) return false;
    if (slv.method.chk_delx_kcl && too_large(slv, "norm_delx_kcl", slv.now.norm_delx_kcl)) return false;
    // With both on, the voltage limit is out of force.
    if (slv.method.chk_delx_kcl) return slv.now.norm_delx_kcl <= slv.method.delxmax_kcl;
    return slv.now.norm_delx_volt <= slv.method.delxmax_volt;
}

// Every test that is on must pass; the first that fails ends them.
bool tests_pass(const mat_class& mat, solve_class& slv) {
    bool any = false;
    if (slv.method.chk_rhs2) {
        any = true;
        if (slv.now.iter_newton >= 1 && too_large(slv, "norm_rhs_2", slv.now.norm_rhs_2)) return false;
        if (!(slv.now.norm_rhs_2 <= slv.method.norm_2)) return false;
    }
    if (slv.method.chk_rhs2_rel) {
        any = true;
        if (slv.now.iter_newton == 0) return false;
        if (too_large(slv, "norm_rhs_2_rel", slv.now.norm_rhs_2_rel)) return false;
        if (!(slv.now.norm_rhs_2_rel <= slv.method.norm_2_rel)) return false;
    }
    if (slv.method.chk_spice) {
        any = true;
        if (!spice_test_passes(mat, slv)) return false;
    }
    if (slv.method.chk_rhsinf) {
        any = true;
        if (too_large(slv, "norm_rhs_inf", slv.now.norm_rhs_inf)) return false;
        if (!(slv.now.norm_rhs_inf <= slv.method.norm_inf)) return false;
    }
    if (slv.method.chk_delx_sprt) {
        any = true;
        if (!step_test_passes(slv)) return false;
    }
    if (slv.method.chk_delx_all) {
        any = true;
        if (too_large(slv, "norm_delx_all", slv.now.norm_delx_all)) return false;
        if (!(slv.now.norm_delx_all <= slv.method.delxmax_all)) return false;
    }
    return any;
}
}  // namespace

void compute_norm_spice(mat_class& mat, const solve_class& slv) {
    double abstol[kind_auxs + 2];
    for (double& t : abstol) t = -1.0;
    abstol[kind_v] = slv.method.norm_spice_nodev;
    abstol[kind_aux] = abstol[kind_auxs] = slv.method.norm_spice_eaux;
    abstol[kind_vr] = slv.method.norm_spice_gvar;
    abstol[kind_gaux] = slv.method.norm_spice_gaux;
    abstol[kind_locv] = slv.method.norm_spice_locvar;
    abstol[kind_cur] = slv.method.norm_spice_cur;
    for (int i = 0; i < mat.n_svec; ++i) {
        const int flag = mat.svec_flag[at(i)];
        if (flag < 0 || flag > kind_cur || abstol[flag] < 0)
            halt({"compute_norm_spice: incorrect svec_flag?", line("  i=", i), line("  svec_flag=", flag),
                  "  Halting..."});
        const double now = mat.svec[at(i)], old = mat.svec_old[at(i)];
        mat.tol_spice[at(i)] = std::fmax(std::fabs(now), std::fabs(old)) * slv.method.norm_spice_rel + abstol[flag];
        mat.del_spice[at(i)] = std::fabs(now - old);
    }
}

void check_convergence(mat_class& mat, const flags_class& flags, solve_class& slv) {
    slv.now.l_converged = 0;
    if (flags.n_limit > 0) return;
    slv.now.l_norm_too_large = 0;
    const scientific_4 form;
    compute_norms(mat, slv);
    print_norms(mat, slv);
    slv.now.l_converged = !slv.method.chk_cnvrg || tests_pass(mat, slv) ? 1 : 0;
}
