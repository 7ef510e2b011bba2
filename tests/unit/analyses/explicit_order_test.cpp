// Evaluation of diagrams in rows of blocks against one block after another, to the bit.
#include <gtest/gtest.h>

#include <random>

#include "analyses/evaluate.h"
#include "analyses/explicit_step.h"
#include "dc_fixture.h"

namespace {
// A diagram of sources, sums, products, gains, lags and integrators; inputs are variables that exist, so that loops
// close through states alone.
std::string random_diagram(std::mt19937& random, int n) {
    std::vector<std::string> known{"u0", "u1"};
    std::string text = "xelement name=K type=const y=u0 k=0.7\nxelement name=S type=srcac y=u1 a=1.3 f_hz=0.4\n";
    std::vector<std::string> state;
    for (int i = 0; i < n / 3; ++i) state.push_back("s" + std::to_string(i));
    known.insert(known.end(), state.begin(), state.end());
    const auto any = [&] { return known[random() % known.size()]; };
    std::vector<std::string> blocks;
    for (int i = 0; i < n; ++i) {
        const std::string y = "a" + std::to_string(i), number = std::to_string(i);
        const double k = 0.1 + 0.01 * static_cast<double>(random() % 90);
        switch (random() % 4) {
            case 0:
                blocks.push_back("xelement name=A" + number + " type=sum_2 x1=" + any() + " x2=" + any() + " y=" + y +
                                 " k1=" + std::to_string(k) + " k2=-0.3\n");
                break;
            case 1:
                blocks.push_back("xelement name=A" + number + " type=multscl x=" + any() + " y=" + y +
                                 " k=" + std::to_string(-k) + "\n");
                break;
            case 2:
                blocks.push_back("xelement name=A" + number + " type=lmtr x=" + any() + " y=" + y +
                                 " x_min=-1 x_max=1\n");
                break;
            default:
                blocks.push_back("xelement name=A" + number + " type=sine x=" + any() + " y=" + y + "\n");
        }
        if (i % 7 != 6) known.push_back(y);  // chains stay short
    }
    for (std::size_t i = 0; i < state.size(); ++i)
        blocks.push_back("xelement name=F" + std::to_string(i) +
                         (random() % 2 ? " type=filter_z0_p1 x=" : " type=intgrtr k=-0.5 x=") + any() +
                         " y=" + state[i] + "\n");
    std::shuffle(blocks.begin(), blocks.end(), random);
    for (const std::string& b : blocks) text += b;
    return text;
}

// All blocks one after another, in the order of the passes: inputs in, a call, outputs out.
void evaluate_plainly(run_state& r, double t) {
    xbeu_class& x = r.c.xbeu;
    r.flags.time_given_x = t;
    const raised on(r.flags.evaluate);
    const auto call = [&](int u, bool writes) {
        for (int k = x.vr.first[at(u)]; k < x.vr.first[at(u) + 1]; ++k) x.vr_in[at(k)] = x.val_vr[at(x.vr.data[at(k)])];
        get_unit(r, r.xbe, u);
        for (int k = x.vr.first[at(u)] + x.n_input[at(u)]; writes && k < x.vr.first[at(u) + 1]; ++k)
            x.val_vr[at(x.vr.data[at(k)])] = x.vr_in[at(k)];
    };
    for (const int u : x.source) call(u, true);
    for (const int u : x.delaying) call(u, true);
    for (const int u : x.in_order) call(u, true);
    for (const int u : x.integrating) call(u, false);
}

struct diagram {
    temp_folder folder;
    circuit c;
    run_state r;
    explicit diagram(const std::string& text)
        : c(circuit_of("title: test\nbegin_circuit\n" + text +
                           "end_circuit\nbegin_solve\nsolve_type trns\n"
                           "method: RK4=yes t_start=0 t_end=1 delt_const_x=10m\nend_solve\nend_cf\n",
                       installed_libraries())),
          r(c) {
        run_and_listen([&] {
            prepare_circuit(r);
            read_block(r, 0);
            one_time_parms(r);
            init_guess_explicit(r);
            prepare_explicit(r);
        });
    }
};
}  // namespace

TEST(explicit_order, rows_of_blocks_give_the_bits_of_single_blocks) {
    std::mt19937 random(7);
    int n_rows = 0, n_ran = 0;
    for (int round = 0; round < 60; ++round) {
        const std::string text = random_diagram(random, 12 + static_cast<int>(random() % 60));
        diagram fast(text), plain(text);
        if (fast.r.explicits.slopes.empty() || plain.r.explicits.slopes.empty()) continue;  // too long a chain
        ++n_ran;
        for (const auto& run : fast.r.explicits.outputs) n_rows += run.n > 1;
        const explicit_rule& rule = *rule_of(fast.r.slv.method);
        explicit_class &f = fast.r.explicits, &p = plain.r.explicits;
        evaluate_explicit(fast.r, 0.0);
        evaluate_plainly(plain.r, 0.0);
        double t = 0.0;
        const double h = 0.01;
        for (int step = 0; step < 20; ++step, t += h) {
            fast.r.slv.now.time_x = t;
            keep_old_states(f);
            take_stages(fast.r, rule, h, step > 0);
            form_new_states(f, rule, h);
            evaluate_explicit(fast.r, t + h);
            // The classic rule, written out.
            std::vector<double> old, k[4];
            for (const double* s : p.state) old.push_back(*s);
            const auto slopes = [&](double time) {
                evaluate_plainly(plain.r, time);
                std::vector<double> all;
                for (const double* s : p.slope) all.push_back(*s);
                return all;
            };
            const double part[] = {0.0, 0.5, 0.5, 1.0};
            for (int stage = 0; stage < 4; ++stage) {
                for (std::size_t i = 0; i < old.size(); ++i)
                    *p.state[i] = stage == 0 ? old[i] : old[i] + h * (part[stage] * k[stage - 1][i]);
                k[stage] = slopes(t + part[stage] * h);
            }
            for (std::size_t i = 0; i < old.size(); ++i)
                *p.state[i] = old[i] + h * (1.0 / 6.0) * (k[0][i] + 2 * k[1][i] + 2 * k[2][i] + k[3][i]);
            evaluate_plainly(plain.r, t + h);
            ASSERT_EQ(fast.c.xbeu.val_vr, plain.c.xbeu.val_vr) << "round " << round << ", step " << step << '\n'
                                                               << text;
        }
    }
    EXPECT_GT(n_ran, 30);
    EXPECT_GT(n_rows, 20);
}
