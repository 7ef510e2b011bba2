#include "elaborate/evaluation_order.h"

#include <algorithm>

#include "base/at.h"
#include "base/halt.h"

namespace {
constexpr int max_passes = 20;  // a longer chain counts as a loop

void own_outputs(xbeu_class& u) {
    u.opvr_xbeu.assign(at(u.n_vr), -1);
    for (int k = 0; k < u.n(); ++k)
        for (int j = u.n_input[at(k)]; j < u.vr.size(k); ++j) {
            int& owner = u.opvr_xbeu[at(u.vr.row(k)[j])];
            if (owner >= 0)
                halt({"xbeu.set_values_1:", "An xvar is assigned as an", "output var for two basic elements!",
                      line("   xbeu_var = ", u.vr.row(k)[j]), line("   opvr_xbeu[xbeu_var] = ", owner),
                      "   Halting..."});
            owner = k;
        }
}

// What the search knows: marks[v] is 1 where variable v has its value.
struct ordering {
    xbeu_class& u;
    std::vector<char> marks;

    explicit ordering(xbeu_class& units) : u(units), marks(at(units.n_vr), 0) {}

    void mark_outputs(int k) {
        for (int j = u.n_input[at(k)]; j < u.vr.size(k); ++j) marks[at(u.vr.row(k)[j])] = 1;
    }
    void check_inputs(const std::vector<int>& units, const char* head) const {
        for (const int k : units)
            for (int j = 0; j < u.n_input[at(k)]; ++j)
                if (!marks[at(u.vr.row(k)[j])])
                    halt({head, "  xbeu has not been visited.", line("  i_xbeu_vr=", u.vr.row(k)[j]), "   Halting..."});
    }
};

// The units that are left fall into passes; those of one pass need nothing of one another. A unit is looked at again
// when the last of its inputs is known, so that the work is that of the connections.
void find_passes(ordering& o, const std::vector<int>& others) {
    xbeu_class& u = o.u;
    std::vector<int> unknown(at(u.n()), 0);             // inputs of each unit without a value
    std::vector<std::vector<int>> readers(at(u.n_vr));  // of each variable without a value
    std::vector<int> now;
    for (const int k : others) {
        for (int j = 0; j < u.n_input[at(k)]; ++j)
            if (const int v = u.vr.row(k)[j]; !o.marks[at(v)]) {
                readers[at(v)].push_back(k);
                ++unknown[at(k)];
            }
        if (unknown[at(k)] == 0) now.push_back(k);
    }
    std::size_t n_left = others.size();
    while (!now.empty()) {
        if (u.pass_beu.n_rows() == max_passes) break;
        for (const int k : now) {
            u.pass_beu.add(k);
            u.in_order.push_back(k);
        }
        u.pass_beu.close_row();
        n_left -= now.size();
        std::vector<int> ready;
        for (const int k : now)
            for (int j = u.n_input[at(k)]; j < u.vr.size(k); ++j) {
                const int v = u.vr.row(k)[j];
                if (o.marks[at(v)]) continue;
                o.marks[at(v)] = 1;
                for (const int reading : readers[at(v)])
                    if (--unknown[at(reading)] == 0) ready.push_back(reading);
            }
        std::sort(ready.begin(), ready.end());
        now.swap(ready);
    }
    if (n_left > 0)
        halt({"xbeu_class: ordering failed even after", line("  completing ", max_passes, " passes."),
              "  Algebraic loop?"});
}
}  // namespace

void find_evaluation_order(circuit& c) {
    xbeu_class& u = c.xbeu;
    own_outputs(u);
    u.integrating.clear();
    u.delaying.clear();
    u.source.clear();
    u.in_order.clear();
    u.pass_beu.clear();
    if (c.cct.flag_x_cct) return;
    ordering o(u);
    std::vector<int> others;
    for (int k = 0; k < u.n(); ++k) {
        const bool evaluates = u.kind[at(k)] == block_kind::evaluate;
        std::vector<int>& list = u.kind[at(k)] == block_kind::integrate ? u.integrating
                                 : !evaluates                           ? u.delaying
                                 : u.n_input[at(k)] == 0                ? u.source
                                                                        : others;
        list.push_back(k);
        if (&list != &others) o.mark_outputs(k);
    }
    find_passes(o, others);
    o.check_inputs(u.integrating, "xbeu_class: an input node of an integrator type");
    o.check_inputs(u.delaying, "xbeu_class: an input node of a delay type");
}
