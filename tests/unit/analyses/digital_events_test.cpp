// The engine of digital events against its plain form: a scan of all units for the next event, all units looked at in
// each pass. Random circuits of gates, inverters that deliver what they planned, flip-flops, clocks, and of a unit that
// puts out when it is scheduled; with delays that put many events at one time or an epsilon apart.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "../circuit_from_text.h"
#include "analyses/digital.h"
#include "analyses/run_state.h"
#include "halt_throws.h"
#include "run/driver.h"
#include "temp_folder.h"

namespace {
constexpr double epsilon = 1e-13;

// ---- models: the names of their templates choose them ----

using dbe_function = model_function<dbe_call>;

void plan(int& stbl, double& t_next, const flags_class* flags, double delay) {
    stbl = 0;
    t_next = flags->time_given + delay;
}

// Known where both inputs are; looks at its inputs anew when it fires.
template <class F>
void gate(F f, double* rparm, int* stbl_in, int* stbl_out, int* val_in, int* val_out, int& stbl, double& t_next,
          const flags_class* flags) {
    const int known = stbl_in[0] & stbl_in[1], value = known ? f(val_in[0], val_in[1]) : 0;
    if (flags->process) {
        stbl_out[0] = known;
        if (known) val_out[0] = value;
        stbl = 1;
    } else if (flags->schedule) {
        if (stbl_out[0] == known && (!known || val_out[0] == value)) return;
        plan(stbl, t_next, flags, rparm[known ? value : 0]);
    }
}
void d_nand(const int, int*, char**, double* rparm, int*, int*, int*, int* stbl_in, int* stbl_out, int* val_in,
            int* val_out, int*, double*, int&, int& stbl, double& t_next, flags_class* flags, dp_class*,
            math_cnst_class*) {
    gate([](int a, int b) { return a & b ? 0 : 1; }, rparm, stbl_in, stbl_out, val_in, val_out, stbl, t_next, flags);
}
void d_exor(const int, int*, char**, double* rparm, int*, int*, int*, int* stbl_in, int* stbl_out, int* val_in,
            int* val_out, int*, double*, int&, int& stbl, double& t_next, flags_class* flags, dp_class*,
            math_cnst_class*) {
    gate([](int a, int b) { return a ^ b; }, rparm, stbl_in, stbl_out, val_in, val_out, stbl, t_next, flags);
}
// Delivers the opposite of the first input as it was when it was scheduled.
void d_late(const int, int*, char**, double* rparm, int*, int*, int*, int* stbl_in, int* stbl_out, int* val_in,
            int* val_out, int*, double*, int& dstate, int& stbl, double& t_next, flags_class* flags, dp_class*,
            math_cnst_class*) {
    if (flags->process) {
        stbl_out[0] = dstate != 2;
        if (dstate != 2) val_out[0] = dstate;
        stbl = 1;
    } else if (flags->schedule) {
        dstate = stbl_in[0] ? 1 - val_in[0] : 2;
        plan(stbl, t_next, flags, rparm[0]);
    }
}
// Takes the first input at a rising edge of the second; an edge is told by the level before the event.
void d_flop(const int, int*, char**, double* rparm, int*, int*, int* lparm, int* stbl_in, int* stbl_out, int* val_in,
            int* val_out, int* val_in_old, double*, int&, int& stbl, double& t_next, flags_class* flags, dp_class*,
            math_cnst_class*) {
    if (flags->process) {
        stbl_out[0] = 1;
        val_out[0] = lparm[0];
        stbl = 1;
    } else if (flags->schedule && stbl_in[1] && val_in[1] && !val_in_old[1]) {
        lparm[0] = stbl_in[0] && val_in[0];
        plan(stbl, t_next, flags, rparm[1]);
    }
}
void d_tick(const int, int*, char**, double* rparm, int*, int*, int*, int*, int* stbl_out, int*, int* val_out, int*,
            double*, int&, int& stbl, double& t_next, flags_class* flags, dp_class*, math_cnst_class*) {
    if (!flags->process) return;
    stbl_out[0] = 1;
    val_out[0] = 1 - val_out[0];
    plan(stbl, t_next, flags, rparm[val_out[0]]);
}
// Its output moves when it is scheduled; the node shows it with the next event.
void d_soon(const int, int*, char**, double* rparm, int*, int*, int*, int* stbl_in, int* stbl_out, int* val_in,
            int* val_out, int*, double*, int&, int& stbl, double& t_next, flags_class* flags, dp_class*,
            math_cnst_class*) {
    if (flags->process) stbl = 1;
    if (!flags->schedule) return;
    stbl_out[0] = stbl_in[1];
    val_out[0] = val_in[1];
    plan(stbl, t_next, flags, rparm[0]);
}
struct named_model {
    const char* name;
    dbe_function function;
};
constexpr named_model models[] = {{"nand", d_nand}, {"exor", d_exor}, {"late", d_late},
                                  {"flop", d_flop}, {"soon", d_soon}, {"tick", d_tick}};

std::string entries() {
    std::string text;
    for (const named_model& m : models) {
        const bool source = std::string_view(m.name) == "tick";
        text += std::string("dbe name=") + m.name + "\ninput_nodes:" + (source ? "" : " a b") +
                "\noutput_nodes: y\nanalog_nodes:\niparms:\nsparms:\nrparms: t0=1n t1=1n\nn_logical 1\nstparms:\n"
                "igparms:\naux_var:\nC: compiled\nenddbe\n";
    }
    return text;
}
std::string composites() {
    std::string text;
    for (const named_model& m : models) {
        const bool source = std::string_view(m.name) == "tick";
        const std::string inputs = source ? "" : " a b", bound = source ? "" : " a=a b=b";
        text += std::string("dce name=") + m.name + "\nmainnodes:" + inputs +
                " y\nauxnodes:\nanalog_nodes:\noutvar:\niparms:\nsparms:\nrparms: t0=1n t1=1n\nrparms_derived:\n"
                "stparms:\nigparms:\ndbe type=" +
                m.name + " name=u" + bound + " y=y t0=t0 t1=t1\nenddce\n";
    }
    return text;
}

// ---- the plain form ----

struct plain_engine {
    dbeu_class u;  // tables of its own
    std::vector<dbe_function> function;
    std::vector<int> dvar_old, l_stbl, l_val, l_stbl_old, l_val_old, flag_schedule;
    std::vector<int> in_stbl, in_val, in_old;
    run_state& r;

