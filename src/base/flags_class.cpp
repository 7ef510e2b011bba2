#include "base/flags_class.h"

#include <algorithm>
#include <string>

#include "base/halt.h"

namespace {

struct flag_switch {
    int flags_class::*member;
    int number;  // place in the saved copy
    const char* name;
};

// In memory order; the last five make the second group.
constexpr flag_switch switches[] = {
    {&flags_class::dc, 0, "dc"},
    {&flags_class::trns, 1, "trns"},
    {&flags_class::startup, 2, "startup"},
    {&flags_class::ac, 3, "ac"},
    {&flags_class::ssw, 4, "ssw"},
    {&flags_class::ssw_init, 30, "ssw_init"},
    {&flags_class::init_guess, 5, "init_guess"},
    {&flags_class::dc_first, 6, "dc_first"},
    {&flags_class::trns_first, 7, "trns_first"},
    {&flags_class::startup_first, 8, "startup_first"},
    {&flags_class::limit_newton, 9, "limit_newton"},
    {&flags_class::newton_first, 10, "newton_first"},
    {&flags_class::one_time_parms, 11, "one_time_parms"},
    {&flags_class::save_history, 12, "save_history"},
    {&flags_class::nexttime, 13, "nexttime"},
    {&flags_class::pwr_elec, 14, "pwr_elec"},
    {&flags_class::pwr_elec_ac, 15, "pwr_elec_ac"},
    {&flags_class::function, 16, "function"},
    {&flags_class::jacobian, 17, "jacobian"},
    {&flags_class::process, 18, "process"},
    {&flags_class::schedule, 19, "schedule"},
    {&flags_class::outvar_prm, 20, "outvar_prm"},
    {&flags_class::vary_parm, 21, "vary_parm"},
    {&flags_class::set_parm, 22, "set_parm"},
    {&flags_class::acparms, 23, "acparms"},
    {&flags_class::rparms, 24, "rparms"},
    {&flags_class::reset, 31, "reset"},
    {&flags_class::evaluate, 25, "evaluate"},
    {&flags_class::reset_x, 26, "reset_x"},
    {&flags_class::x_matrix, 27, "x_matrix"},
    {&flags_class::matrix_ddt, 28, "matrix_ddt"},
    {&flags_class::matrix_alg, 29, "matrix_alg"},
};
static_assert(sizeof switches / sizeof switches[0] == flags_class::n_flags);

// Order in which write_all_true asks, by number: solution kinds first, then what is wanted of the model.
constexpr int asking_order[] = {0,  1,  2,  3,  4,  30, 6,  7,  8,  10, 13, 9,  5,  12, 14, 15,
                                17, 16, 18, 19, 11, 20, 23, 24, 21, 22, 31, 25, 26, 27, 28, 29};
static_assert(sizeof asking_order / sizeof asking_order[0] == flags_class::n_flags);

}  // namespace

void flags_class::init_flags() {
    for (const flag_switch& s : switches)
        if (s.member != &flags_class::x_matrix) this->*s.member = 0;
}

void flags_class::save_flags() {
    for (const flag_switch& s : switches) saved[static_cast<std::size_t>(s.number)] = this->*s.member;
}

void flags_class::retrieve_flags() {
    for (const flag_switch& s : switches) this->*s.member = saved[static_cast<std::size_t>(s.number)];
}

void flags_class::write_all_true() const {
    for (const int number : asking_order)
        for (const flag_switch& s : switches) {
            if (s.number != number || this->*s.member == 0) continue;
            std::string text = std::string("  ") + s.name;
            text.resize(17, ' ');
            say(text + "= int_T");
            return;
        }
}

void flags_class::tell_event(double before, double now, bool acts) {
    event = 1;
    if (acts) event_acts = 1;
    const bool passes = (before < 0.0 && now >= 0.0) || (before > 0.0 && now <= 0.0);
    event_share = std::min(event_share, passes ? before / (before - now) : 0.5);
}

void flags_class::forget_events() {
    event = event_acts = event_reset = 0;
    event_share = 1.0;
}
