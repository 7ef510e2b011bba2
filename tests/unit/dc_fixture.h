// dc_fixture.h -- circuits of this build's own elements, ready to be solved, and models that a test makes up.
#pragma once
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "../circuit_from_text.h"
#include "../working_folder.h"
#include "analyses/accepted_point.h"
#include "analyses/assembly.h"
#include "analyses/dc.h"
#include "analyses/evaluate.h"
#include "analyses/newton.h"
#include "analyses/run_state.h"
#include "analyses/solution_vector.h"
#include "analyses/sweep.h"
#include "halt_throws.h"
#include "run/driver.h"
#include "settings/directives.h"
#include "temp_folder.h"

// A deck elaborated with the installed libraries, and with more entries behind them if a test needs some. What it says
// on the console is in `text`. The test is in a folder of its own while this lives.
struct dc_run {
    temp_folder folder;
    circuit c;
    run_state r{c};
    std::string text;

    explicit dc_run(const std::string& circuit_block, const std::string& cards = "", const std::string& more_ebes = "",
                    const std::string& more_eels = "") {
        const std::string deck = "title: test\nbegin_circuit\nrefnode 0\n" + circuit_block +
                                 "end_circuit\nbegin_solve\nsolve_type dc\n" + cards + "end_solve\nend_cf\n";
        library_texts texts;
        if (!(more_ebes + more_eels).empty()) {
            texts = installed_texts(deck);
            texts.ebes += more_ebes;
            texts.eels += more_eels;
        }
        c = circuit_of(deck, texts.ebes.empty() ? installed_libraries(deck) : libraries_of(texts));
        listen([&] { prepare_circuit(r); });
    }

    void listen(const std::function<void()>& f) {
        const console_run heard = run_and_listen(f);
        text += heard.text;
        if (heard.stopped) throw halted{text};
    }

    // The block up to the first assembly: settings, start values, system.
    void start() {
        listen([&] {
            read_block(r, 0);
            define_offs_solvec(r.mat, c, analysis::dc);
            define_method_type(r.slv, c.cct);
            set_parm(r.slv, c);
            one_time_parms(r);
            init_sol(r);
            set_mat(r.mat, c, r.ebe.jac, r.gbe.jac);
        });
        text.clear();
    }
    int unit_of(const std::string& instance) const {
        return c.eelu.first_unit[static_cast<std::size_t>(c.eelu.find(instance))];
    }
    double node(const std::string& name) const {
        const int lu = c.cct.ect.find(name);
        return c.ebeu.val_nd[static_cast<std::size_t>(c.cct.ect.to_eu[static_cast<std::size_t>(lu)])];
    }
};

// ---- models of a test

struct model_call {
    double *rparm, *v, *aux, *v_new, *f;
    ebes1_class* jac;
    flags_class* flags;

    bool evaluates() const { return flags->dc && flags->function; }
    // A branch from terminal 0 to terminal 1 with this current and conductance.
    void branch(double i, double g) const {
        if (flags->function) {
            f[0] = i;
            f[1] = -i;
        }
        if (flags->jacobian)
            for (int j = 0; j < 2; ++j)
                for (int k = 0; k < 2; ++k) jac->dfdv[j][k] = j == k ? g : -g;
    }
};
using made_up_model = std::function<void(const model_call&)>;

inline std::vector<made_up_model>& made_up_models() {
    static std::vector<made_up_model> list;
    return list;
}
inline void call_made_up_model(const int u, int*, char**, double* rparm, double*, double*, double* v, double*, double*,
                               double* aux, double*, double*, double*, double*, double* v_new, double*, double*, int*,
                               double* f, ebes1_class* jac, flags_class* flags, dp_class*, math_cnst_class*) {
    made_up_models()[static_cast<std::size_t>(u)]({rparm, v, aux, v_new, f, jac, flags});
}
inline void use_model(run_state& r, int u, made_up_model model) {
    made_up_models().resize(r.ebe.call.size());
    made_up_models()[static_cast<std::size_t>(u)] = std::move(model);
    r.ebe.call[static_cast<std::size_t>(u)].function = call_made_up_model;
}

// ---- whole runs

// Runs the deck in the current folder; more_gels: composites of blocks of the test's own.
inline console_run run_here(const std::string& deck, const std::string& more_gels = "") {
    fill_working_folder(".", deck, more_entries("gels.aux", "gce_all.lst", more_gels));
    return run_and_listen(run_tarnel);
}
