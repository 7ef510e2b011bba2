// The loop over frequencies against its plain form, random networks against nodal analysis, and what the loop takes.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <random>

#include "analyses/ac.h"
#include "dc_fixture.h"
#include "output/row_writers.h"
#include "whole_run.h"

namespace {
using number = std::complex<double>;
const double pi = std::acos(-1.0);

std::string ac_deck(const std::string& circuit, const std::string& frequencies, const std::string& variables) {
    const std::string reference = circuit.find("eelement") == std::string::npos ? "" : "refnode 0\n";
    return "title: test\nbegin_circuit\n" + reference + circuit + "end_circuit\nbegin_solve\nsolve_type ac\n" +
           frequencies + "\nbegin_output\nfilename o.dat limit_lines=1000000\nvariables: " + variables +
           "\nend_output\nend_solve\nend_cf\n";
}

struct ac_run {
    temp_folder folder;
    circuit c;
    run_state r{c};

    explicit ac_run(const std::string& deck) : c(circuit_of(deck, installed_libraries(deck))) {
        const console_run heard = run_and_listen([&] {
            prepare_circuit(r);
            read_block(r, 0);
            open_out_files(r.slv, c);
            set_mat_1_ac(r);
            calc_acparms(r);
            r.slv.now.i_sweep = 0;
            take_bias(r);
        });
        EXPECT_FALSE(heard.stopped) << heard.text;
    }
    void solve(int i_freq) {
        r.slv.now.i_freq = i_freq;
        r.slv.now.freq = r.slv.task.freq_array[static_cast<std::size_t>(i_freq)];
        solve_ac(r);
    }
};

// Unit by unit, function by function, each number added where it belongs: the order of additions that the results keep.
template <class Rows>
void add_literally(run_state& r, unit_family<Rows>& f, const slot_table& slot, const std::vector<number>& functions,
                   std::vector<number>& val) {
    for (int u = 0; u < f.n(); ++u) {
        auto call = f.call[at(u)];
        call.freq = r.slv.now.freq;
        if constexpr (std::is_same_v<Rows, general_ac_family>) call.jac->bias = r.ac.bias_of_gbe[at(u)];
        Rows::call::arguments::call(call.function, u, call, &r.flags, &r.dp, &r.math_cnst);
        for (int k = slot.first_jac[at(u)]; k < slot.first_jac[at(u) + 1]; ++k)
            val[at(slot.to_val[at(k)])] += call.jac->store[at(slot.from_jac[at(k)])];
    }
    (void)functions;
}

void expect_literal_bits(run_state& r) {
    const ac_system& s = r.ac.s;
    for (auto* v : {&r.c.ebau.aux, &r.c.gbau.aux, &r.c.xbau.aux}) std::fill(v->begin(), v->end(), number{});
    std::vector<number> val(s.val_m.size()), rhs(s.rhs_m.size());
    {
        const raised on(r.flags.ac, r.flags.function, r.flags.jacobian);
        add_literally(r, r.ac.ebe, s.ebe, r.c.ebau.f, val);
        add_literally(r, r.ac.gbe, s.gbe, r.c.gbau.f, val);
        add_literally(r, r.ac.xbe, s.xbe, r.c.xbau.f, val);
    }
    for (std::size_t k = 0; k < s.ebe.to_row.size(); ++k) rhs[at(s.ebe.to_row[k])] += r.c.ebau.f[at(s.ebe.from_f[k])];
    for (std::size_t k = 0; k < s.ebe.to_own.size(); ++k) rhs[at(s.ebe.to_own[k])] = r.c.ebau.f[at(s.ebe.from_own[k])];
    for (std::size_t k = 0; k < s.gbe.to_own.size(); ++k) rhs[at(s.gbe.to_own[k])] = r.c.gbau.f[at(s.gbe.from_own[k])];
    for (std::size_t k = 0; k < s.xbe.to_own.size(); ++k) rhs[at(s.xbe.to_own[k])] = r.c.xbau.f[at(s.xbe.from_own[k])];
    for (number& x : rhs) x = -x;
    EXPECT_EQ(std::memcmp(val.data(), s.val_m.data(), val.size() * sizeof(number)), 0);
    EXPECT_EQ(std::memcmp(rhs.data(), s.rhs_m.data(), rhs.size() * sizeof(number)), 0);
}

// R, L, C and transconductances between random nodes, a current into one of them.
struct network {
    struct part {
        char kind;
        int p, n, cp, cn;
        double value;
    };
    int n_node;
    std::vector<part> parts;

