// model_unit.h -- one unit of an element of this build, with all arrays that its model sees.
#pragma once
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <stdexcept>

#include "base/flags_class.h"
#include "base/math_cnst_class.h"
#include "library/basic/ebac1_class.h"
#include "library/basic/ebes1_class.h"
#include "models/dp_class.h"
#include "models/registration.h"

inline const ebes_class& installed_ebes() {
    static const ebes_class lib = [] {
        ebes_class l;
        read_library(std::string(TARNEL_SHARE) + "/ebes.aux", ebes_form, int_F, {}, l);
        return l;
    }();
    return lib;
}
inline const ebac_class& installed_ebac() {
    static const ebac_class lib = [] {
        ebac_class l;
        read_library(std::string(TARNEL_SHARE) + "/ebac.aux", ebac_form, int_F, {}, l);
        return l;
    }();
    return lib;
}

// True if the element stops the run in dc with a text of its own.
inline bool refuses_dc(std::string_view name) {
    static const std::set<std::string_view> names = {"bldc1",
                                                     "dcmc",
                                                     "dcmc_1",
                                                     "indmc",
                                                     "pmsm",
                                                     "spdt_boost",
                                                     "spdt_buck",
                                                     "syncmc_1",
                                                     "thyristor_g",
                                                     "thyristor_g_2",
                                                     "xfmr_basic_1",
                                                     "xfmr_level1_1ph",
                                                     "xfmr_level1_1ph_1_2",
                                                     "xfmr_level1_1ph_4w",
                                                     "xfmr_level2_1ph"};
    return names.contains(name);
}

template <class T>
std::vector<T> default_values(const pair_list<T>& list, int e) {
    std::vector<T> all;
    for (int j = 0; j < list.count(e); ++j) all.push_back(list.value(e, j));
    return all;
}

// All numbers of a unit: parameters at their defaults, variables at 0. One spare place each, so that none is empty.
struct model_numbers {
    std::vector<int> iparm, dvar;
    std::vector<double> rparm, stparm, igparm, v, vind, curind, aux, vr, xvr, auxs, locv, v_new, aux_new, auxs_new, f;
    bool operator==(const model_numbers&) const = default;
};

struct model_unit {
    const ebes_class& lib;
    int e;
    model_function<ebe_call> function;
    model_numbers x;
    std::vector<char*> sparm = {nullptr};
    ebes1_class jac;
    flags_class flags;
    dp_class dp;
    math_cnst_class math_cnst;

    explicit model_unit(const std::string& name)
        : lib(installed_ebes()), e(lib.list.find(name)), function(find_model<ebe_call>(name)) {
        const library_lists& l = lib.list;
        x.iparm = default_values(l.iprm, e);
        x.rparm = default_values(l.rprm, e);
        x.stparm = default_values(l.sv, e);
        x.igparm = default_values(l.ig, e);
        const auto sized = [](std::vector<double>& a, int n) { a.assign(static_cast<std::size_t>(n) + 1, 0.0); };
        for (std::vector<double>* a : {&x.v, &x.v_new}) sized(*a, l.node.count(e));
        for (std::vector<double>* a : {&x.aux, &x.aux_new}) sized(*a, l.aux.count(e));
        for (std::vector<double>* a : {&x.auxs, &x.auxs_new}) sized(*a, l.auxs.count(e));
        sized(x.vind, l.ind_node.count(e));
        sized(x.curind, l.ind_branch.count(e));
        sized(x.vr, l.vr.count(e));
        sized(x.xvr, l.xvr.count(e));
        sized(x.locv, l.locv.count(e));
        sized(x.f, lib.func.n_func(e));
        x.dvar.assign(static_cast<std::size_t>(l.dgtl.count(e)) + 1, 0);
        jac.initialise(lib, e);
        if (name == "mos_level1") r("vt0") = 0.5, r("kp") = 2e-5;  // without these it stops
    }

    void call() {
        function(0, x.iparm.data(), sparm.data(), x.rparm.data(), x.stparm.data(), x.igparm.data(), x.v.data(),
                 x.vind.data(), x.curind.data(), x.aux.data(), x.vr.data(), x.xvr.data(), x.auxs.data(), x.locv.data(),
                 x.v_new.data(), x.aux_new.data(), x.auxs_new.data(), x.dvar.data(), x.f.data(), &jac, &flags, &dp,
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
    double& r(const std::string& word) {
        const int j = lib.list.rprm.find(e, word);
        if (j < 0) throw std::invalid_argument(word);
        return x.rparm[static_cast<std::size_t>(j)];
    }
    void prepare() { call(&flags_class::one_time_parms); }
    // The model's functions and derivatives in DC.
    void dc() { call(&flags_class::dc, &flags_class::function, &flags_class::jacobian); }
    void startup() { call(&flags_class::startup, &flags_class::function, &flags_class::jacobian); }
    void trns() { call(&flags_class::trns, &flags_class::function, &flags_class::jacobian); }
};

// The same for a small-signal form.
struct ac_unit {
    using number = std::complex<double>;
    const ebac_class& lib;
    int e;
    model_function<ebe_ac_call> function;
    std::vector<int> iparm;
    std::vector<double> rparm;
    std::vector<char*> sparm = {nullptr};
    std::vector<number> v, vind, curind, aux, vr, f;
    ebac1_class jac;
    ebes1_class* ebe_jac = nullptr;
    flags_class flags;
    dp_class dp;
    math_cnst_class math_cnst;

    explicit ac_unit(const std::string& name)
        : lib(installed_ebac()), e(lib.list.find(name)), function(find_model<ebe_ac_call>(name)) {
        const library_lists& l = lib.list;
        iparm = default_values(l.iprm, e);
        rparm = default_values(l.rprm, e);
        const auto sized = [](std::vector<number>& a, int n) { a.assign(static_cast<std::size_t>(n) + 1, 0.0); };
        sized(v, l.node.count(e));
        sized(vind, l.ind_node.count(e));
        sized(curind, l.ind_branch.count(e));
        sized(aux, l.aux.count(e));
        sized(vr, l.vr.count(e));
        sized(f, lib.func.n_func(e));
        jac.initialise(lib, e);
    }
    void call(double freq) {
        function(0, iparm.data(), sparm.data(), freq, rparm.data(), v.data(), vind.data(), curind.data(), aux.data(),
                 vr.data(), f.data(), &jac, ebe_jac, &flags, &dp, &math_cnst);
    }
    void ac(double freq) {
        flags.ac = flags.function = flags.jacobian = 1;
        call(freq);
        flags.init_flags();
    }
    double& r(const std::string& word) {
        const int j = lib.list.rprm.find(e, word);
        if (j < 0) throw std::invalid_argument(word);
        return rparm[static_cast<std::size_t>(j)];
    }
};
