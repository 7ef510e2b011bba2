// calls.h -- the arguments of models: for each family one struct, and the order in which its models take them.
#pragma once
#include <array>
#include <complex>
#include <cstddef>
#include <type_traits>

struct flags_class;
struct dp_class;
struct math_cnst_class;
struct ebes1_class;
struct gbes1_class;
struct ebac1_class;
struct gbac1_class;
struct xbes1_class;
struct xbac1_class;

template <class Member>
struct member_type;
template <class Call, class T>
struct member_type<T Call::*> {
    using type = T;
};

// An argument that models take by reference: one number for each unit.
template <class T>
struct referred {
    T* at = nullptr;

    operator T&() const { return *at; }
    referred& operator+=(std::ptrdiff_t by) {
        at += by;
        return *this;
    }
    friend std::ptrdiff_t operator-(referred a, referred b) { return a.at - b.at; }
};
template <class T>
struct parameter_of {
    using type = T;
};
template <class T>
struct parameter_of<referred<T>> {
    using type = T&;
};

// The arguments of a model between the number of its unit and what all models are given. Those that point to numbers or
// texts are slices of the tables of the units; others (the object for derivatives, a frequency) are the same for all
// units of a template.
template <auto... member>
struct argument_list {
    using function = void (*)(const int i_unit,
                              typename parameter_of<typename member_type<decltype(member)>::type>::type...,
                              flags_class*, dp_class*, math_cnst_class*);
    // From the slices of one unit to those of another, for each argument.
    using steps = std::array<std::ptrdiff_t, sizeof...(member)>;

    template <class T>
    static constexpr bool is_slice = !std::is_same_v<typename parameter_of<T>::type, T> ||
                                     (std::is_pointer_v<T> && (!std::is_class_v<std::remove_pointer_t<T>> ||
                                                               std::is_same_v<T, std::complex<double>*>));

    // Inlined, so that of a model's body in the place of the call only those slices are stepped through that it uses.
    template <class Call>
    [[gnu::always_inline]] static void call(function model, int unit, const Call& c, flags_class* flags, dp_class* dp,
                                            math_cnst_class* math_cnst) {
        model(unit, c.*member..., flags, dp, math_cnst);
    }
    template <class Call>
    [[gnu::always_inline]] static void advance(Call& c, const steps& by) {
        std::size_t k = 0;
        (advance_one(c.*member, by[k++]), ...);
    }
    template <class Call>
    static steps between(const Call& from, const Call& to) {
        return {distance(from.*member, to.*member)...};
    }

private:
    template <class T>
    [[gnu::always_inline]] static void advance_one(T& argument, std::ptrdiff_t by) {
        if constexpr (is_slice<T>) argument += by;
    }
    template <class T>
    static std::ptrdiff_t distance(T from, T to) {
        if constexpr (is_slice<T>)
            return to - from;
        else
            return 0;
    }
};

// One call with the pointers to its unit's slices resolved: parameters, present values, values of the next iterate
// under limiting (_new), function values, and jac for the partial derivatives. function is null if there is no such
// model; the call then does nothing. n_counts: numbers in a row of the family's registration.

// A model of an electrical element.
struct ebe_call {
    int* iparm = nullptr;
    char** sparm = nullptr;
    double *rparm = nullptr, *stparm = nullptr, *igparm = nullptr;
    double *v = nullptr, *vind = nullptr, *curind = nullptr, *aux = nullptr, *vr = nullptr, *xvr = nullptr,
           *auxs = nullptr, *locv = nullptr;
    double *v_new = nullptr, *aux_new = nullptr, *auxs_new = nullptr;
    int* dvar = nullptr;
    double* f = nullptr;
    ebes1_class* jac = nullptr;

    using number = double;
    using arguments =
        argument_list<&ebe_call::iparm, &ebe_call::sparm, &ebe_call::rparm, &ebe_call::stparm, &ebe_call::igparm,
                      &ebe_call::v, &ebe_call::vind, &ebe_call::curind, &ebe_call::aux, &ebe_call::vr, &ebe_call::xvr,
                      &ebe_call::auxs, &ebe_call::locv, &ebe_call::v_new, &ebe_call::aux_new, &ebe_call::auxs_new,
                      &ebe_call::dvar, &ebe_call::f, &ebe_call::jac>;
    static constexpr int n_counts = 15;
    arguments::function function = nullptr;
};

// A model of a general block.
struct gbe_call {
    int* iparm = nullptr;
    char** sparm = nullptr;
    double *rparm = nullptr, *stparm = nullptr, *igparm = nullptr;
    double *vr = nullptr, *xvr = nullptr, *aux = nullptr, *vr_new = nullptr, *aux_new = nullptr;
    double* f = nullptr;
    gbes1_class* jac = nullptr;

    using number = double;
    using arguments = argument_list<&gbe_call::iparm, &gbe_call::sparm, &gbe_call::rparm, &gbe_call::stparm,
                                    &gbe_call::igparm, &gbe_call::vr, &gbe_call::xvr, &gbe_call::aux, &gbe_call::vr_new,
                                    &gbe_call::aux_new, &gbe_call::f, &gbe_call::jac>;
    static constexpr int n_counts = 9;
    arguments::function function = nullptr;
};

