#include "base/at.h"
#include "elaborate/circuit.h"

#include "base/halt.h"

namespace {
bool any_unit(const unit_core& unit, const std::vector<int>& flag) {
    for (int s : unit.i_lib)
        if (!flag.empty() && flag[at(s)]) return true;
    return false;
}
bool all_units(const unit_core& unit, const std::vector<int>& flag) {
    for (int s : unit.i_lib)
        if (flag.empty() || !flag[at(s)]) return false;
    return true;
}

// Which engines the run needs, by the number of units of each family.
void find_n_dac(circuit& c) {
    cct_class& t = c.cct;
    t.n_dac = 0;
    for (int k = 0; k < c.ebeu.n(); ++k) t.n_dac += c.ebeu.dgtl.size(k) > 0;
    t.flag_dac = t.n_dac > 0;
    t.n_adc = 0;
    for (int k = 0; k < c.dbeu.n(); ++k) t.n_adc += c.dbeu.anlg.size(k) > 0;
    t.flag_adc = t.n_adc > 0;
    const bool e = c.ebeu.n() > 0, d = c.dbeu.n() > 0;
    t.flag_mixed = e && d;
    t.flag_purely_digital = !e && d;
    t.flag_purely_analog = !d;
    t.flag_solve_digital = d;
    t.flag_solve_analog = e || !d;
    if (t.flag_purely_digital && c.gbeu.n() > 0)
        halt({"find_n_dac: general elements are not allowed", "   in a purely digital circuit. Halting..."});
}

void find_n_xec(circuit& c) {
    c.cct.n_xec = 0;
    for (int k = 0; k < c.ebeu.n(); ++k) c.cct.n_xec += c.ebeu.xvr.size(k) > 0;
    c.cct.n_xgc = 0;
    for (int k = 0; k < c.gbeu.n(); ++k) c.cct.n_xgc += c.gbeu.xvr.size(k) > 0;
    c.cct.n_gxc = 0;
    for (int k = 0; k < c.xbeu.n(); ++k) c.cct.n_gxc += c.xbeu.gvr.size(k) > 0;
}

void define_x_flags(circuit& c) {
    const bool x = c.xbeu.n() > 0;
    c.cct.flag_x_only = x && c.ebeu.n() == 0 && c.gbeu.n() == 0 && c.dbeu.n() == 0;
    c.cct.flag_x_mixed = x && (c.ebeu.n() > 0 || c.gbeu.n() > 0);
}
// A block may be unfit for a circuit beside it.
void check_xmixed(const circuit& c) {
    if (!c.cct.flag_x_mixed) return;
    for (const int s : c.xbeu.unit.i_lib)
        if (!c.lib.xbes.flag.allow_xmixed[at(s)])
            halt({"cct_class::check_xmixed: some xelement in", "  the circuit is not allowed in x-mixed mode.",
                  line("  The element type is: ", c.lib.xbes.list.entry[s]), "  Halting..."});
}
}  // namespace

void classify(circuit& c) {
    find_n_dac(c);
    find_n_xec(c);
    define_x_flags(c);
    check_xmixed(c);
}

void check_linear(circuit& c) {
    c.cct.flag_linear =
        all_units(c.ebeu.unit, c.lib.ebes.flag.jac_const) && all_units(c.gbeu.unit, c.lib.gbes.flag.jac_const);
    c.cct.flag_x_linear = all_units(c.xbeu.unit, c.lib.xbes.flag.jac_const);
}

void check_one_time(circuit& c) {
    auto either = [&c](std::vector<int> entry_flags::*flag) {
        return any_unit(c.ebeu.unit, c.lib.ebes.flag.*flag) || any_unit(c.gbeu.unit, c.lib.gbes.flag.*flag);
    };
    const auto some_block = [&c](std::vector<int> entry_flags::*flag) {
        return any_unit(c.xbeu.unit, c.lib.xbes.flag.*flag);
    };
    c.cct.flag_save_history_x = some_block(&entry_flags::save_history);
    c.cct.flag_reset_x = some_block(&entry_flags::allow_reset);
    c.cct.flag_modulo_x = some_block(&entry_flags::limit_modulo);
    c.cct.flag_lmttstep_x = some_block(&entry_flags::limit_tstep);
    c.cct.flag_integrator_x = !c.xbeu.integrating.empty() || (c.cct.flag_x_cct && some_block(&entry_flags::integrate));
    c.cct.flag_save_history = either(&entry_flags::save_history);
    c.cct.flag_reset = any_unit(c.gbeu.unit, c.lib.gbes.flag.allow_reset);
    c.cct.flag_modulo = any_unit(c.gbeu.unit, c.lib.gbes.flag.limit_modulo);
    c.cct.flag_setrparm = any_unit(c.gbeu.unit, c.lib.gbes.flag.set_rparm_1) || some_block(&entry_flags::set_rparm_1);
    c.cct.flag_getrparm = any_unit(c.gbeu.unit, c.lib.gbes.flag.get_rparm_1) || some_block(&entry_flags::get_rparm_1);
    c.cct.flag_lmtnewt = either(&entry_flags::limit_newton);
    c.cct.flag_lmttstep = either(&entry_flags::limit_tstep);
}
