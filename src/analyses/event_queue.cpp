#include "analyses/event_queue.h"

#include <algorithm>

#include "base/at.h"

void event_queue::resize(int n_units) {
    heap_.clear();
    heap_.reserve(at(n_units));
    near_.reserve(at(n_units));
    next_.assign(at(n_units), -1);
    moments_.assign(at(n_units), {0.0, -1});
    free_.clear();
    for (int k = n_units; k-- > 0;) free_.push_back(k);
    std::fill(std::begin(recent_), std::end(recent_), -1);
}

void event_queue::push(int unit, double t) {
    int& recent = recent_[slot_of(t)];
    if (recent >= 0) {
        moment& m = moments_[at(recent)];
        if (m.first >= 0 && m.t == t) {
            next_[at(unit)] = m.first;
            m.first = unit;
            return;
        }
    }
    recent = free_.back();
    free_.pop_back();
    moments_[at(recent)] = {t, unit};
    next_[at(unit)] = -1;
    heap_.push_back({t, recent});
    sift_up(heap_.size() - 1);
}

void event_queue::sift_up(std::size_t i) {
    const entry e = heap_[i];
    while (i > 0) {
        const std::size_t parent = (i - 1) / 4;
        if (!(e.t < heap_[parent].t)) break;
        heap_[i] = heap_[parent];
        i = parent;
    }
    heap_[i] = e;
}

void event_queue::pop() {
    const entry e = heap_.back();
    heap_.pop_back();
    const std::size_t n = heap_.size();
    if (n == 0) return;
    std::size_t i = 0;
    for (;;) {
        const std::size_t first = 4 * i + 1, last = std::min(first + 4, n);
        if (first >= n) break;
        std::size_t least = first;
        for (std::size_t k = first + 1; k < last; ++k)
            if (heap_[k].t < heap_[least].t) least = k;
        if (!(heap_[least].t < e.t)) break;
        heap_[i] = heap_[least];
        i = least;
    }
    heap_[i] = e;
}

double event_queue::next_time(double t_far, double epsilon) {
    if (heap_.empty() || !(heap_[0].t < t_far)) return t_far;
    const double t = heap_[0].t, next = t + epsilon;
    // Second smallest: among the children of the first.
    const std::size_t last = std::min<std::size_t>(5, heap_.size());
    for (std::size_t k = 1; k < last; ++k)
        if (heap_[k].t < next) return scan_near_events(t_far, epsilon);
    return next;
}

// The scan itself over the events that a chain of epsilons can reach from the first one, behind which they all go back.
double event_queue::scan_near_events(double t_far, double epsilon) {
    near_.clear();
    double reach = heap_[0].t + epsilon;
    while (!heap_.empty() && heap_[0].t < reach) {
        const entry e = heap_[0];
        moment& m = moments_[at(e.moment)];
        for (int u = m.first; u >= 0; u = next_[at(u)]) near_.push_back({u, e.t});
        m.first = -1;
        free_.push_back(e.moment);
        pop();
        reach = std::max(reach, e.t + epsilon);
    }
    std::sort(near_.begin(), near_.end(), [](const event& a, const event& b) { return a.unit < b.unit; });
    double next = t_far;
    for (const event& e : near_)
        if (e.t < next) next = e.t + epsilon;
    for (const event& e : near_) push(e.unit, e.t);
    return next;
}

int event_queue::take_due(double t, unit_set& due) {
    int last = -1, n = 0;
    while (!heap_.empty() && !(t < heap_[0].t)) {
        moment& m = moments_[at(heap_[0].moment)];
        for (int u = m.first; u >= 0; u = next_[at(u)]) {
            if (n++ > 0) due.add(last);
            last = u;
        }
        m.first = -1;
        free_.push_back(heap_[0].moment);
        pop();
    }
    if (n < 2) return last;
    due.add(last);
    return -1;
}
