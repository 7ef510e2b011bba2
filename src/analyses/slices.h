// slices.h -- the families of units whose models the analyses call: where what a model is given stands, as rows.
#pragma once
#include <tuple>

#include "analyses/ac_system.h"
#include "library/basic/ebac1_class.h"
#include "library/basic/gbac1_class.h"
#include "library/basic/xbac1_class.h"
#include "library/basic/xbes1_class.h"
#include "library/basic_form.h"
#include "models/calls.h"

// An argument of a call: the member of the call, the values of all units, where a unit's begin. Without `first` the
// values are rows of parameters.
template <class Argument, class Values, class First>
struct slice {
    Argument argument;
    Values values;
    First first;
};
template <class Argument, class Row>
struct parameter_slice {
    Argument argument;
    Row row;
};

// clang 14 deduces no arguments of an aggregate by itself.
template <class Argument, class Values, class First>
slice(Argument, Values, First) -> slice<Argument, Values, First>;
template <class Argument, class Row>
parameter_slice(Argument, Row) -> parameter_slice<Argument, Row>;

// Values that units see of those that several units share: copy[k] = value[index[k]]. value may be of another family.
template <class Copy, class Value, class Index>
struct gathered {
    Copy copy;
    Value value;
    Index index;
};
template <class Copy, class Value, class Index>
gathered(Copy, Value, Index) -> gathered<Copy, Value, Index>;

// The unknowns that units of a family share, in the present iterate and in the next one, and each unit's copies.
template <class Units>
struct shared_unknowns {
    std::vector<double> Units::*value, Units::*value_new, Units::*copy, Units::*copy_new;
    row_table<int> Units::*index;  // unknown of each copy
    int Units::*ref;               // unknown that no unit writes; null: there is none
    int ref_of(const Units& units) const { return ref ? units.*ref : -1; }
};

template <class Call>
constexpr auto parameter_slices =
    std::tuple{parameter_slice{&Call::iparm, &unit_core::iprm}, parameter_slice{&Call::sparm, &unit_core::sprm},
               parameter_slice{&Call::rparm, &unit_core::rprm}, parameter_slice{&Call::stparm, &unit_core::sv},
               parameter_slice{&Call::igparm, &unit_core::ig}};

// A small-signal form has no start values, those of a digital element are integers.
template <class Call>
constexpr auto ac_parameter_slices =
    std::tuple{parameter_slice{&Call::iparm, &unit_core::iprm}, parameter_slice{&Call::sparm, &unit_core::sprm},
               parameter_slice{&Call::rparm, &unit_core::rprm}};

struct electrical_family {
    using call = ebe_call;
    using jac = ebes1_class;
    using units = ebeu_class;
    static constexpr const basic_form& form = ebes_form;
    static constexpr int elements = fam_e;  // kind of element statement
    static constexpr auto parameters = parameter_slices<call>;
    static constexpr auto slices = std::tuple{slice{&call::v, &units::nodev, &units::nd},
                                              slice{&call::v_new, &units::nodev_new, &units::nd},
                                              slice{&call::vind, &units::vin, &units::in},
                                              slice{&call::curind, &units::curind, &units::ib},
                                              slice{&call::aux, &units::aux, &units::first_aux},
                                              slice{&call::aux_new, &units::aux_new, &units::first_aux},
                                              slice{&call::vr, &units::val_vr, &units::vr},
                                              slice{&call::xvr, &units::val_xvr, &units::xvr},
                                              slice{&call::auxs, &units::auxs, &units::first_auxs},
                                              slice{&call::auxs_new, &units::auxs_new, &units::first_auxs},
                                              slice{&call::locv, &units::locv, &units::first_locv},
                                              slice{&call::dvar, &units::dvar, &units::dgtl},
                                              slice{&call::f, &units::f, &unit_core::first_func}};
    static constexpr auto copies = std::tuple{gathered{&units::nodev, &units::val_nd, &units::nd},
                                              gathered{&units::vin, &units::val_nd, &units::in},
                                              gathered{&units::val_vr, &gbeu_class::val_vr, &units::vr_gbeu},
                                              gathered{&units::dvar, &dbeu_class::dvar, &units::dgtl_dbeu}};
    static constexpr shared_unknowns<units> shared = {&units::val_nd,    &units::val_nd_new, &units::nodev,
                                                      &units::nodev_new, &units::nd,         &units::ref_nd};
    static constexpr auto slots = &mat_class::ebe;
    static constexpr auto column = column_of_term;
};

