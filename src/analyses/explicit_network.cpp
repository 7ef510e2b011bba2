#include "analyses/explicit_network.h"

#include "analyses/run_state.h"
#include "base/halt.h"

struct explicit_network {};

explicit_class::explicit_class() = default;
explicit_class::~explicit_class() = default;

void prepare_network(run_state& r) {
    r.explicits.network.reset();
    if (r.flags.x_matrix)
        halt({"solve_trns_x: networks of explicit blocks are not available in this version.", "  Halting..."});
}
void solve_network(run_state&) {}