    network(std::mt19937& rng, int n) : n_node(n) {
        std::uniform_int_distribution<int> node(0, n), kind(0, 9);
        std::uniform_real_distribution<double> size(-1, 1);
        for (int k = 1; k <= n; ++k) parts.push_back({'r', k, k - 1, 0, 0, std::pow(10.0, 3 + size(rng))});
        for (int k = 0; k < 3 * n; ++k) {
            const char* kinds = "rrlllccccg";
            const char c = kinds[kind(rng)];
            int p = node(rng), q = node(rng);
            if (p == q) q = (p + 1) % (n + 1);
            const double middle = c == 'r' ? 3 : c == 'l' ? -3 : c == 'c' ? -7 : -4;
            parts.push_back({c, p, q, node(rng), node(rng), std::pow(10.0, middle + size(rng))});
        }
    }
    std::string circuit() const {
        std::string text = "eelement name=I1 type=isrcac p=0 n=" + std::to_string(n_node) + " a_ac=1\n";
        const auto name = [](int k) { return std::to_string(k); };
        for (std::size_t k = 0; k < parts.size(); ++k) {
            const part& x = parts[k];
            char value[40];
            std::snprintf(value, sizeof value, "%.17g", x.value);
            const std::string at = " p=" + name(x.p) + " n=" + name(x.n);
            const std::string parameter = std::string(x.kind == 'g' ? "gm" : std::string(1, x.kind)) + "=" + value;
            text += "eelement name=X" + std::to_string(k) +
                    " type=" + (x.kind == 'g' ? "vccs" : std::string(1, x.kind)) + at +
                    (x.kind == 'g' ? " cp=" + name(x.cp) + " cn=" + name(x.cn) : "") + " " + parameter + "\n";
        }
        for (int k = 1; k <= n_node; ++k) text += "outvar: v" + name(k) + "=nodev_ac_of_" + name(k) + "\n";
        return text;
    }
    // Node voltages of Y v = i by elimination with the largest pivot.
    std::vector<number> voltages(double w) const {
        const std::size_t n = at(n_node);
        std::vector<std::vector<number>> y(n, std::vector<number>(n + 1));
        const auto stamp = [&](int row, int col, number v) {
            if (row > 0 && col > 0) y[at(row - 1)][at(col - 1)] += v;
        };
        for (const part& x : parts) {
            number g = 1.0 / x.value;
            if (x.kind == 'l') g = 1.0 / number(0, w * x.value);
            if (x.kind == 'c') g = number(0, w * x.value);
            if (x.kind == 'g') g = x.value;
            const int cp = x.kind == 'g' ? x.cp : x.p, cn = x.kind == 'g' ? x.cn : x.n;
            stamp(x.p, cp, g);
            stamp(x.p, cn, -g);
            stamp(x.n, cp, -g);
            stamp(x.n, cn, g);
        }
        y[n - 1][n] = 1.0;
        for (std::size_t k = 0; k < n; ++k) {
            std::size_t best = k;
            for (std::size_t i = k; i < n; ++i)
                if (std::abs(y[i][k]) > std::abs(y[best][k])) best = i;
            std::swap(y[k], y[best]);
            for (std::size_t i = k + 1; i < n; ++i) {
                const number l = y[i][k] / y[k][k];
                for (std::size_t j = k; j <= n; ++j) y[i][j] -= l * y[k][j];
            }
        }
        std::vector<number> v(n);
        for (std::size_t k = n; k-- > 0;) {
            v[k] = y[k][n];
            for (std::size_t j = k + 1; j < n; ++j) v[k] -= y[k][j] * v[j];
            v[k] /= y[k][k];
        }
        return v;
    }
};
}  // namespace

TEST(ac_system, keeps_the_bits_of_the_plain_order_of_additions) {
    ac_run a(ac_deck(
        "eelement name=V1 type=vsrcac p=in n=0 a_ac=1 ph_ac=20\neelement name=R1 type=r p=in n=a r=1k\n"
        "eelement name=C1 type=c p=a n=0 c=1n\neelement name=L1 type=l p=a n=b l=1m\neelement name=R2 type=r "
        "p=b n=0 r=3\n"
        "eelement name=C2 type=c p=b n=0 c=3n\neelement name=R3 type=r p=a n=b r=7\neelement name=D1 "
        "type=diode p=b n=0\n"
        "eelement name=C3 type=c p=b n=a c=2n\neelement name=M type=voltmeter_fb p=b n=0 y=x k=3\n"
        "gelement name=F type=lag_1 x=x y=y tau=1u\ngelement name=P type=mult_2a x1=x x2=y y=z\n"
        "eelement name=V2 type=vsrc_1 p=c n=0 x=z\neelement name=R4 type=r p=c n=b r=11\n"
        "eelement name=I1 type=isrcac p=b n=0 a_ac=0.1\neelement name=I2 type=isrcac p=a n=0 a_ac=0.2\n"
        "gelement name=S1 type=const y=s a_ac=1\ngelement name=S2 type=const y=t a_ac=2\noutvar: v=nodev_ac_of_b\n",
        "vary_freq from 10 to 10M type log n_points 7", "mag_of_v phase_of_v"));
    for (const int k : {0, 1, 6, 3, 3, 2}) {
        a.solve(k);
        expect_literal_bits(a.r);
        a.solve(k);  // the calls above wrote the same functions and derivatives
    }
}

