// block_unit.h -- one unit of a general block of this build, with all arrays that its model sees.
#pragma once
#include <algorithm>
#include <string>
#include <vector>

#include "library/basic/gbac1_class.h"
#include "library/basic/gbes1_class.h"
#include "model_unit.h"

inline const gbes_class& installed_gbes() {
    static const gbes_class lib = [] {
        gbes_class l;
        read_library(std::string(TARNEL_SHARE) + "/gbes.aux", gbes_form, int_F, {}, l);
        return l;
    }();
    return lib;
}

inline const gbac_class& installed_gbac() {
    static const gbac_class lib = [] {
        gbac_class l;
        read_library(std::string(TARNEL_SHARE) + "/gbac.aux", gbac_form, int_F, {}, l);
        return l;
    }();
    return lib;
}

// All numbers of a unit: parameters at their defaults, variables at 0. One spare place each, so that none is empty.
struct block_numbers {
    std::vector<int> iparm;
    std::vector<double> rparm, stparm, igparm, vr, xvr, aux, vr_new, aux_new, f;
    bool operator==(const block_numbers&) const = default;
};

// For blocks that read a file: points, switching times, or 2 values along each axis.
inline data_table table_for(const std::string& type) {
    if (type.starts_with("pwm_file")) return {{0.5e-4, 1e-4, 2e-4}, {}};
    if (!type.starts_with("lut_file")) return {{-0.5, 0.1, 0.1, 0.6}, {1, 2, -1, 3}};
    const int n_axes = type[9] - '0', n_y = type.back() - '0';
    data_table table{{}, {}, std::vector<int>(static_cast<std::size_t>(n_axes), 2), n_y};
    for (int i = 0; i < n_y << n_axes; ++i) table.y.push_back(i * i - 3.5 * i);
    return table;
}

struct block_unit {
    const gbes_class& lib;
    std::string name;
    int e;
    model_function<gbe_call> function;
    block_numbers x;
    std::vector<char*> sparm = {nullptr};
    gbes1_class jac;
    flags_class flags;
    dp_class dp;
    math_cnst_class math_cnst;

    explicit block_unit(const std::string& type)
        : lib(installed_gbes()), name(type), e(lib.list.find(type)), function(find_model<gbe_call>(type)) {
        if (e < 0) throw std::invalid_argument(type);
        const library_lists& l = lib.list;
        const auto with_spare = [](auto values) {
            values.push_back({});
            return values;
        };
        x.iparm = with_spare(default_values(l.iprm, e));
        x.rparm = with_spare(default_values(l.rprm, e));
        x.stparm = with_spare(default_values(l.sv, e));
        x.igparm = with_spare(default_values(l.ig, e));
        const auto sized = [](std::vector<double>& a, int n) { a.assign(static_cast<std::size_t>(n) + 1, 0.0); };
        for (std::vector<double>* a : {&x.vr, &x.vr_new}) sized(*a, l.vr.count(e));
        for (std::vector<double>* a : {&x.aux, &x.aux_new}) sized(*a, l.aux.count(e));
        sized(x.xvr, l.xvr.count(e));
        sized(x.f, lib.func.n_func(e));
        jac.initialise(lib, e);
        dp.gbe.table = {table_for(type)};
        dp.gbe.of_unit = {0};
        dp.clock_delay_2.of_unit = {0};
        dp.clock_delay_2.slots.resize(50);
    }

    void call() {
        function(0, x.iparm.data(), sparm.data(), x.rparm.data(), x.stparm.data(), x.igparm.data(), x.vr.data(),
                 x.xvr.data(), x.aux.data(), x.vr_new.data(), x.aux_new.data(), x.f.data(), &jac, &flags, &dp,
                 &math_cnst);
    }
    // One call with these switches on.
    template <class... F>
    void call(F... switches) {
        flags.init_flags();
        ((flags.*switches = 1), ...);
        call();
        flags.init_flags();
    }
    double& r(const std::string& word) { return at(lib.list.rprm, x.rparm, word); }
    int& i(const std::string& word) { return at(lib.list.iprm, x.iparm, word); }
    double& st(const std::string& word) { return at(lib.list.sv, x.stparm, word); }
    double& ig(const std::string& word) { return at(lib.list.ig, x.igparm, word); }
    double& vr(const std::string& word) { return at(lib.list.vr, x.vr, word); }
    double& aux(const std::string& word) { return at(lib.list.aux, x.aux, word); }
    template <class L, class T>
    T& at(const L& list, std::vector<T>& values, const std::string& word) {
        const int j = list.find(e, word);
        if (j < 0) throw std::invalid_argument(word);
        return values[static_cast<std::size_t>(j)];
    }
    void prepare() { call(&flags_class::one_time_parms); }
    void guess() { call(&flags_class::init_guess); }
    void dc() { call(&flags_class::dc, &flags_class::function, &flags_class::jacobian); }
    void startup() { call(&flags_class::startup, &flags_class::function, &flags_class::jacobian); }
    void trns() { call(&flags_class::trns, &flags_class::function, &flags_class::jacobian); }
    void accept(double time) {
        flags.time_given = time;
        call(&flags_class::save_history);
    }
    // The answer under nexttime at a time, from 1e9.
    double next_break(double time) {
        flags.time_given = time;
        flags.time_nextbreak = 1e9;
        call(&flags_class::nexttime);
        return flags.time_nextbreak;
    }
    // What the output of row 0 would be in a transient: f is output - g, and the output stands at 0.
    double output(double time) {
        flags.time_given = time;
        const std::vector<double> kept = x.vr;
        const int out = lib.list.vr.count(e) - lib.func.n_func(e);
        x.vr[static_cast<std::size_t>(out)] = 0;
        call(&flags_class::trns, &flags_class::function);
        x.vr = kept;
        return -x.f[0];
    }
};

// One unit of a small-signal form of blocks, with all arrays that its model sees.
template <class Call, class Jac>
struct small_signal_unit {
    using number = std::complex<double>;
    const basic_library& lib;
    int e;
    model_function<Call> function;
    std::vector<int> iparm;
    std::vector<double> rparm;
    std::vector<char*> sparm = {nullptr};
    std::vector<number> vr, aux, f;
    Jac jac;
    flags_class flags;
    dp_class dp;
    math_cnst_class math_cnst;

    small_signal_unit(const basic_library& installed, word_list library_lists::*variables, const std::string& type)
        : lib(installed), e(lib.list.find(type)), function(find_model<Call>(type)) {
        if (e < 0) throw std::invalid_argument(type);
        const library_lists& l = lib.list;
        iparm = default_values(l.iprm, e);
        rparm = default_values(l.rprm, e);
        const auto sized = [](std::vector<number>& a, int n) { a.assign(static_cast<std::size_t>(n) + 1, 0.0); };
        sized(vr, (l.*variables).count(e));
        sized(aux, l.aux.count(e));
        sized(f, lib.func.n_func(e));
        jac.initialise(lib, e);
    }
    void call(double freq) {
        function(0, iparm.data(), sparm.data(), freq, rparm.data(), vr.data(), aux.data(), f.data(), &jac, &flags, &dp,
                 &math_cnst);
    }
    void ac(double freq) {
        flags.ac = flags.function = flags.jacobian = 1;
        call(freq);
        flags.init_flags();
    }
};

struct ac_block : small_signal_unit<gbe_ac_call, gbac1_class> {
    explicit ac_block(const std::string& type) : small_signal_unit(installed_gbac(), &library_lists::vr, type) {}
};
