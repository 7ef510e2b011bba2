#include "analyses/levels.h"

#include "analyses/solution_vector.h"

void keep_point_1(run_state& r) {
    r.mat.svec_old_1 = r.mat.svec;
    r.mat.locv_old_1 = r.c.ebeu.locv;
}
void keep_point_2(mat_class& m) {
    m.svec_old_2 = m.svec_old_1;
    m.locv_old_2 = m.locv_old_1;
}

void keep_functions_1(mat_class& m) {  // present -> 1
    m.kcl_ddt.total_1.swap(m.kcl_ddt.total);
    m.kcl_ddt.still_1.swap(m.kcl_ddt.still);
    m.state.f_1 = m.state.f_now;
}
void keep_functions_2(mat_class& m) {  // 1 -> 2
    m.kcl_ddt.total_2.swap(m.kcl_ddt.total_1);
    m.kcl_ddt.still_2.swap(m.kcl_ddt.still_1);
    m.state.f_2 = m.state.f_1;
}

namespace {
void restore_functions(mat_class& m, const std::vector<double>& total, const std::vector<double>& still,
                       const std::vector<double>& f) {
    m.kcl_ddt.total = total;
    m.kcl_ddt.still = still;
    m.state.f_now = f;
}
// The functions of the units are of another point.
void restore_point(run_state& r) {
    r.mat.svec = r.mat.svec_old_1;
    r.c.ebeu.locv = r.mat.locv_old_1;
    r.formed.forget_calls();
    dcmp_solvec(r);
}
}  // namespace

void restore_1(run_state& r, bool with_functions) {
    mat_class& m = r.mat;
    restore_point(r);
    if (with_functions) restore_functions(m, m.kcl_ddt.total_1, m.kcl_ddt.still_1, m.state.f_1);
}
void restore_2(run_state& r) {
    mat_class& m = r.mat;
    m.svec_old_1 = m.svec_old_2;
    m.locv_old_1 = m.locv_old_2;
    restore_point(r);
    restore_functions(m, m.kcl_ddt.total_2, m.kcl_ddt.still_2, m.state.f_2);
}