TEST(ac_system, keeps_the_bits_of_the_plain_order_of_additions_of_a_diagram) {
    ac_run a(ac_deck(
        "xelement name=S type=const y=r a_ac=1 ph_ac=20\nxelement name=E type=sum_2 x1=r x2=y y=e k2=-1\n"
        "xelement name=I type=intgrtr x=e y=i k=900\nxelement name=P type=sum_3 x1=e x2=i x3=t y=c k1=1.5\n"
        "xelement name=D type=delay_2 x=c y=d td=100u\nxelement name=L type=filter_z1_p1 x=d y=y a0=4 a1=1u b1=2m\n"
        "xelement name=T type=const y=t a_ac=2\nxelement name=J type=intgrtr x=d y=j k=2\n"
        "outvar: v=xvar_ac_of_y\n",
        "vary_freq from 10 to 10M type log n_points 7", "mag_of_v phase_of_v"));
    ASSERT_EQ(a.r.ac.s.n_svec, 8);
    for (const int k : {0, 1, 6, 3, 3, 2}) {
        a.solve(k);
        expect_literal_bits(a.r);
        a.solve(k);
    }
}

TEST(ac_system, of_a_diagram_has_a_limit) {
    circuit c{circuit_of(
        ac_deck("xelement name=S type=const y=r a_ac=1\nxelement name=L type=multscl x=r y=y\noutvar: v=xvar_ac_of_y\n",
                "set_freq 1", "mag_of_v phase_of_v"),
        installed_libraries())};
    run_state r{c};
    const console_run heard = run_and_listen([&] {
        prepare_circuit(r);
        read_block(r, 0);
    });
    ASSERT_FALSE(heard.stopped) << heard.text;
    c.tmpdim.mnz_xbce_ac = 2;
    EXPECT_HALT(set_mat_1_ac(r), "xbce_mat_1_ac: nnz_xbce_c is too large. Halting...\n");
    c.tmpdim.mnz_xbce_ac = 3;
    EXPECT_FALSE(run_and_listen([&] { set_mat_1_ac(r); }).stopped);
}

TEST(ac_system, random_networks_agree_with_nodal_analysis) {
    std::mt19937 rng(7);
    for (int n : {2, 3, 5, 9, 17, 33})
        for (int k = 0; k < 4; ++k) {
            const network net(rng, n);
            std::string columns;
            for (int j = 1; j <= n; ++j) columns += " mag_of_v" + std::to_string(j) + " phase_of_v" + std::to_string(j);
            const whole_run run(ac_deck(net.circuit(), "vary_freq from 10 to 10M type log n_points 7", columns));
            const table rows = run.rows("o.dat");
            ASSERT_EQ(rows.size(), 7u) << run.text;
            for (std::size_t i = 0; i < rows.size(); ++i) {
                const std::vector<number> v = net.voltages(2 * pi * std::pow(10.0, 1.0 + static_cast<double>(i)));
                double largest = 0;
                for (const number& x : v) largest = std::max(largest, std::abs(x));
                for (std::size_t j = 0; j < v.size(); ++j) {
                    const number found = std::polar(rows[i][2 * j + 1], rows[i][2 * j + 2] * pi / 180);
                    EXPECT_LE(std::abs(found - v[j]), 2e-6 * largest) << n << " " << k << " row " << i << " node " << j;
                }
            }
        }
}

TEST(ac_system, an_order_that_does_not_serve_a_frequency_is_exchanged) {
    // Without losses the tank takes no current at its resonance: what was a good pivot at the first frequency is next
    // to nothing there. The load of the second node alone carries the current then.
    const double w = 1e6, l = 1e-3, c = 1 / (w * w * l), f = w / (2 * pi);
    char text[600];
    std::snprintf(
        text, sizeof text,
        "eelement name=V1 type=vsrcac p=in n=0 a_ac=1\neelement name=C0 type=c p=in n=a c=1e-18\n"
        "eelement name=L1 type=l p=a n=b l=%.17g\neelement name=C1 type=c p=a n=b c=%.17g\n"
        "eelement name=R1 type=r p=b n=0 r=50\neelement name=R2 type=r p=in n=b r=1e3\noutvar: v=nodev_ac_of_b\n",
        l, c);
    char frequencies[100];
    std::snprintf(frequencies, sizeof frequencies, "vary_freq type table 1 %.17g %.17g", f, 10 * f);
    const whole_run run(ac_deck(text, frequencies, "mag_of_v phase_of_v"));
    const table rows = run.rows("o.dat");
    ASSERT_EQ(rows.size(), 3u) << run.text;
    for (const std::vector<double>& row : rows) EXPECT_NEAR(row[1], 50.0 / 1050.0, 1e-7);
}