struct general_family {
    using call = gbe_call;
    using jac = gbes1_class;
    using units = gbeu_class;
    static constexpr const basic_form& form = gbes_form;
    static constexpr int elements = fam_g;
    static constexpr auto parameters = parameter_slices<call>;
    static constexpr auto slices = std::tuple{slice{&call::vr, &units::vr_in, &units::vr},
                                              slice{&call::vr_new, &units::vr_in_new, &units::vr},
                                              slice{&call::xvr, &units::val_xvr, &units::xvr},
                                              slice{&call::aux, &units::aux, &units::first_aux},
                                              slice{&call::aux_new, &units::aux_new, &units::first_aux},
                                              slice{&call::f, &units::f, &unit_core::first_func}};
    static constexpr auto copies = std::tuple{gathered{&units::vr_in, &units::val_vr, &units::vr}};
    static constexpr shared_unknowns<units> shared = {&units::val_vr,    &units::val_vr_new, &units::vr_in,
                                                      &units::vr_in_new, &units::vr,         nullptr};
    static constexpr auto slots = &mat_class::gbe;
    static constexpr auto column = column_of_block_term;
};

struct electrical_ac_family {
    using call = ebe_ac_call;
    using jac = ebac1_class;
    using units = ebau_class;
    static constexpr const basic_form& form = ebac_form;
    static constexpr int elements = fam_e;
    static constexpr auto parameters = ac_parameter_slices<call>;
    static constexpr auto slices = std::tuple{
        slice{&call::v, &units::nodev, &units::nd},       slice{&call::vind, &units::vin, &units::in},
        slice{&call::curind, &units::curind, &units::ib}, slice{&call::aux, &units::aux, &units::first_aux},
        slice{&call::vr, &units::val_vr, &units::vr},     slice{&call::f, &units::f, &unit_core::first_func}};
    static constexpr auto copies = std::tuple{gathered{&units::nodev, &units::val_nd, &units::nd},
                                              gathered{&units::vin, &units::val_nd, &units::in},
                                              gathered{&units::val_vr, &gbau_class::val_vr, &units::vr_gbau}};
    static constexpr auto slots = &ac_system::ebe;
};

// Small-signal blocks of both families.
template <class Call, class Jac, class Units>
struct block_ac_rows {
    using call = Call;
    using jac = Jac;
    using units = Units;
    static constexpr auto parameters = ac_parameter_slices<call>;
    static constexpr auto slices =
        std::tuple{slice{&call::vr, &units::vr_in, &units::vr}, slice{&call::aux, &units::aux, &units::first_aux},
                   slice{&call::f, &units::f, &unit_core::first_func}};
    static constexpr auto copies = std::tuple{gathered{&units::vr_in, &units::val_vr, &units::vr}};
};

struct general_ac_family : block_ac_rows<gbe_ac_call, gbac1_class, gbau_class> {
    static constexpr const basic_form& form = gbac_form;
    static constexpr int elements = fam_g;
    static constexpr auto slots = &ac_system::gbe;
    static constexpr ac_block_unknowns unknowns = {kind_vr,
                                                   kind_gaux,
                                                   &svec_offsets::gvar,
                                                   &svec_offsets::gaux,
                                                   &tmpdim_class::mnz_gbce_ac,
                                                   &output_flags::gbce,
                                                   "gbau",
                                                   "gbac",
                                                   "gbce"};
};

