// mixed_texts.h -- mixed composites as text, on small libraries of all three domains.
#pragma once
#include "library/composite/mixed_reader.h"
#include "library_texts.h"

inline const lines gme_header = {
    "gme name=x",     "mainnodes_anlg:", "auxnodes_anlg:", "stparms_anlg:", "igparms_anlg:",   "main_var:",
    "aux_var:",       "iparms:",         "sparms:",        "rparms:",       "rparms_derived:", "mainnodes_dgtl:",
    "auxnodes_dgtl:", "stparms_dgtl:",   "igparms_dgtl:",  "outvar_anlg:",  "outvar_dgtl:",    "outvar_ac:"};

// A mixed composite: header lines replaced, its models and calls.
inline std::string gme(const lines& replaced, const std::string& body = "") {
    return edited(gme_header, replaced) + body + "endgme\n";
}

// What can be called: resistors, a source with a current, an element of all domains, one with explicit variables, one
// that senses; a gate with an analog input; a gain.
inline const eels_class& callee_eels() {
    static const basic_library basic =
        read_basic(small_ebes + ebe({"ebe name=gated", "nodes: a", "digital_nodes: s", "main_var: g", "no_functions 1"},
                                    "f_a v(a) g\n"));
    static const eels_class lib = [] {
        eels_class all;
        text_file file = text_file_of(
            ece({"ece name=r allow_ac=yes", "mainnodes: p n", "outvar: v=v_o_of_r i=cur(p)_of_r w=pwr_elec_of_r",
                 "iparms: mode=2", "sparms: label=none", "rparms: r=1 k=1"},
                "ebe type=r name=r p=p n=n r=r k=k mode=mode label=label\n", {"outvar_ac: i_ac=cur(p)_of_r"},
                "ebe_ac type=r name=r p=p n=n r=r k=k\n") +
            ece({"ece name=src", "mainnodes: p n", "outvar: i=i_of_s", "stparms: u0=0", "igparms: v_ig=0.5",
                 "rparms: u=0", "rparms_derived: u2=$((u)*(2))"},
                "ebe type=src name=s p=p n=n u=u2 u0=u0 v_ig=v_ig\n") +
            ece({"ece name=sense", "mainnodes: p n", "ind_nodes: cp cn", "ind_branches: br", "rparms: gain=1"},
                "ebe type=sense name=s p=p n=n cp=cp cn=cn br=br gain=gain\n") +
            ece({"ece name=mix", "mainnodes: a", "digital_nodes: s", "main_var: g", "xvar: xg"},
                "ebe type=mix name=m a=a s=s g=g xg=xg\n") +
            ece({"ece name=gate_to_v", "mainnodes: p n", "digital_nodes: s", "main_var: g"},
                "ebe type=r name=r p=p n=n\nebe type=gated name=m a=p s=s g=g\n"));
        read_composites(file, eels_form, basic, read_basic(small_ebac, ebac_form), all);
        return all;
    }();
    return lib;
}
inline const dels_class& callee_dels() {
    static const dels_class lib = [] {
        const basic_library basic = read_basic(
            "dbe name=gate\ninput_nodes: a\noutput_nodes: y\nanalog_nodes: x\niparms: n=1\nsparms:\nrparms: td=1n\n"
            "n_logical 1\nstparms: st=0\nigparms: y_ig=0\naux_var:\nC: compiled\nenddbe\n",
            dbes_form);
        composite_library all;
        text_file file = text_file_of(
            "dce name=gate\nmainnodes: a y\nauxnodes:\nanalog_nodes: x\noutvar: y=dvar_of_y st=dstate_of_g\n"
            "iparms: n=1\nsparms:\nrparms: td=1n\nrparms_derived:\nstparms: st=0\nigparms: y_ig=0\n"
            "dbe type=gate name=g a=a y=y x=x td=td n=n st=st y_ig=y_ig\nenddce\n");
        read_composites(file, dels_form, basic, basic, all);
        return all;
    }();
    return lib;
}
inline const gels_class& callee_gels() {
    static const gels_class lib = [] {
        const basic_library basic = read_basic(
            "gbe name=lag\nJacobian: constant\nmain_vars: x y\niparms:\nsparms:\nrparms: k=1\naux_vars:\nxvar:\n"
            "stparms: y0=0\nigparms: y_ig=0\nno_functions 1\nf_1 x d_dt(y)\nC: compiled\nendgbe\n",
            gbes_form);
        composite_library all;
        text_file file = text_file_of(
            "gce name=lag allow_ac=yes\nbegin_dc\nmainvars: x y\nauxvars:\nxvars:\noutvar: y=var_of_y k=k_of_b\nbias:\n"
            "stparms: y0=0\nigparms: y_ig=0\niparms:\nsparms:\nrparms: k=1\nrparms_derived:\n"
            "gbe type=lag name=b x=x y=y k=k y0=y0 y_ig=y_ig\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nend_ac\nendgce\n"
            "gce name=with_x\nbegin_dc\nmainvars:\nauxvars:\nxvars: u w\noutvar:\nbias:\nstparms:\nigparms:\niparms:\n"
            "sparms:\nrparms:\nrparms_derived:\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nend_ac\nendgce\n");
        const basic_library none;
        read_composites(file, gels_form, basic, none, all);
        return all;
    }();
    return lib;
}

inline gmes_class read_mixed_text(const std::string& text) {
    gmes_class lib;
    text_file file = text_file_of(text);
    read_mixed_composites(file, {&callee_eels(), &callee_dels(), &callee_gels()}, lib);
    return lib;
}
