// circuit_fixture.h -- small circuits from text, for tests of elaboration and of what follows it.
#pragma once
#include <string>

#include "../circuit_from_text.h"
#include "temp_folder.h"

// Libraries with one entry of each shape that elaboration must place: two terminals, an auxiliary unknown, sensed nodes
// and branches, a general variable, a ground terminal; composites with auxiliary nodes, nested calls and outputs.
inline const char* const fixture_ebes = R"(
ebe name=r
Jacobian: constant
nodes: p n
ind_nodes:
ind_branches:
iparms: n_par=1
sparms: tag=plain
rparms: r=1 v_o=0 g=0
local_var:
aux_var:
aux_var_startup:
digital_nodes:
main_var:
xvar:
stparms: v0=0
igparms: v_ig=0
no_functions 2
f_p v(p) v(n)
f_n v(p) v(n)
C: compiled
endebe

ebe name=vs startup_sprt=yes
Jacobian: constant
nodes: p n
ind_nodes:
ind_branches:
iparms:
sparms:
rparms: vdc=0
local_var:
aux_var: i
aux_var_startup: i_s
digital_nodes:
main_var:
xvar:
stparms:
igparms:
no_functions 6
f_p i
f_n i
f_v v(p) v(n)
f_ps startup i_s
f_ns startup i_s
f_vs startup v(p) v(n)
C: compiled
endebe

ebe name=sense
Jacobian: variable
nodes: p n
ind_nodes: cp
ind_branches: br
iparms:
sparms:
rparms:
local_var:
aux_var:
aux_var_startup:
digital_nodes:
main_var:
xvar:
stparms:
igparms:
no_functions 2
f_p volt(cp) cur(br)
f_n volt(cp) cur(br)
C: compiled
endebe

ebe name=reads_x
Jacobian: constant
nodes: p n
ind_nodes:
ind_branches:
iparms:
sparms:
rparms:
local_var:
aux_var:
aux_var_startup:
digital_nodes:
main_var: x
xvar:
stparms:
igparms:
no_functions 2
f_p x
f_n x
C: compiled
endebe

ebe name=ground_dummy_1
Jacobian: constant
nodes: g
ind_nodes:
ind_branches:
iparms:
sparms:
rparms:
local_var:
aux_var:
aux_var_startup:
digital_nodes:
main_var:
xvar:
stparms:
igparms:
no_functions 0
C: compiled
endebe
)";

// One composite: everything between begin_dc and the body, from the lists that are not empty.
inline std::string fixture_ece(const std::string& name, const std::string& nodes, const std::string& auxnodes,
                               const std::string& outvar, const std::string& ind_nodes, const std::string& branches,
                               const std::string& main_var, const std::string& parms, const std::string& body) {
    return "ece name=" + name + "\nbegin_dc\nmainnodes: " + nodes + "\nauxnodes: " + auxnodes + "\noutvar: " + outvar +
           "\nbias:\nstparms:\nigparms:\nind_nodes: " + ind_nodes + "\nind_branches: " + branches +
           "\ndigital_nodes:\nmain_var: " + main_var + "\nxvar:\n" + parms + body +
           "end_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nind_nodes_ac:\nind_branches_ac:\nend_ac\nendece\n";
}

inline std::string fixture_eels() {
    const std::string no_parms = "iparms:\nsparms:\nrparms:\nrparms_derived:\n";
    return fixture_ece("r", "p n", "", "v=v_o_of_r i=cur(p)_of_r n_par=n_par_of_r", "", "", "",
                       "iparms: n_par=1\nsparms: tag=plain\nrparms: r=1\nrparms_derived: r2=$((r)*(2))\n",
                       "ebe type=r name=r p=p n=n r=r n_par=n_par tag=tag\n") +
           fixture_ece("vs", "p n", "", "i=i_of_src", "", "", "",
                       "iparms:\nsparms: model_file=none\nrparms: vdc=0\nrparms_derived:\n",
                       "ebe type=vs name=src p=p n=n vdc=vdc\n") +
           fixture_ece("plain", "p n", "", "", "", "", "", "iparms:\nsparms:\nrparms: r=5\nrparms_derived:\n",
                       "ebe type=r name=r p=p n=n r=r\n") +
           fixture_ece("pair", "p n", "m", "vm=nodev_of_m i=cur(p)_of_b", "", "", "",
                       "iparms:\nsparms:\nrparms: ra=1 rb=2\nrparms_derived:\n",
                       "callece plain name=a p=p n=m r=ra\nebe type=r name=b p=m n=n r=rb\n") +
           fixture_ece("sense", "p n", "", "", "cp", "br", "", no_parms,
                       "ebe type=sense name=s p=p n=n cp=cp br=br\n") +
           fixture_ece("hidden", "p n", "m", "", "", "", "", no_parms,
                       "ebe type=vs name=src p=p n=n\nebe type=sense name=s p=p n=n cp=m br=src\n") +
           fixture_ece("open_branch", "p n", "", "", "", "", "", no_parms,
                       "ebe type=sense name=s p=p n=n cp=p br=never\n") +
           fixture_ece("reads_x", "p n", "", "", "", "", "x", no_parms, "ebe type=reads_x name=e p=p n=n x=x\n") +
           fixture_ece("ground_dummy_1", "g", "", "", "", "", "", no_parms, "ebe type=ground_dummy_1 name=g g=g\n") +
           fixture_ece("grounded", "p n", "", "", "", "", "", no_parms,
                       "ebe type=r name=r p=p n=n\ncallece ground_dummy_1 name=g g=p\n");
}

inline std::string fixture_deck(const std::string& circuit_block, const std::string& before = "") {
    return "title: test\n" + before + "begin_circuit\n" + circuit_block + "end_circuit\nend_cf\n";
}

inline const libraries& fixture_libraries() {
    static const libraries lib = libraries_of({.ebes = fixture_ebes, .eels = fixture_eels()});
    return lib;
}

// The circuit of a deck's text with the fixture's libraries, up to the stage before elaboration.
inline circuit fixture_circuit(const std::string& deck, int m_ect_nd_tmp = 1000) {
    circuit c = circuit_of(deck, fixture_libraries());
    c.tmpdim.m_ect_nd_tmp = m_ect_nd_tmp;
    return c;
}

inline circuit elaborated(const std::string& circuit_block, const std::string& before = "") {
    circuit c = fixture_circuit(fixture_deck(circuit_block, before));
    elaborate(c);
    classify(c);
    check_linear(c);
    return c;
}
