#include "models/control_edges.h"

#include "base/halt.h"

void check_edges(const char* file, int active_pos_edge, int active_neg_edge) {
    if (active_pos_edge != 0 && active_pos_edge != 1) halt({line(file, ": check active_pos_edge. Halting...")});
    if (active_neg_edge != 0 && active_neg_edge != 1) halt({line(file, ": check active_neg_edge. Halting...")});
    if (active_pos_edge == active_neg_edge) halt({line(file, ": check active_neg_edge/active_pos_edge. Halting...")});
}