struct explicit_ac_family : block_ac_rows<xbe_ac_call, xbac1_class, xbau_class> {
    static constexpr const basic_form& form = xbac_form;
    static constexpr int elements = fam_x;
    static constexpr auto slots = &ac_system::xbe;
    static constexpr ac_block_unknowns unknowns = {kind_xvr,
                                                   kind_xaux,
                                                   &svec_offsets::xvar,
                                                   &svec_offsets::xaux,
                                                   &tmpdim_class::mnz_xbce_ac,
                                                   &output_flags::xbce,
                                                   "xbau",
                                                   "xbac",
                                                   "xbce"};
};

// Digital units are called one by one, and have no derivatives. Their inputs stand in a place that they share; outputs
// stand behind the inputs.
struct digital_family {
    using call = dbe_call;
    using units = dbeu_class;
    static constexpr const basic_form& form = dbes_form;
    static constexpr auto parameters = ac_parameter_slices<call>;
    static constexpr auto slices = std::tuple{
        slice{&call::stparm, &units::stparm, &unit_core::sv},   slice{&call::igparm, &units::igparm, &unit_core::ig},
        slice{&call::lparm, &units::lparm, &units::first_lprm}, slice{&call::stbl_out, &units::stbl_out, &units::nd},
        slice{&call::val_out, &units::val_out, &units::nd},     slice{&call::val_anlg, &units::val_anlg, &units::anlg}};
};

// Explicit blocks. What they see of their variables is copied for single calls; rows of units fetch it themselves.
struct explicit_family {
    using call = xbe_call;
    using jac = xbes1_class;
    using units = xbeu_class;
    static constexpr const basic_form& form = xbes_form;
    static constexpr int elements = fam_x;
    static constexpr auto parameters =
        std::tuple{parameter_slice{&call::iparm, &unit_core::iprm}, parameter_slice{&call::sparm, &unit_core::sprm},
                   parameter_slice{&call::rparm, &unit_core::rprm}, parameter_slice{&call::igparm, &unit_core::ig}};
    static constexpr auto slices = std::tuple{slice{&call::vr, &units::vr_in, &units::vr},
                                              slice{&call::vr_new, &units::vr_in_new, &units::vr},
                                              slice{&call::gvr, &units::val_gvr, &units::gvr},
                                              slice{&call::aux, &units::aux, &units::first_aux},
                                              slice{&call::aux_new, &units::aux_new, &units::first_aux},
                                              slice{&call::bev, &units::bev, &units::first_bev},
                                              slice{&call::cur, &units::cur, &units::first_cur},
                                              slice{&call::f, &units::f, &unit_core::first_func},
                                              slice{&call::fg, &units::fg, &units::first_g},
                                              slice{&call::fh, &units::fh, &units::first_h}};
    static constexpr auto slots = nullptr;  // no part of the real system
};

// ---- how rows are walked ----

inline const std::vector<int>& numbers_of(const std::vector<int>& v) { return v; }
inline const std::vector<int>& numbers_of(const row_table<int>& t) { return t.data; }

inline const std::vector<int>& begins_of(const std::vector<int>& first) { return first; }
template <class T>
const std::vector<int>& begins_of(const row_table<T>& t) {
    return t.first;
}

// Where a member of a family's units stands.
template <class T>
auto& table_of(circuit& c, T ebeu_class::*member) {
    return c.ebeu.*member;
}
template <class T>
auto& table_of(circuit& c, T gbeu_class::*member) {
    return c.gbeu.*member;
}
template <class T>
auto& table_of(circuit& c, T dbeu_class::*member) {
    return c.dbeu.*member;
}
template <class T>
auto& table_of(circuit& c, T xbeu_class::*member) {
    return c.xbeu.*member;
}
template <class T>
auto& table_of(circuit& c, T ebau_class::*member) {
    return c.ebau.*member;
}
template <class T>
auto& table_of(circuit& c, T gbau_class::*member) {
    return c.gbau.*member;
}
template <class T>
auto& table_of(circuit& c, T xbau_class::*member) {
    return c.xbau.*member;
}
