// digital_one.h -- one digital unit of this build, and a plain engine that feeds it with levels in time.
#pragma once
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/flags_class.h"
#include "base/math_cnst_class.h"
#include "library/basic_form.h"
#include "library/basic_library.h"
#include "model_unit.h"
#include "models/dp_class.h"
#include "models/registration.h"

inline const basic_library& installed_dbes() {
    static const basic_library lib = [] {
        basic_library l;
        read_library(std::string(TARNEL_SHARE) + "/dbes.aux", dbes_form, int_F, {}, l);
        return l;
    }();
    return lib;
}

// What a call may change.
struct digital_numbers {
    std::vector<int> iparm, stparm, igparm, lparm, stbl_in, stbl_out, val_in, val_out, val_in_old;
    std::vector<double> rparm, val_anlg;
    int dstate = 0, stbl = 1;
    double t_next = 0.0;
    bool operator==(const digital_numbers&) const = default;
};

// Parameters at their defaults, inputs unknown, at rest. Levels are written as texts: "01x", one letter a node.
struct digital_one {
    const basic_library& lib;
    int e, n_in, n_out, i_unit = 0;
    model_function<dbe_call> function;
    digital_numbers x;
    std::vector<char*> sparm = {nullptr};
    flags_class flags;
    dp_class dp;
    math_cnst_class math_cnst;

    explicit digital_one(const std::string& name)
        : lib(installed_dbes()),
          e(lib.list.find(name)),
          n_in(lib.list.n_input[static_cast<std::size_t>(e)]),
          n_out(lib.list.dgtl.count(e) - n_in),
          function(find_model<dbe_call>(name)) {
        const library_lists& l = lib.list;
        x.iparm = default_values(l.iprm, e);
        x.rparm = default_values(l.rprm, e);
        for (const double v : default_values(l.sv, e)) x.stparm.push_back(static_cast<int>(v));
        for (const double v : default_values(l.ig, e)) x.igparm.push_back(static_cast<int>(v));
        const auto sized = [](auto& a, int n) { a.assign(static_cast<std::size_t>(n) + 1, 0); };
        for (auto* a : {&x.stbl_in, &x.val_in, &x.val_in_old}) sized(*a, n_in);
        for (auto* a : {&x.stbl_out, &x.val_out}) sized(*a, n_out);
        sized(x.lparm, l.n_logical[static_cast<std::size_t>(e)]);
        sized(x.val_anlg, l.ind_node.count(e));
    }

    template <class... F>
    void call(F... switches) {
        flags.init_flags();
        ((flags.*switches = 1), ...);
        function(i_unit, x.iparm.data(), sparm.data(), x.rparm.data(), x.stparm.data(), x.igparm.data(), x.lparm.data(),
                 x.stbl_in.data(), x.stbl_out.data(), x.val_in.data(), x.val_out.data(), x.val_in_old.data(),
                 x.val_anlg.data(), x.dstate, x.stbl, x.t_next, &flags, &dp, &math_cnst);
        flags.init_flags();
    }
    void prepare() { call(&flags_class::one_time_parms); }
    void startup() { call(&flags_class::startup); }
    void guess() { call(&flags_class::init_guess); }
    void dc() { call(&flags_class::dc); }
    void process(double t) {
        flags.time_given = t;
        call(&flags_class::trns, &flags_class::process);
    }
    void schedule(double t) {
        flags.time_given = t;
        call(&flags_class::trns, &flags_class::schedule);
    }

    // The inputs as they stand now; what they were is what stood before.
    void inputs(const std::string& levels) {
        if (static_cast<int>(levels.size()) != n_in) throw std::invalid_argument(levels);
        for (std::size_t k = 0; k < levels.size(); ++k) {
            x.val_in_old[k] = x.stbl_in[k] == 1 && x.val_in[k] == 1;
            x.stbl_in[k] = levels[k] != 'x';
            x.val_in[k] = levels[k] == '1';
        }
    }
    void settled_inputs(const std::string& levels) {
        inputs(levels);
        inputs(levels);
    }
    std::string outputs() const {
        std::string s;
        for (std::size_t k = 0; k < static_cast<std::size_t>(n_out); ++k)
            s += x.stbl_out[k] != 1 ? 'x' : x.val_out[k] == 1 ? '1' : '0';
        return s;
    }

    double& r(const std::string& word) { return at(lib.list.rprm, x.rparm, word); }
    int& i(const std::string& word) { return at(lib.list.iprm, x.iparm, word); }
    int& st(const std::string& word) { return at(lib.list.sv, x.stparm, word); }

private:
    template <class L, class T>
    T& at(const L& list, std::vector<T>& values, const std::string& word) {
        const int j = list.find(e, word);
        if (j < 0) throw std::invalid_argument(word);
        return values[static_cast<std::size_t>(j)];
    }
};

struct levels_at {
    double t;
    std::string levels;
    bool operator==(const levels_at&) const = default;
};
inline void PrintTo(const levels_at& l, std::ostream* out) { *out << l.t << " s: " << l.levels; }

// Feeds the unit with levels of its inputs from now on, as an engine does: at each time inputs change first, then the
// unit fires if its time has come, then it may react if an input has changed and nothing is pending. Gives the outputs
// at each event at which they changed.
inline std::vector<levels_at> run_in_time(digital_one& u, const std::vector<levels_at>& feed, double t_end) {
    std::vector<levels_at> all;
    std::string present(static_cast<std::size_t>(u.n_in), 'x');
    for (std::size_t k = 0; k < present.size(); ++k)
        present[k] = u.x.stbl_in[k] != 1 ? 'x' : u.x.val_in[k] == 1 ? '1' : '0';
    std::size_t next = 0;
    while (true) {
        double t = std::numeric_limits<double>::infinity();
        if (next < feed.size()) t = feed[next].t;
        if (u.x.stbl == 0) t = std::min(t, u.x.t_next);
        if (!(t < t_end)) return all;
        const std::string before = u.outputs();
        bool changed = false;
        std::string now = present;
        if (next < feed.size() && feed[next].t == t) now = feed[next++].levels;
        changed = now != present;
        u.inputs(now);
        present = now;
        if (u.x.stbl == 0 && u.x.t_next <= t) u.process(t);
        if (u.outputs() != before) all.push_back({t, u.outputs()});
        const std::string fired = u.outputs();
        if (changed && u.x.stbl == 1) u.schedule(t);
        if (u.outputs() != fired) throw std::logic_error("an output moved without an event");
    }
}
