// block_texts.h -- library entries of general blocks as text.
#pragma once
#include "library_texts.h"

inline const lines gbe_header = {
    "gbe name=x", "Jacobian: constant", "main_vars:", "iparms:",       "sparms:", "rparms:", "aux_vars:",
    "xvar:",      "stparms:",           "igparms:",   "no_functions 0"};
inline std::string gbe(const lines& replaced, const std::string& functions = "",
                       const std::string& code = "C: compiled\nendgbe\n") {
    return edited(gbe_header, replaced) + functions + code;
}
inline const lines gbe_ac_header = {
    "gbe_ac name=x", "main_vars:", "iparms:", "sparms:", "rparms:", "aux_vars:", "no_functions 0"};
inline std::string gbe_ac(const lines& replaced, const std::string& functions = "") {
    return edited(gbe_ac_header, replaced) + functions + "C: compiled\nendgbe_ac\n";
}

inline const lines gce_header = {
    "gce name=x", "begin_dc", "mainvars:", "auxvars:", "xvars:",  "outvar:",        "bias:",
    "stparms:",   "igparms:", "iparms:",   "sparms:",  "rparms:", "rparms_derived:"};
inline const lines gce_middle = {"end_dc", "C:", "endC", "begin_ac", "outvar_ac:"};
inline std::string gce(const lines& replaced, const std::string& body = "", const lines& replaced_ac = {},
                       const std::string& body_ac = "") {
    return edited(gce_header, replaced) + body + edited(gce_middle, replaced_ac) + body_ac + "end_ac\nendgce\n";
}

// A gain, a filter with a state of its own, a block that reads an explicit variable, one without functions.
inline const std::string small_gbes =
    gbe({"gbe name=gain", "main_vars: x y", "iparms: mode=2", "sparms: label=none", "rparms: k=1 y_o=0",
         "no_functions 1"},
        "f_y y x\n") +
    gbe({"gbe name=filter", "main_vars: x y", "rparms: a=1 b=2", "aux_vars: z w", "stparms: z0=0.5", "igparms: z_ig=7",
         "no_functions 3"},
        "f_y y z\nf_z d_dt(z) x\nf_w w z\n") +
    gbe({"gbe name=from_x", "main_vars: y", "xvar: xx", "no_functions 1"}, "f_y y\n") +
    gbe({"gbe name=watch", "main_vars: x"});
inline const std::string small_gbac =
    gbe_ac({"gbe_ac name=gain", "main_vars: x y", "rparms: k=1", "no_functions 1"}, "f_y y x\n") +
    gbe_ac({"gbe_ac name=filter", "main_vars: x y", "iparms: ac_parm_be=-1", "rparms: a=1 b=2", "aux_vars: z",
            "no_functions 2"},
           "f_y y z\nf_z z x\n");

inline gels_class read_gce_text(const std::string& text) {
    const gbes_class basic = read_basic(small_gbes, gbes_form);
    const gbac_class basic_ac = read_basic(small_gbac, gbac_form);
    gels_class lib;
    text_file file = text_file_of(text);
    read_composites(file, gels_form, basic, basic_ac, lib);
    return lib;
}
