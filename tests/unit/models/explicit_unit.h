// explicit_unit.h -- one unit of an explicit block of this build, with all arrays that its model sees.
#pragma once
#include <algorithm>
#include <string>
#include <vector>

#include "block_unit.h"
#include "library/basic/xbac1_class.h"
#include "library/basic/xbes1_class.h"

inline const xbes_class& installed_xbes() {
    static const xbes_class lib = [] {
        xbes_class l;
        read_library(std::string(TARNEL_SHARE) + "/xbes.aux", xbes_form, int_F, {}, l);
        return l;
    }();
    return lib;
}

inline const xbac_class& installed_xbac() {
    static const xbac_class lib = [] {
        xbac_class l;
        read_library(std::string(TARNEL_SHARE) + "/xbac.aux", xbac_form, int_F, {}, l);
        return l;
    }();
    return lib;
}

struct ac_explicit : small_signal_unit<xbe_ac_call, xbac1_class> {
    explicit ac_explicit(const std::string& type) : small_signal_unit(installed_xbac(), &library_lists::xvr, type) {}
    double& r(const std::string& word) { return rparm[static_cast<std::size_t>(lib.list.rprm.find(e, word))]; }
};

// All numbers of a unit: parameters at their defaults, variables at 0. One spare place each, so that none is empty.
struct explicit_numbers {
    std::vector<int> iparm;
    std::vector<double> rparm, igparm, vr, vr_new, gvr, aux, aux_new, bev, cur, f, fg, fh;
    bool operator==(const explicit_numbers&) const = default;
};

struct explicit_unit {
    const xbes_class& lib;
    std::string name;
    int e;
    model_function<xbe_call> function;
    explicit_numbers x;
    std::vector<char*> sparm = {nullptr};
    xbes1_class jac;
    flags_class flags;
    dp_class dp;
    math_cnst_class math_cnst;

    explicit explicit_unit(const std::string& type)
        : lib(installed_xbes()), name(type), e(lib.list.find(type)), function(find_model<xbe_call>(type)) {
        if (e < 0) throw std::invalid_argument(type);
        const library_lists& l = lib.list;
        const auto with_spare = [](auto values) {
            values.push_back({});
            return values;
        };
        x.iparm = with_spare(default_values(l.iprm, e));
        x.rparm = with_spare(default_values(l.rprm, e));
        x.igparm = with_spare(default_values(l.ig, e));
        const auto sized = [](std::vector<double>& a, int n) { a.assign(static_cast<std::size_t>(n) + 1, 0.0); };
        for (std::vector<double>* a : {&x.vr, &x.vr_new}) sized(*a, l.xvr.count(e));
        for (std::vector<double>* a : {&x.aux, &x.aux_new}) sized(*a, l.aux.count(e));
        sized(x.gvr, l.vr.count(e));
        sized(x.bev, l.bev.count(e));
        sized(x.cur, l.cur.count(e));
        sized(x.f, lib.func.n_func(e));
        sized(x.fg, lib.func_g.n_func(e));
        sized(x.fh, lib.func_h.n_func(e));
        jac.initialise(lib, e);
        flags.t_start = 0;
        dp.xbe.table = {table_for(type)};
        dp.xbe.of_unit = {0};
    }

    void call() {
        function(0, x.iparm.data(), sparm.data(), x.rparm.data(), x.igparm.data(), x.vr.data(), x.vr_new.data(),
                 x.gvr.data(), x.aux.data(), x.aux_new.data(), x.bev.data(), x.cur.data(), x.f.data(), x.fg.data(),
                 x.fh.data(), &jac, &flags, &dp, &math_cnst);
    }
    // One call with these switches on.
    template <class... F>
    void call(F... switches) {
        flags.init_flags();
        flags.x_matrix = 0;
        ((flags.*switches = 1), ...);
        call();
        flags.init_flags();
        flags.x_matrix = 0;
    }
    double& r(const std::string& word) { return at(lib.list.rprm, x.rparm, word); }
    int& i(const std::string& word) { return at(lib.list.iprm, x.iparm, word); }
    double& ig(const std::string& word) { return at(lib.list.ig, x.igparm, word); }
    double& vr(const std::string& word) { return at(lib.list.xvr, x.vr, word); }
    double& gvr(const std::string& word) { return at(lib.list.vr, x.gvr, word); }
    double& aux(const std::string& word) { return at(lib.list.aux, x.aux, word); }
    template <class L, class T>
    T& at(const L& list, std::vector<T>& values, const std::string& word) {
        const int j = list.find(e, word);
        if (j < 0) throw std::invalid_argument(word);
        return values[static_cast<std::size_t>(j)];
    }
    int n_inputs() const { return lib.list.n_input[static_cast<std::size_t>(e)]; }
    int n_outputs() const { return lib.list.xvr.count(e) - n_inputs(); }
    bool is(const std::vector<int>& flag) const { return flag[static_cast<std::size_t>(e)] != 0; }

    void prepare() { call(&flags_class::one_time_parms); }
    void guess() { call(&flags_class::init_guess); }
    void evaluate() { call(&flags_class::evaluate); }
    void algebra() { call(&flags_class::x_matrix, &flags_class::matrix_alg); }
    void slopes() { call(&flags_class::x_matrix, &flags_class::matrix_ddt); }
    // Output k with the inputs as they stand.
    double output_at(double time, int k = 0) {
        flags.time_given_x = time;
        evaluate();
        return x.vr[static_cast<std::size_t>(n_inputs() + k)];
    }
    // The first output for these inputs at a time.
    double output(double time, const std::vector<double>& inputs = {}) {
        flags.time_given_x = time;
        std::copy(inputs.begin(), inputs.end(), x.vr.begin());
        evaluate();
        return x.vr[static_cast<std::size_t>(n_inputs())];
    }
    void accept(double time) {
        flags.time_given_x = time;
        call(&flags_class::save_history);
    }
    void accept(double time, int step) {
        flags.iter_trns_x = step;
        accept(time);
    }
    void reset(double time) {
        flags.time_given_x = time;
        call(&flags_class::reset_x);
    }
    // The answer under nexttime at a time, from 1e9.
    double next_break(double time) {
        flags.time_given_x = time;
        flags.time_nextbreak_x = 1e9;
        call(&flags_class::nexttime);
        return flags.time_nextbreak_x;
    }
};