// A small-signal model of an electrical element; freq in rad/s. ebe_jac: derivatives of the element at the bias point,
// or null.
struct ebe_ac_call {
    using number = std::complex<double>;
    int* iparm = nullptr;
    char** sparm = nullptr;
    double freq = 0.0;
    double* rparm = nullptr;
    number *v = nullptr, *vind = nullptr, *curind = nullptr, *aux = nullptr, *vr = nullptr, *f = nullptr;
    ebac1_class* jac = nullptr;
    ebes1_class* ebe_jac = nullptr;

    using arguments = argument_list<&ebe_ac_call::iparm, &ebe_ac_call::sparm, &ebe_ac_call::freq, &ebe_ac_call::rparm,
                                    &ebe_ac_call::v, &ebe_ac_call::vind, &ebe_ac_call::curind, &ebe_ac_call::aux,
                                    &ebe_ac_call::vr, &ebe_ac_call::f, &ebe_ac_call::jac, &ebe_ac_call::ebe_jac>;
    static constexpr int n_counts = 9;
    arguments::function function = nullptr;
};

// A small-signal model of a general block.
struct gbe_ac_call {
    using number = std::complex<double>;
    int* iparm = nullptr;
    char** sparm = nullptr;
    double freq = 0.0;
    double* rparm = nullptr;
    number *vr = nullptr, *aux = nullptr, *f = nullptr;
    gbac1_class* jac = nullptr;

    using arguments = argument_list<&gbe_ac_call::iparm, &gbe_ac_call::sparm, &gbe_ac_call::freq, &gbe_ac_call::rparm,
                                    &gbe_ac_call::vr, &gbe_ac_call::aux, &gbe_ac_call::f, &gbe_ac_call::jac>;
    static constexpr int n_counts = 6;
    arguments::function function = nullptr;
};

// A model of a digital element. stbl_in, stbl_out: 1 where val_in, val_out is a known level; lparm: what the element
// keeps between calls; dstate: its pending action; stbl: 0 while an event is pending at t_next, s.
struct dbe_call {
    int* iparm = nullptr;
    char** sparm = nullptr;
    double* rparm = nullptr;
    int *stparm = nullptr, *igparm = nullptr, *lparm = nullptr;
    int *stbl_in = nullptr, *stbl_out = nullptr, *val_in = nullptr, *val_out = nullptr, *val_in_old = nullptr;
    double* val_anlg = nullptr;
    referred<int> dstate, stbl;
    referred<double> t_next;

    using number = double;
    using arguments = argument_list<&dbe_call::iparm, &dbe_call::sparm, &dbe_call::rparm, &dbe_call::stparm,
                                    &dbe_call::igparm, &dbe_call::lparm, &dbe_call::stbl_in, &dbe_call::stbl_out,
                                    &dbe_call::val_in, &dbe_call::val_out, &dbe_call::val_in_old, &dbe_call::val_anlg,
                                    &dbe_call::dstate, &dbe_call::stbl, &dbe_call::t_next>;
    static constexpr int n_counts = 11;
    arguments::function function = nullptr;
};

// A model of an explicit block. vr: its inputs, then its outputs; bev, cur: voltages and currents of its branches in a
// network; f: slopes of its states; fg, fh: its rows in a network. index, all: where its variables stand among those of
// all blocks, for runs of units.
struct xbe_call {
    int* iparm = nullptr;
    char** sparm = nullptr;
    double *rparm = nullptr, *igparm = nullptr, *vr = nullptr, *vr_new = nullptr, *gvr = nullptr, *aux = nullptr,
           *aux_new = nullptr, *bev = nullptr, *cur = nullptr, *f = nullptr, *fg = nullptr, *fh = nullptr;
    xbes1_class* jac = nullptr;
    const int* index = nullptr;
    double* all = nullptr;

    using number = double;
    using arguments =
        argument_list<&xbe_call::iparm, &xbe_call::sparm, &xbe_call::rparm, &xbe_call::igparm, &xbe_call::vr,
                      &xbe_call::vr_new, &xbe_call::gvr, &xbe_call::aux, &xbe_call::aux_new, &xbe_call::bev,
                      &xbe_call::cur, &xbe_call::f, &xbe_call::fg, &xbe_call::fh, &xbe_call::jac>;
    static constexpr int n_counts = 13;
    arguments::function function = nullptr;
};

// A small-signal model of an explicit block.
struct xbe_ac_call {
    using number = std::complex<double>;
    int* iparm = nullptr;
    char** sparm = nullptr;
    double freq = 0.0;
    double* rparm = nullptr;
    number *vr = nullptr, *aux = nullptr, *f = nullptr;
    xbac1_class* jac = nullptr;

    using arguments = argument_list<&xbe_ac_call::iparm, &xbe_ac_call::sparm, &xbe_ac_call::freq, &xbe_ac_call::rparm,
                                    &xbe_ac_call::vr, &xbe_ac_call::aux, &xbe_ac_call::f, &xbe_ac_call::jac>;
    static constexpr int n_counts = 6;
    arguments::function function = nullptr;
};

template <class Call>
using model_function = typename Call::arguments::function;