    plain_engine(run_state& run, std::vector<dbe_function> functions) : function(std::move(functions)), r(run) {
        const dbeu_class& from = run.c.dbeu;
        u.unit.n = from.unit.n;
        u.unit.rprm = from.unit.rprm;
        u.nd = from.nd;
        u.n_input = from.n_input;
        u.first_lprm = from.first_lprm;
        u.n_nd = from.n_nd;
        u.dvar = from.dvar;
        u.lparm = from.lparm;
        u.stbl_out = from.stbl_out;
        u.val_out = from.val_out;
        u.dstate = from.dstate;
        u.stbl = from.stbl;
        u.t_next = from.t_next;
        const std::size_t n = static_cast<std::size_t>(u.n_nd);
        for (auto* v : {&l_stbl, &l_val, &l_stbl_old, &l_val_old}) v->assign(n, 0);
        flag_schedule.assign(static_cast<std::size_t>(u.unit.n), 0);
        in_stbl = in_val = in_old = std::vector<int>(8, 0);
        to_l(u.dvar, l_stbl, l_val);
        dvar_old = u.dvar;
        to_l(dvar_old, l_stbl_old, l_val_old);
    }
    static void to_l(const std::vector<int>& dvar, std::vector<int>& stbl, std::vector<int>& val) {
        for (std::size_t k = 0; k < dvar.size(); ++k) {
            stbl[k] = dvar[k] != 2;
            val[k] = dvar[k] == 1;
        }
    }
    double next(double t_far) const {
        double t = t_far;
        for (int k = 0; k < u.unit.n; ++k)
            if (u.stbl[at(k)] == 0 && u.t_next[at(k)] < t) t = u.t_next[at(k)] + epsilon;
        return t;
    }
    void call(int k) {
        const int first = u.nd.first[at(k)], n_in = u.n_input[at(k)], end = u.nd.first[at(k) + 1];
        for (int j = 0; j < n_in; ++j) {
            const std::size_t n = at(u.nd.data[at(first + j)]);
            in_stbl[at(j)] = l_stbl[n];
            in_val[at(j)] = l_stbl[n] && l_val[n];
            in_old[at(j)] = l_stbl_old[n] && l_val_old[n];
        }
        int* out_stbl = u.stbl_out.data() + first + n_in;
        int* out_val = u.val_out.data() + first + n_in;
        function[at(k)](k, nullptr, nullptr, u.unit.rprm.row(k), nullptr, nullptr, u.lparm.data() + u.first_lprm[at(k)],
                        in_stbl.data(), out_stbl, in_val.data(), out_val, in_old.data(), nullptr, u.dstate[at(k)],
                        u.stbl[at(k)], u.t_next[at(k)], &r.flags, nullptr, nullptr);
        for (int j = 0; j < end - first - n_in; ++j) {
            const std::size_t n = at(u.nd.data[at(first + n_in + j)]);
            l_stbl[n] = out_stbl[j];
            l_val[n] = out_val[j];
        }
    }
    void process(double t) {
        dvar_old = u.dvar;
        to_l(dvar_old, l_stbl_old, l_val_old);
        r.flags.trns = r.flags.process = 1;
        r.flags.schedule = 0;
        for (int k = 0; k < u.unit.n; ++k)
            if (u.stbl[at(k)] == 0 && !(t < u.t_next[at(k)])) call(k);
        r.flags.process = 0;
        for (int n = 0; n < u.n_nd; ++n) u.dvar[at(n)] = l_stbl[at(n)] == 1 ? l_val[at(n)] == 1 : 2;
        std::fill(flag_schedule.begin(), flag_schedule.end(), 0);
        for (int k = 0; k < u.unit.n; ++k)
            for (int j = 0; j < u.n_input[at(k)]; ++j) {
                const std::size_t n = at(u.nd.row(k)[j]);
                if (u.dvar[n] != dvar_old[n]) flag_schedule[at(k)] = 1;
            }
        r.flags.trns = 0;
    }
    void schedule() {
        r.flags.trns = r.flags.schedule = 1;
        for (int k = 0; k < u.unit.n; ++k)
            if (u.stbl[at(k)] == 1 && flag_schedule[at(k)] == 1) call(k);
        r.flags.trns = r.flags.schedule = 0;
    }
};

// ---- random circuits ----

std::string random_deck(std::mt19937& random) {
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    const int n = 3 + below(40);
    // Equal delays, none at all, and some that differ by fractions of an epsilon.
    const char* delays[] = {"1n", "1n", "2n", "0", "3n", "1.00001n", "1.00005n", "1.0001n", "0.7n"};
    std::string circuit;
    for (int k = 0; k < n; ++k) {
        const bool tick = k == 0 || below(8) == 0;
        const std::string type = tick ? "tick" : models[below(5)].name;
        circuit += "delement name=D" + std::to_string(k) + " type=" + type;
        if (!tick) circuit += " a=n" + std::to_string(below(n)) + " b=n" + std::to_string(below(n));
        circuit += " y=n" + std::to_string(below(12) == 0 ? below(n) : k);  // now and then two outputs on a node
        const int from = tick ? 4 : 0;
        const char* t0 = tick ? "3n" : delays[below(9)];
        circuit += std::string(" t0=") + t0 + " t1=" + (tick ? delays[4 + below(5)] : delays[from + below(9)]) + "\n";
    }
    // Every node that an input names is an output of somebody.
    for (int k = 0; k < n; ++k)
        circuit += "delement name=S" + std::to_string(k) + " type=late a=n" + std::to_string(k) + " b=n0 y=n" +
                   std::to_string(k == 0           ? 0
                                  : below(10) == 0 ? k
                                                   : n + k) +
                   " t0=1n\n";
    return "title: test\nbegin_circuit\n" + circuit + "end_circuit\nend_cf\n";
}

struct digital_run {
    temp_folder folder;
    circuit c;
    run_state r{c};
    std::vector<dbe_function> function;

    explicit digital_run(const std::string& deck)
        : c(circuit_of(deck, libraries_of({.dbes = entries(), .dels = composites()}))) {
        run_and_listen([&] { prepare_circuit(r); });
        r.slv.method.time_epsilon = epsilon;
        for (int k = 0; k < c.dbeu.n(); ++k) {
            const std::string name = c.lib.dbes.list.entry.str(c.dbeu.unit.i_lib[at(k)]);
            for (const named_model& m : models)
                if (name == m.name) function.push_back(m.function);
            r.digital.call[at(k)].function = function.back();
        }
    }
};

TEST(digital_events, come_in_the_order_and_with_the_bits_of_a_scan_of_all_units) {
    std::mt19937 random(20260117);
    long n_events = 0, n_together = 0;
    for (int trial = 0; trial < 300; ++trial) {
        digital_run run(random_deck(random));
        run_state& r = run.r;
        dbeu_class& u = run.c.dbeu;
        for (int n = 0; n < u.n_nd; ++n) u.dvar[at(n)] = static_cast<int>(random() % 3);
        for (int k = 0; k < u.n(); ++k) {
            u.stbl[at(k)] = u.n_input[at(k)] > 0 && random() % 2;
            u.t_next[at(k)] = 1e-9 * (1 + static_cast<int>(random() % 4)) + 0.3 * epsilon * (random() % 5);
        }
        plain_engine plain(r, run.function);
        begin_events(r);
        for (int event = 0; event < 400; ++event) {
            const double t = plain.next(1.0), ours = next_event(r, 1.0);
            ASSERT_EQ(std::memcmp(&t, &ours, sizeof t), 0) << trial << ' ' << event << ' ' << t - ours;
            if (t == 1.0) break;
            r.flags.time_given = t;
            plain.process(t);
            dbe_process(r, t);
            ASSERT_EQ(plain.u.dvar, u.dvar) << trial << ' ' << event;
            plain.schedule();
            dbe_schedule(r);
            ASSERT_EQ(plain.u.stbl, u.stbl);
            ASSERT_EQ(plain.u.dstate, u.dstate);
            ASSERT_EQ(plain.u.lparm, u.lparm);
            ASSERT_EQ(plain.u.val_out, u.val_out);
            for (int k = 0; k < u.n(); ++k) ASSERT_TRUE(u.stbl[at(k)] == 1 || plain.u.t_next[at(k)] == u.t_next[at(k)]);
            ++n_events;
            if (!r.digital.changed.empty() && r.digital.changed.size() > 1) ++n_together;
        }
    }
    EXPECT_GT(n_events, 50000);
    EXPECT_GT(n_together, 5000);
}

TEST(unit_set, gives_its_members_in_ascending_order_each_once) {
    std::mt19937 random(7);
    for (int n : {1, 63, 64, 65, 4096, 4097, 300000}) {
        unit_set set;
        set.resize(n);
        EXPECT_TRUE(set.empty());
        std::vector<int> wanted;
        for (int k = 0; k < 200; ++k) {
            wanted.push_back(static_cast<int>(random() % static_cast<unsigned>(n)));
            set.add(wanted.back());
            if (k % 3 == 0) set.add(wanted.back());
        }
        std::sort(wanted.begin(), wanted.end());
        wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
        std::vector<int> got;
        while (!set.empty()) got.push_back(set.take());
        EXPECT_EQ(got, wanted) << n;
    }
}
}  // namespace
